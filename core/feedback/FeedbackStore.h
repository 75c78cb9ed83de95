#pragma once

#include "core/feedback/FeedbackDB.h"
#include "core/foundation/StoreDatabase.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// The records of the operator channel, at the present time. Never throws: without a database, or when it fails, reads
/// give an empty list and writes false or 0, since a run without feedback is better than one that fails. StoreFailures
/// tells why.
class FeedbackStore {
public:
    explicit FeedbackStore(StoreDatabase db) noexcept;
    /// On the home directory's database (StoreDatabase::ofHome).
    static FeedbackStore& shared() noexcept;

    // Each as in FeedbackDB.
    void add(const FeedbackItem& item) noexcept;
    std::vector<FeedbackItem> openQuestions(std::string_view channel) noexcept;
    bool answer(std::string_view id, std::string_view text) noexcept;
    std::vector<FeedbackItem> pendingInjection(std::string_view automation) noexcept;
    void markInjected(const std::vector<std::string>& ids) noexcept;
    void remove(std::string_view id) noexcept;
    /// Keeps seen questions for this many days after they were asked.
    std::int64_t gc(std::int64_t retainDays) noexcept;
    std::vector<FeedbackItem> recent(const std::optional<std::string>& automation, std::int64_t limit) noexcept;

private:
    StoreDatabase db_;
};

} // namespace mervo
