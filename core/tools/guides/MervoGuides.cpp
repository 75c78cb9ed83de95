#include "core/tools/guides/MervoGuides.h"

#include "platform/files.h"
#include "platform/programs.h"
#include "platform/unicode.h"

namespace mervo::MervoGuides {

std::string llm()
{
    return text(platform::resource("llm-guide.md"), kBuiltInLlm);
}

std::string user()
{
    return text(platform::resource("user-guide.md"), kBuiltInUser);
}

std::string text(const std::filesystem::path& file, std::string_view builtIn)
{
    const auto bytes = platform::readFile(file);
    return bytes && platform::isValidUtf8(*bytes) ? *bytes : std::string(builtIn);
}

} // namespace mervo::MervoGuides
