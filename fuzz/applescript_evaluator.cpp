#include "platform/applescript/evaluator/Evaluator.h"
#include "platform/applescript/syntax/Parser.h"
#include "platform/applescript/values/Display.h"
#include "platform/applescript/values/Limits.h"
#include "platform/ascii.h"
#include "tests/platform/applescript/ToyPost.h"

#include <cstddef>
#include <cstdint>

/// Any script ends within its steps and its memory, with a value that can be shown or with an error.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    namespace as = mervo::applescript;
    constexpr std::uint64_t kSteps = 5000;
    constexpr std::size_t kBytes = std::size_t(4) << 20;
    std::string source(reinterpret_cast<const char*>(data), size);
    if (mervo::platform::ascii::lowered(source).find("delay") != std::string::npos) // it would only wait
        return 0;
    mervo::test::ToyWorld world = mervo::test::ToyWorld::sample();
    as::ApplicationRegistry registry;
    mervo::test::registerToyPost(registry, world);
    const as::Limits::Scope limits(kSteps, kBytes);
    try {
        const auto script = as::parse(std::move(source), registry);
        as::Evaluator evaluator(*script, registry, [](const std::string&) {});
        const as::Value result = evaluator.run({"first", ""});
        as::displayForm(result);
        as::sourceForm(result);
    } catch (const as::ScriptError&) {
    }
    return 0;
}
