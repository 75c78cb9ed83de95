#include "core/policy/ActorName.h"

#include "core/foundation/Text.h"
#include "platform/unicode.h"

namespace mervo {

namespace {

constexpr std::size_t kLongestName = 64;

bool isAsciiControl(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x20 || code == 0x7F;
}

} // namespace

std::string actorName(std::string_view entry, std::string_view name)
{
    std::string kept;
    std::size_t characters = 0;
    for (const char byte : platform::withValidUtf8(name)) {
        if (isAsciiControl(byte))
            continue;
        const bool continues = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
        if (!continues && ++characters > kLongestName)
            break;
        kept += byte;
    }
    return std::string(entry) + ":" + (kept.empty() ? "unknown" : Text::visibleLine(kept));
}

} // namespace mervo
