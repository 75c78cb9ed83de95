// Any bytes as a file of the queue: nothing, or an action that reads back as the same, also in what a person is shown.

#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"
#include "platform/unicode.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto action = mervo::PendingAction::decode(bytes)) {
        if (mervo::PendingAction::decode(action->encode()) != action)
            std::abort();
    }
    // The card shows what the file holds: always a text, and made visible once it stays as it is.
    const std::string shown = mervo::Text::visibleLine(bytes);
    if (!mervo::platform::isValidUtf8(shown) || mervo::Text::visibleLine(shown) != shown)
        std::abort();
    return 0;
}
