#include "core/feedback/FeedbackDB.h"

#include <utility>

namespace mervo {

namespace {

FeedbackItem itemOf(const Statement& row)
{
    FeedbackItem item;
    item.id = row.text("id");
    item.kind = feedbackKind(row.text("kind")).value_or(FeedbackItem::Kind::directive);
    item.text = row.text("text");
    item.automation = row.optionalText("automation");
    item.channel = row.optionalText("channel");
    item.handle = row.optionalText("handle");
    item.answer = row.optionalText("answer");
    item.createdAt = row.text("created_at");
    item.answeredAt = row.optionalText("answered_at");
    item.injectedAt = row.optionalText("injected_at");
    item.expiresAt = row.optionalText("expires_at");
    item.source = row.text("source");
    return item;
}

template <typename... Values>
std::vector<FeedbackItem> selected(MervoDB& db, std::string_view sql, const Values&... values)
{
    return db.database().read([&](Database& database) {
        Statement rows = database.prepare(sql);
        (rows.bind(values), ...);
        std::vector<FeedbackItem> items;
        while (rows.step())
            items.push_back(itemOf(rows));
        return items;
    });
}

/// Runs one statement in a transaction; the number of rows that it changed.
template <typename Bind>
int changed(MervoDB& db, std::string_view sql, Bind&& bind)
{
    return db.database().write([&](Database& database) {
        Statement statement = database.prepare(sql);
        bind(statement);
        statement.run();
        return database.changes();
    });
}

} // namespace

FeedbackDB::FeedbackDB(std::shared_ptr<MervoDB> db)
    : db_(std::move(db))
{
}

void FeedbackDB::add(const FeedbackItem& item)
{
    changed(*db_,
        "INSERT INTO feedback\n    (id, kind, text, automation, channel, handle, answer,\n"
        "     created_at, answered_at, injected_at, expires_at, source)\n"
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)\nON CONFLICT(id) DO NOTHING;",
        [&](Statement& row) {
            row.bind(item.id).bind(rawValue(item.kind)).bind(item.text);
            row.bind(item.automation).bind(item.channel).bind(item.handle).bind(item.answer);
            row.bind(item.createdAt).bind(item.answeredAt).bind(item.injectedAt).bind(item.expiresAt);
            row.bind(item.source);
        });
}

std::vector<FeedbackItem> FeedbackDB::openQuestions(std::string_view channel, std::string_view now)
{
    return selected(*db_,
        "SELECT * FROM feedback\nWHERE kind = 'question' AND answer IS NULL AND channel = ?\n"
        "  AND (expires_at IS NULL OR expires_at > ?)\nORDER BY created_at ASC;",
        channel, now);
}

bool FeedbackDB::answer(std::string_view id, std::string_view text, std::string_view now)
{
    return changed(*db_, "UPDATE feedback SET answer = ?, answered_at = ?\nWHERE id = ? AND answer IS NULL;",
               [&](Statement& row) { row.bind(text).bind(now).bind(id); })
        > 0;
}

std::vector<FeedbackItem> FeedbackDB::pendingInjection(std::string_view automation, std::string_view now)
{
    return selected(*db_,
        "SELECT * FROM feedback\nWHERE (expires_at IS NULL OR expires_at > ?)\n  AND (\n"
        "        (kind IN ('directive','verdict') AND (automation IS NULL OR automation = ?))\n"
        "     OR (kind = 'question' AND answer IS NOT NULL AND injected_at IS NULL AND automation = ?)\n"
        "      )\nORDER BY created_at ASC;",
        now, automation, automation);
}

void FeedbackDB::markInjected(const std::vector<std::string>& ids, std::string_view now)
{
    if (ids.empty())
        return;
    std::string marks = "?";
    for (std::size_t i = 1; i < ids.size(); ++i)
        marks += ",?";
    changed(*db_, "UPDATE feedback SET injected_at = ? WHERE id IN (" + marks + ") AND injected_at IS NULL;",
        [&](Statement& row) {
            row.bind(now);
            for (const auto& id : ids)
                row.bind(id);
        });
}

void FeedbackDB::remove(std::string_view id)
{
    changed(*db_, "DELETE FROM feedback WHERE id = ?;", [&](Statement& row) { row.bind(id); });
}

std::int64_t FeedbackDB::gc(std::string_view keptSince, std::string_view now)
{
    return changed(*db_,
        "DELETE FROM feedback\nWHERE (expires_at IS NOT NULL AND expires_at <= ?)\n"
        "   OR (kind = 'question' AND injected_at IS NOT NULL AND created_at < ?);",
        [&](Statement& row) { row.bind(now).bind(keptSince); });
}

std::vector<FeedbackItem> FeedbackDB::recent(
    const std::optional<std::string>& automation, std::int64_t limit, std::string_view now)
{
    if (automation) {
        return selected(*db_,
            "SELECT * FROM feedback\nWHERE (expires_at IS NULL OR expires_at > ?) AND (automation IS NULL OR "
            "automation = ?)\nORDER BY created_at DESC LIMIT ?;",
            now, *automation, limit);
    }
    return selected(*db_,
        "SELECT * FROM feedback WHERE (expires_at IS NULL OR expires_at > ?)\nORDER BY created_at DESC LIMIT ?;", now,
        limit);
}

} // namespace mervo
