#pragma once

#include "tests/support/Files.h"

#include <algorithm>
#include <vector>

namespace mervo::test {

struct ScriptCase {
    std::string script;
    std::string expected;
};

/// The cases of cases/NAME.applescript, each a script, a line "--> RESULT" and an empty line.
inline std::vector<ScriptCase> scriptCases(const std::string& name)
{
    const auto file = std::string(MERVO_SOURCE_DIR) + "/tests/platform/applescript/cases/" + name + ".applescript";
    std::istringstream lines(readFile(file));
    std::vector<ScriptCase> cases;
    std::string script;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("-->")) {
            cases.push_back({std::move(script), line.substr(std::min(line.size(), std::string_view("--> ").size()))});
            script.clear();
        } else if (!line.empty()) {
            script += (script.empty() ? "" : "\n") + line;
        }
    }
    if (cases.empty() || !script.empty())
        throw std::runtime_error(file + " does not end with a result");
    return cases;
}

} // namespace mervo::test
