#include "core/doctor/Checks.h"
#include "core/foundation/Text.h"
#include "core/scripting/OSAScript.h"
#include "platform/files.h"
#include "platform/programs.h"

#include <array>
#include <filesystem>
#include <fmt/format.h>

namespace mervo::Doctor {

namespace {

constexpr std::string_view kScript = "on run argv\nreturn item 1 of argv\nend run\n";
constexpr std::array<std::string_view, 2> kGuides{"llm-guide.md", "user-guide.md"};
constexpr const char* kInstallAgain = "Install the program again; a part of it is missing or damaged.";

} // namespace

Finding scriptHost()
{
    const std::string word = "ready";
    const OSAScript::Result result = OSAScript::run(kScript, {word});
    Finding finding;
    if (result.ok && result.output == word) {
        finding.state = State::works;
        finding.detail = platform::osascript().string() + " runs scripts";
    } else {
        finding.detail = fmt::format("{} does not run a script: {}", platform::osascript().string(),
            result.error.empty() ? "its answer was \"" + result.output + "\"" : result.error);
        finding.remedy = kInstallAgain;
    }
    return finding;
}

Finding guides()
{
    std::vector<std::string> missing;
    for (const std::string_view name : kGuides) {
        const auto text = platform::readFile(platform::resource(name));
        if (!text || text->empty())
            missing.push_back(platform::resource(name).string());
    }
    Finding finding;
    finding.state = missing.empty() ? State::works : State::limited;
    finding.detail = missing.empty()
        ? "both are there"
        : fmt::format("not there, so a short text stands in: {}", Text::join(missing, ", "));
    finding.remedy = missing.empty() ? "" : kInstallAgain;
    return finding;
}

Finding agents()
{
    const std::filesystem::path server = platform::helper("mervo-mcp");
    Finding finding;
    if (std::filesystem::is_regular_file(server)) {
        finding.state = State::works;
        finding.detail =
            fmt::format("name this command as a stdio server in your agent's settings: {}", server.string());
    } else {
        finding.detail = fmt::format("{} is not there", server.string());
        finding.remedy = kInstallAgain;
    }
    return finding;
}

} // namespace mervo::Doctor
