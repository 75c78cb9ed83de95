#pragma once

#include "core/feedback/FeedbackStore.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mervo {

/// What passes between the owner and scheduled runs. Keeps no state of its own; never throws here.
class AskService {
public:
    explicit AskService(FeedbackStore& store) noexcept;
    static AskService& shared() noexcept;

    /// A lesson from the owner's decision, told to each run of the automation (of all when absent) until it expires.
    void recordVerdict(const std::string& text, const std::optional<std::string>& automation,
        std::optional<std::int64_t> expiresHours) noexcept;

private:
    FeedbackStore& store_;
};

} // namespace mervo
