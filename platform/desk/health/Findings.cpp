#include "platform/desk/health/Findings.h"

#include "platform/desk/settings/Places.h"
#include "platform/programs.h"
#include "platform/sqlite/Connection.h"
#include "platform/sqlite/Error.h"
#include "platform/sqlite/Statement.h"

#include <chrono>
#include <fmt/format.h>
#include <utility>

namespace mervo::desk {

namespace {

constexpr std::chrono::seconds kWaitForLock(2);

} // namespace

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
    try {
        const sqlite::Connection database(file, sqlite::Access::readOnlyFile, kWaitForLock);
        sqlite::Statement statement(database, sql);
        std::string answer;
        while (statement.step())
            answer = statement.optionalText(0).value_or("");
        return answer;
    } catch (const sqlite::Error& error) {
        return error.what();
    }
}

} // namespace mervo::desk
