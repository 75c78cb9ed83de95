#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Database.h"
#include "core/foundation/Text.h"
#include "core/policy/PendingStore.h"
#include "platform/files.h"

#include <array>
#include <filesystem>
#include <fmt/format.h>

namespace mervo::Doctor {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 3> kTables{"audit", "policy_rules", "feedback"};

/// What the database says of its own pages: "ok", or the first thing wrong.
std::string integrity(Database& database)
{
    auto query = database.prepare("SELECT quick_check AS answer FROM pragma_quick_check(1)");
    return query.step() ? query.text("answer") : "no answer";
}

/// Tables of a file that no call has opened since an older version wrote it.
std::vector<std::string> missingTables(Database& database)
{
    std::vector<std::string> missing;
    for (const std::string_view table : kTables) {
        auto query = database.prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?");
        if (!query.bind(table).step())
            missing.emplace_back(table);
    }
    return missing;
}

Check ofDatabase(const fs::path& file)
{
    Check check;
    Database database(file, Database::Access::readOnly);
    return database.read([&](Database& open) {
        if (const std::string answer = integrity(open); answer != "ok") {
            check.detail = fmt::format("{} is damaged: {}", file.string(), answer);
            check.remedy = "Move the file away and restore it from a backup; without it the rules do not apply.";
            return check;
        }
        const auto missing = missingTables(open);
        check.state = State::works;
        check.detail = missing.empty() ? fmt::format("{} opens and is whole", file.string())
                                       : fmt::format("{} is brought up to date at the next call (it lacks {})",
                                           file.string(), Text::join(missing, ", "));
        return check;
    });
}

std::string nameOf(const fs::path& file)
{
    return Text::visibleLine(file.filename().string());
}

} // namespace

Check database()
{
    const fs::path file = ConfigDir::databaseURL();
    Check check;
    if (!fs::exists(file)) {
        check.state = State::works;
        check.detail = "none yet, it is created at the first call";
        return check;
    }
    try {
        return ofDatabase(file);
    } catch (const DatabaseError& error) {
        check.detail = fmt::format("{} cannot be read: {}", file.string(), error.what());
        check.remedy =
            "Until it can be read, rules do not apply and nothing is audited. Look at the rights of the file; "
            "if it is damaged, move it away and restore it from a backup.";
        return check;
    }
}

Check queue()
{
    const fs::path folder = ConfigDir::url() / "pending";
    Check check;
    check.state = State::works;
    std::size_t waiting = 0;
    std::vector<std::string> damaged;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() != ".json")
                continue;
            const auto text = platform::readFile(entry.path());
            if (text && PendingAction::decode(*text))
                ++waiting;
            else
                damaged.push_back(nameOf(entry.path()));
        }
    }
    check.detail = waiting == 1 ? "1 action waits" : fmt::format("{} actions wait", waiting);
    if (!damaged.empty()) {
        check.state = State::broken;
        check.detail += fmt::format("; damaged and not shown anywhere: {}", Text::join(damaged, ", "));
        check.remedy = fmt::format("Look at the named files in {} and delete them.", folder.string());
    }
    return check;
}

} // namespace mervo::Doctor
