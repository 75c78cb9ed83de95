#include "core/catalogue/Catalogue.h"
#include "core/doctor/Checks.h"
#include "core/foundation/Text.h"
#include "core/scripting/OSAScript.h"
#include "platform/files.h"
#include "platform/programs.h"

#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace mervo::Doctor {

namespace {

constexpr std::string_view kScript = "on run argv\nreturn item 1 of argv\nend run\n";
constexpr std::array<std::string_view, 2> kGuides{"llm-guide.md", "user-guide.md"};
constexpr const char* kInstallAgain = "Install the program again; a part of it is missing or damaged.";

} // namespace

Check scriptHost()
{
    const std::string word = "ready";
    const OSAScript::Result result = OSAScript::run(kScript, {word});
    Check check;
    if (result.ok && result.output == word) {
        check.state = State::works;
        check.detail = platform::osascript().string() + " runs scripts";
    } else {
        check.detail = fmt::format("{} does not run a script: {}", platform::osascript().string(),
            result.error.empty() ? "its answer was \"" + result.output + "\"" : result.error);
        check.remedy = kInstallAgain;
    }
    return check;
}

Check guides()
{
    std::vector<std::string> missing;
    for (const std::string_view name : kGuides) {
        const auto text = platform::readFile(platform::resource(name));
        if (!text || text->empty())
            missing.push_back(platform::resource(name).string());
    }
    Check check;
    check.state = missing.empty() ? State::works : State::limited;
    check.detail = missing.empty() ? "both are there"
                                   : fmt::format("not there, so a short text stands in: {}", Text::join(missing, ", "));
    check.remedy = missing.empty() ? "" : kInstallAgain;
    return check;
}

Check tools()
{
    std::map<std::string, std::vector<std::string>> missing; // application to ids
    std::size_t working = 0;
    for (const Tool* tool : Tools::all()) {
        if (tool->missingBridge.empty())
            ++working;
        else
            missing[tool->missingBridge].push_back(tool->id);
    }
    Check check;
    check.state = missing.empty() ? State::works : State::limited;
    check.detail = fmt::format("{} of {} can reach their applications", working, Tools::all().size());
    for (const auto& [application, ids] : missing)
        check.detail += fmt::format("\nnot in this build, {}: {}", application, Text::join(ids, ", "));
    return check;
}

Check agents()
{
    const std::filesystem::path server = platform::helper("mervo-mcp");
    Check check;
    if (std::filesystem::is_regular_file(server)) {
        check.state = State::works;
        check.detail = fmt::format("name this command as a stdio server in your agent's settings: {}", server.string());
    } else {
        check.detail = fmt::format("{} is not there", server.string());
        check.remedy = kInstallAgain;
    }
    return check;
}

} // namespace mervo::Doctor
