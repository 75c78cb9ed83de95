#include "core/feedback/FeedbackStore.h"

#include "core/foundation/StoreBoundary.h"
#include "core/foundation/Timestamps.h"

#include <algorithm>
#include <chrono>

namespace mervo {

namespace {

constexpr std::string_view kNotRead = "the operator's feedback could not be read";
constexpr std::string_view kNotWritten = "the operator's feedback could not be written";

/// What the operation gives, or an empty value when it fails.
template <typename Operation>
auto orEmpty(std::string_view task, const StoreDatabase& db, Operation&& operation) noexcept
{
    using Answer = std::decay_t<decltype(operation(std::declval<FeedbackDB&>()))>;
    return orElse(task, Answer(), [&] {
        FeedbackDB open(db.open());
        return operation(open);
    });
}

std::string daysAgo(std::int64_t days)
{
    constexpr std::int64_t kMost = 365 * 200; // further than any record reaches, and within what the clock can count
    const auto time = std::chrono::system_clock::now() - std::chrono::hours(24 * std::clamp(days, -kMost, kMost));
    return Timestamps::string(time);
}

} // namespace

FeedbackStore::FeedbackStore(StoreDatabase db) noexcept
    : db_(std::move(db))
{
}

FeedbackStore& FeedbackStore::shared() noexcept
{
    static FeedbackStore store(StoreDatabase::ofHome());
    return store;
}

void FeedbackStore::add(const FeedbackItem& item) noexcept
{
    orEmpty(kNotWritten, db_, [&](FeedbackDB& db) {
        db.add(item);
        return true;
    });
}

std::vector<FeedbackItem> FeedbackStore::openQuestions(std::string_view channel) noexcept
{
    return orEmpty(kNotRead, db_, [&](FeedbackDB& db) { return db.openQuestions(channel, Timestamps::now()); });
}

bool FeedbackStore::answer(std::string_view id, std::string_view text) noexcept
{
    return orEmpty(kNotWritten, db_, [&](FeedbackDB& db) { return db.answer(id, text, Timestamps::now()); });
}

std::vector<FeedbackItem> FeedbackStore::pendingInjection(std::string_view automation) noexcept
{
    return orEmpty(kNotRead, db_, [&](FeedbackDB& db) { return db.pendingInjection(automation, Timestamps::now()); });
}

void FeedbackStore::markInjected(const std::vector<std::string>& ids) noexcept
{
    orEmpty(kNotWritten, db_, [&](FeedbackDB& db) {
        db.markInjected(ids, Timestamps::now());
        return true;
    });
}

void FeedbackStore::remove(std::string_view id) noexcept
{
    orEmpty(kNotWritten, db_, [&](FeedbackDB& db) {
        db.remove(id);
        return true;
    });
}

std::int64_t FeedbackStore::gc(std::int64_t retainDays) noexcept
{
    return orEmpty(kNotWritten, db_, [&](FeedbackDB& db) { return db.gc(daysAgo(retainDays), Timestamps::now()); });
}

std::vector<FeedbackItem> FeedbackStore::recent(
    const std::optional<std::string>& automation, std::int64_t limit) noexcept
{
    return orEmpty(kNotRead, db_, [&](FeedbackDB& db) { return db.recent(automation, limit, Timestamps::now()); });
}

} // namespace mervo
