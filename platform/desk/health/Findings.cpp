#include "platform/desk/health/Findings.h"

#include "platform/desk/settings/Places.h"
#include "platform/programs.h"

#include <fmt/format.h>
#include <sqlite3.h>
#include <utility>

namespace mervo::desk {

Finding makeFinding(std::string id, std::string label, std::string detail, std::string remedy)
{
    const auto state = remedy.empty() ? Finding::State::works : Finding::State::broken;
    return {std::move(id), std::move(label), state, std::move(detail), std::move(remedy)};
}

Finding commandFinding(
    std::string id, std::string label, const std::vector<std::string>& command, const char* key, std::string withoutOne)
{
    if (command.empty())
        return makeFinding(std::move(id), std::move(label), std::move(withoutOne));
    const std::string& program = command.front();
    if (!platform::findProgram(program).empty())
        return makeFinding(std::move(id), std::move(label), "through " + program);
    return makeFinding(std::move(id), std::move(label), fmt::format("the program {} is not found", program),
        fmt::format("Install {}, or correct \"{}\" in {}.", program, key, configurationFile().string()));
}

std::string askDatabase(const std::filesystem::path& file, const char* sql)
{
    sqlite3* database = nullptr;
    std::string answer;
    if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        const auto keep = [](void* to, int columns, char** values, char**) {
            if (columns > 0 && values[0] != nullptr)
                *static_cast<std::string*>(to) = values[0];
            return 0;
        };
        sqlite3_busy_timeout(database, 2000);
        if (sqlite3_exec(database, sql, keep, &answer, nullptr) != SQLITE_OK)
            answer = sqlite3_errmsg(database);
    } else {
        answer = database == nullptr ? "no memory" : sqlite3_errmsg(database);
    }
    sqlite3_close_v2(database);
    return answer;
}

} // namespace mervo::desk
