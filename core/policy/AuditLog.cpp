#include "core/policy/AuditLog.h"

#include "core/foundation/StoreBoundary.h"
#include "core/foundation/StringMap.h"
#include "core/foundation/Timestamps.h"
#include "platform/unicode.h"

#include <algorithm>

namespace mervo {

namespace {

constexpr std::string_view kInsert =
    "INSERT INTO audit (timestamp, actor, action, account_id, outcome, reason, details)\n"
    "VALUES (?, ?, ?, ?, ?, ?, ?);";
constexpr std::string_view kCountSentToday = "SELECT COUNT(*) FROM audit\n"
                                             "WHERE action = 'send' AND outcome = 'sent' AND timestamp >= ?;";
constexpr std::string_view kRecent = "SELECT * FROM audit ORDER BY id DESC LIMIT ?;";
constexpr std::string_view kCount = "SELECT COUNT(*) FROM audit";
constexpr std::string_view kSearch = "SELECT * FROM audit\n"
                                     "WHERE action LIKE ? OR actor LIKE ? OR outcome LIKE ?\n"
                                     "   OR IFNULL(reason,'') LIKE ? OR IFNULL(account_id,'') LIKE ?\n"
                                     "   OR details LIKE ?\n"
                                     "ORDER BY id DESC LIMIT ?;";
constexpr std::string_view kPrune = "DELETE FROM audit WHERE timestamp < ?";

constexpr std::string_view kNotRead = "the audit trail could not be read";

constexpr int kSearchedColumns = 6;
constexpr std::int64_t kMostDays = 73000; // two hundred years, well inside what the clock can hold
constexpr std::size_t kDateLength = 10;

std::string startOfToday()
{
    return Timestamps::now().substr(0, kDateLength) + "T00:00:00Z";
}

/// Text columns hold UTF-8, whatever a tool or a client has said.
std::string clean(std::string_view text)
{
    return platform::withValidUtf8(text);
}

AuditEntry toEntry(const Statement& row)
{
    AuditEntry entry;
    entry.timestamp = row.text("timestamp");
    entry.actor = row.text("actor");
    entry.action = row.text("action");
    entry.accountId = row.optionalText("account_id");
    entry.outcome = row.text("outcome");
    entry.reason = row.optionalText("reason");
    entry.details = StringMap::decode<AuditLog::Details>(row.text("details")).value_or(AuditLog::Details{});
    return entry;
}

std::vector<AuditEntry> collect(Statement& query)
{
    std::vector<AuditEntry> entries;
    while (query.step())
        entries.push_back(toEntry(query));
    return entries;
}

} // namespace

AuditLog::AuditLog(StoreDatabase db) noexcept
    : db_(std::move(db))
{
}

AuditLog& AuditLog::shared() noexcept
{
    // Never destroyed: a thread may still be using it while the process ends.
    static AuditLog& log = *new AuditLog(StoreDatabase::ofHome());
    return log;
}

bool AuditLog::log(std::string_view actor, std::string_view action, const std::optional<std::string>& accountId,
    const Details& details, std::string_view outcome, const std::optional<std::string>& reason) noexcept
{
    return orElse("the audit row could not be written", false, [&] {
        const std::shared_ptr<MervoDB> db = db_.open();
        const std::string json = StringMap::encode(details).value_or("{}");
        const auto cleanReason = reason ? std::optional(clean(*reason)) : std::nullopt;
        db->database().read([&](Database& connection) { // one turn for the row and its count
            const std::int64_t before = connection.totalChanges();
            std::string time;
            connection.write([&](Database& open) {
                // The time is taken with the lock held, so that rows stand in the order of their times.
                time = Timestamps::now();
                open.prepare(kInsert)
                    .bind(time)
                    .bind(clean(actor))
                    .bind(clean(action))
                    .bind(accountId)
                    .bind(outcome)
                    .bind(cleanReason)
                    .bind(json)
                    .run();
            });
            today_.added(db, before, time, outcome, cleanReason.value_or(""));
        });
        return true;
    });
}

std::vector<AuditEntry> AuditLog::recent(std::int64_t limit) noexcept
{
    return orElse(kNotRead, db_, std::vector<AuditEntry>{}, [&](Database& database) {
        return database.read([&](Database& connection) {
            auto query = connection.prepare(kRecent);
            query.bind(limit);
            return collect(query);
        });
    });
}

std::int64_t AuditLog::count() noexcept
{
    return orElse(kNotRead, db_, std::int64_t{0}, [](Database& database) {
        return database.read([](Database& connection) -> std::int64_t {
            auto query = connection.prepare(kCount);
            return query.step() ? query.integer(0) : 0;
        });
    });
}

std::vector<AuditEntry> AuditLog::search(std::string_view text, std::int64_t limit) noexcept
{
    return orElse(kNotRead, db_, std::vector<AuditEntry>{}, [&](Database& database) {
        const std::string pattern = '%' + std::string(text) + '%';
        return database.read([&](Database& connection) {
            auto query = connection.prepare(kSearch);
            for (int column = 0; column < kSearchedColumns; ++column)
                query.bind(pattern);
            query.bind(limit);
            return collect(query);
        });
    });
}

std::int64_t AuditLog::mutationsToday() noexcept
{
    return orElse("the day's count of unattended actions could not be read and counts as 0", std::int64_t{0},
        [&] { return today_.since(db_.open(), startOfToday()); });
}

std::int64_t AuditLog::sentToday() noexcept
{
    return orElse(kNotRead, db_, std::int64_t{0}, [&](Database& database) {
        return database.read([&](Database& connection) -> std::int64_t {
            auto query = connection.prepare(kCountSentToday);
            return query.bind(startOfToday()).step() ? query.integer(0) : 0;
        });
    });
}

std::int64_t AuditLog::prune(std::int64_t olderThanDays) noexcept
{
    return orElse("the audit trail could not be cleaned up", db_, std::int64_t{0}, [&](Database& database) {
        const std::chrono::days age(std::clamp(olderThanDays, -kMostDays, kMostDays));
        const std::string cutOff = Timestamps::string(std::chrono::system_clock::now() - age);
        return database.write([&](Database& connection) -> std::int64_t {
            connection.prepare(kPrune).bind(cutOff).run();
            return connection.changes();
        });
    });
}

} // namespace mervo
