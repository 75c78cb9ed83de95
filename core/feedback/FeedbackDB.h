#pragma once

#include "core/feedback/FeedbackItem.h"
#include "core/foundation/MervoDB.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// The table `feedback`. `now` is a text of `Timestamps`; times compare as text. Every operation is one idempotent
/// statement. Throws sqlite::Error.
class FeedbackDB {
public:
    explicit FeedbackDB(std::shared_ptr<MervoDB> db);

    /// Does nothing if the id exists.
    void add(const FeedbackItem& item);

    /// Unanswered and unexpired, oldest first.
    std::vector<FeedbackItem> openQuestions(std::string_view channel, std::string_view now);

    /// True when this call answered the question: the first answer stays.
    bool answer(std::string_view id, std::string_view text, std::string_view now);

    /// What the next run of an automation is told, oldest first: every time, directives and verdicts for it or for all;
    /// once, its own answered questions. Nothing that has expired.
    std::vector<FeedbackItem> pendingInjection(std::string_view automation, std::string_view now);

    /// Keeps the first time of an item that is already marked.
    void markInjected(const std::vector<std::string>& ids, std::string_view now);

    void remove(std::string_view id);

    /// Deletes what has expired, and questions from before `keptSince` that a run has seen. Returns the number of rows
    /// deleted.
    std::int64_t gc(std::string_view keptSince, std::string_view now);

    /// Newest first, of one automation (and what is for all) or of all.
    std::vector<FeedbackItem> recent(
        const std::optional<std::string>& automation, std::int64_t limit, std::string_view now);

private:
    std::shared_ptr<MervoDB> db_;
};

} // namespace mervo
