#include "core/feedback/FeedbackStore.h"

#include "core/foundation/Timestamps.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <chrono>

namespace mervo {

namespace {

/// What the operation gives, or an empty value when there is no database or it fails; the log says why.
template <typename Operation>
auto orEmpty(std::optional<FeedbackDB>& db, Operation&& operation) noexcept -> decltype(operation(*db))
{
    using Answer = decltype(operation(*db));
    try {
        if (db)
            return operation(*db);
    } catch (const std::exception& error) {
        platform::logError("Feedback", error.what());
    }
    return Answer();
}

std::string daysAgo(std::int64_t days)
{
    constexpr std::int64_t kMost = 365 * 200; // further than any record reaches, and within what the clock can count
    const auto time = std::chrono::system_clock::now() - std::chrono::hours(24 * std::clamp(days, -kMost, kMost));
    return Timestamps::string(time);
}

} // namespace

FeedbackStore::FeedbackStore(std::shared_ptr<MervoDB> db) noexcept
{
    if (db != nullptr)
        db_.emplace(std::move(db));
}

FeedbackStore& FeedbackStore::shared() noexcept
{
    static FeedbackStore store(MervoDB::shared());
    return store;
}

void FeedbackStore::add(const FeedbackItem& item) noexcept
{
    orEmpty(db_, [&](FeedbackDB& db) { db.add(item); });
}

std::vector<FeedbackItem> FeedbackStore::openQuestions(std::string_view channel) noexcept
{
    return orEmpty(db_, [&](FeedbackDB& db) { return db.openQuestions(channel, Timestamps::now()); });
}

bool FeedbackStore::answer(std::string_view id, std::string_view text) noexcept
{
    return orEmpty(db_, [&](FeedbackDB& db) { return db.answer(id, text, Timestamps::now()); });
}

std::vector<FeedbackItem> FeedbackStore::pendingInjection(std::string_view automation) noexcept
{
    return orEmpty(db_, [&](FeedbackDB& db) { return db.pendingInjection(automation, Timestamps::now()); });
}

void FeedbackStore::markInjected(const std::vector<std::string>& ids) noexcept
{
    orEmpty(db_, [&](FeedbackDB& db) { db.markInjected(ids, Timestamps::now()); });
}

void FeedbackStore::remove(std::string_view id) noexcept
{
    orEmpty(db_, [&](FeedbackDB& db) { db.remove(id); });
}

std::int64_t FeedbackStore::gc(std::int64_t retainDays) noexcept
{
    return orEmpty(db_, [&](FeedbackDB& db) { return db.gc(daysAgo(retainDays), Timestamps::now()); });
}

std::vector<FeedbackItem> FeedbackStore::recent(
    const std::optional<std::string>& automation, std::int64_t limit) noexcept
{
    return orEmpty(db_, [&](FeedbackDB& db) { return db.recent(automation, limit, Timestamps::now()); });
}

} // namespace mervo
