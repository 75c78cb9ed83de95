#pragma once

#include "core/feedback/FeedbackStore.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mervo {

/// What the owner and scheduled runs tell each other. Keeps no state of its own; never throws.
class AskService {
public:
    explicit AskService(FeedbackStore& store) noexcept;
    static AskService& shared() noexcept;

    /// Tells every run of the automation (of all, if absent) about a decision of the owner until that expires.
    void recordVerdict(const std::string& text, const std::optional<std::string>& automation,
        std::optional<std::int64_t> expiresHours) noexcept;

private:
    FeedbackStore& store_;
};

} // namespace mervo
