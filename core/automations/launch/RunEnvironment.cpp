#include "core/automations/launch/RunEnvironment.h"

#include "core/foundation/Text.h"
#include "platform/folders.h"
#include "platform/process.h"
#include "platform/programs.h"

#include <algorithm>
#include <cstdlib>

namespace mervo::RunEnvironment {

namespace {

using Variables = std::vector<std::string>;

void set(Variables& variables, const std::string& name, const std::string& value)
{
    std::erase_if(variables, [&](const std::string& one) { return one.starts_with(name + "="); });
    variables.push_back(name + "=" + value);
}

} // namespace

std::string searchPath()
{
    const auto home = platform::userHome();
    std::vector<std::string> folders{platform::ownExecutable().parent_path().string(), (home / ".local/bin").string(),
        (home / "bin").string(), "/opt/homebrew/bin", "/usr/local/bin", "/usr/bin", "/bin", "/usr/sbin", "/sbin"};
    if (const char* inherited = std::getenv("PATH"))
        folders.emplace_back(inherited);
    return Text::join(folders, ":");
}

Variables ofHelpers()
{
    Variables variables = platform::environment();
    std::erase_if(variables, [](const std::string& one) { return one.starts_with("RONDEL_"); });
    return variables;
}

Variables ofScript(const std::string& searchPath)
{
    Variables variables = ofHelpers();
    set(variables, "PATH", searchPath);
    return variables;
}

Variables ofAgent(const AgentRun& run)
{
    Variables variables = ofScript(run.searchPath);
    set(variables, "RONDEL_DONE", run.paths.done().string());
    set(variables, "RONDEL_RUN", run.name);
    return variables;
}

} // namespace mervo::RunEnvironment
