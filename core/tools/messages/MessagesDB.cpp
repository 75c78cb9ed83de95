#include "core/tools/messages/MessagesDB.h"

#include "core/foundation/Database.h"
#include "platform/folders.h"
#include "platform/unicode.h"

#include <array>
#include <chrono>
#include <cmath>
#include <ctime>

namespace mervo::MessagesDB {

namespace {

constexpr double kAppleEpoch = 978307200; // 2001-01-01 in seconds since 1970
constexpr double kNanoseconds = 1e9;

double secondsNow()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string localTime(double epoch)
{
    const auto seconds = static_cast<std::time_t>(std::floor(epoch));
    std::tm parts{};
    std::array<char, 32> text{};
    if (::localtime_r(&seconds, &parts) == nullptr)
        return {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

std::string query(bool byFrom, bool bySince, bool byText)
{
    std::string sql = "SELECT m.date AS rawdate, h.id AS handle, m.text AS text\n"
                      "FROM message m JOIN handle h ON m.handle_id = h.ROWID\n"
                      "WHERE m.is_from_me = 0 AND m.text IS NOT NULL AND m.text != ''";
    if (byFrom)
        sql += " AND replace(h.id, ' ', '') = replace(?, ' ', '')";
    if (bySince)
        sql += " AND m.date > ?";
    if (byText)
        sql += " AND m.text LIKE ?";
    return sql + " ORDER BY m.date DESC LIMIT ?";
}

} // namespace

MessagesError MessagesError::notAccessible(const std::string& reason)
{
    return MessagesError("chat.db not readable (grant Full Disk Access): " + reason);
}

std::filesystem::path chatDatabase()
{
    return platform::userHome() / "Library" / "Messages" / "chat.db";
}

std::vector<InboundMessage> recentInbound(const std::string& from, std::optional<std::int64_t> sinceMinutes,
    const std::string& contains, std::int64_t limit, const std::filesystem::path& file)
{
    try {
        Database database(file, Database::Access::readOnly);
        return database.read([&](Database& db) {
            Statement rows = db.prepare(query(!from.empty(), sinceMinutes.has_value(), !contains.empty()));
            if (!from.empty())
                rows.bind(from);
            if (sinceMinutes)
                rows.bind((secondsNow() - static_cast<double>(*sinceMinutes) * 60 - kAppleEpoch) * kNanoseconds);
            if (!contains.empty())
                rows.bind("%" + contains + "%");
            rows.bind(limit);
            std::vector<InboundMessage> messages;
            while (rows.step()) {
                const double epoch = static_cast<double>(rows.integer("rawdate")) / kNanoseconds + kAppleEpoch;
                messages.push_back({localTime(epoch), epoch, platform::withValidUtf8(rows.text("handle")),
                    platform::withValidUtf8(rows.text("text"))});
            }
            return messages;
        });
    } catch (const sqlite::Error& error) {
        throw MessagesError::notAccessible(error.what());
    }
}

} // namespace mervo::MessagesDB
