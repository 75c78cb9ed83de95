// Any bytes as config.json: they decode to something, and what is written again reads back as the same.

#include "core/foundation/HarnessConfig.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const mervo::HarnessConfig config = mervo::HarnessConfig::decode(bytes);
    if (mervo::HarnessConfig::decode(config.encode()) != config)
        std::abort();
    return 0;
}
