#include "core/doctor/Checks.h"
#include "core/foundation/ConfigDir.h"
#include "core/foundation/Database.h"
#include "core/foundation/DatabaseFailure.h"
#include "core/foundation/MervoDB.h"
#include "platform/ascii.h"
#include "platform/files.h"

#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace mervo::Doctor {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kWait(2); ///< for another program's lock
constexpr std::uintmax_t kTooLittle = 1 << 20; ///< bytes of free disk: a call could not be recorded
constexpr std::uintmax_t kLittle = 64 << 20;
constexpr const char* kWithout = "Until then rules do not apply and nothing is audited.";

Finding broken(std::string detail, std::string remedy)
{
    return {{}, {}, State::broken, std::move(detail), fmt::format("{} {}", remedy, kWithout)};
}

Finding damaged(const fs::path& file)
{
    return broken(fmt::format("{} is damaged", file.string()),
        fmt::format(
            "Move it away and restore it from a backup. Without a backup, \"sqlite3 {} .recover\" prints what can "
            "be saved; where there is no file, an empty one is created at the next call.",
            file.string()));
}

/// What the system says of the file, before it is opened. Nothing when it is in order.
std::optional<Finding> ofTheFile(const fs::path& file)
{
    if (!fs::is_regular_file(file))
        return broken(fmt::format("{} is no file", file.string()), "Move it away.");
    if (!platform::isOurs(file)) {
        return broken(fmt::format("{} belongs to another user", file.string()),
            fmt::format("Make it yours: sudo chown \"$USER\" \"{}\".", file.string()));
    }
    if (!platform::canWrite(file)) {
        return broken(fmt::format("{} cannot be written", file.string()),
            fmt::format("Make it writable: chmod 600 \"{}\".", file.string()));
    }
    return std::nullopt;
}

/// The tables of a database, without the rows but for the list of migrations, as a database of its own in memory.
std::unique_ptr<Database> emptyCopy(Database& original)
{
    auto copy = std::make_unique<Database>(":memory:");
    auto tables = original.prepare("SELECT sql FROM sqlite_master WHERE sql NOT NULL AND name NOT LIKE 'sqlite\\_%' "
                                   "ESCAPE '\\' ORDER BY rowid");
    bool hasMigrations = false;
    while (tables.step()) {
        copy->execute(tables.text("sql"));
        hasMigrations = hasMigrations || tables.text("sql").find("grdb_migrations") != std::string::npos;
    }
    if (!hasMigrations)
        return copy;
    auto applied = original.prepare("SELECT identifier FROM grdb_migrations");
    while (applied.step())
        copy->prepare("INSERT INTO grdb_migrations VALUES (?)").bind(applied.text("identifier")).run();
    return copy;
}

/// Whether the next call could bring it up to date, tried on a copy.
bool canBeMigrated(Database& database)
{
    try {
        MervoDB::migrate(*emptyCopy(database));
        return true;
    } catch (const sqlite::Error&) {
        return false;
    }
}

/// The tables of the newest layout that the file lacks.
bool isWhole(Database& database)
{
    auto tables = database.prepare(
        "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name IN ('audit', 'policy_rules', 'feedback')");
    return tables.step() && tables.integer(0) == 3;
}

bool isIntact(Database& database)
{
    auto query = database.prepare("SELECT quick_check AS answer FROM pragma_quick_check(1)");
    return query.step() && query.text("answer") == "ok";
}

/// With the lock of a writer held, as a call would hold it for its row; the caller rolls back.
Finding ofTheContent(const fs::path& file, Database& database)
{
    if (!isIntact(database))
        return damaged(file);
    if (!canBeMigrated(database)) {
        return broken(
            fmt::format("{} holds tables that are not this program's and cannot be brought up to date", file.string()),
            "Move it away, or restore it from a backup.");
    }
    Finding finding;
    finding.state = State::works;
    if (isWhole(database)) {
        finding.detail = fmt::format("{} opens, is whole and takes rows", file.string());
    } else {
        finding.detail = fmt::format("{} is brought up to date at the next call", file.string());
    }
    return finding;
}

Finding ofDatabase(const fs::path& file)
{
    Database database(file, Database::Access::readWrite, kWait);
    return database.read([&](Database& open) {
        open.execute("BEGIN IMMEDIATE");
        Finding finding = ofTheContent(file, open);
        open.execute("ROLLBACK");
        return finding;
    });
}

/// What is found of a sound database besides.
Finding withSpaceAndMode(Finding finding, const fs::path& file)
{
    const std::uintmax_t space = fs::space(file).available;
    if (space < kTooLittle)
        return broken(fmt::format("the disk of {} is full", file.string()), "Free some space.");
    const auto others = fs::status(file).permissions() & (fs::perms::group_all | fs::perms::others_all);
    if (space >= kLittle && others == fs::perms::none)
        return finding;
    finding.state = State::limited;
    if (space < kLittle) {
        finding.detail += fmt::format("; its disk has {} MiB left", space >> 20);
        finding.remedy = "Free some space: on a full disk nothing is audited.";
    } else {
        finding.detail += "; other users may open it until the next call closes it";
        finding.remedy = fmt::format("To close it now: chmod 600 \"{}\"", file.string());
    }
    return finding;
}

} // namespace

Finding database()
{
    const fs::path file = ConfigDir::databaseURL();
    if (!fs::exists(file))
        return {{}, {}, State::works, "none yet, it is created at the first call", {}};
    if (auto finding = ofTheFile(file))
        return *std::move(finding);
    try {
        Finding finding = ofDatabase(file);
        return finding.state == State::works ? withSpaceAndMode(std::move(finding), file) : finding;
    } catch (const sqlite::Error& error) {
        if (error.isDamage())
            return damaged(file);
        std::string remedy = DatabaseFailure::remedy(error);
        remedy.front() = platform::ascii::upper(remedy.front());
        return broken(DatabaseFailure::fault(error), remedy + ".");
    }
}

} // namespace mervo::Doctor
