#include "platform/applescript/syntax/Parser.h"
#include "tests/platform/applescript/ToyPost.h"

#include <cstddef>
#include <cstdint>

/// Any bytes are a script or a syntax error with a place inside of them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    namespace as = mervo::applescript;
    mervo::test::ToyWorld world;
    as::ApplicationRegistry registry;
    mervo::test::registerToyPost(registry, world);
    try {
        as::parse(std::string(reinterpret_cast<const char*>(data), size), registry);
    } catch (const as::ScriptError& error) {
        if (!error.isPlaced || error.place.start > error.place.end || error.place.end > size || error.message.empty())
            __builtin_trap();
    }
    return 0;
}
