#pragma once

#include "core/feedback/channels/AskChannel.h"

namespace mervo {

/// Questions that the cockpit shows and answers: to be stored is all that they need.
class CockpitAskChannel final : public AskChannel {
public:
    CockpitAskChannel() noexcept
        : AskChannel("cockpit", "Cockpit", false)
    {
    }

    std::optional<std::string> deliver(const FeedbackItem&) const override { return std::nullopt; }
    std::vector<Reply> harvest(const std::vector<FeedbackItem>&) const override { return {}; }
    void cleanup(const FeedbackItem&) const override { }
};

} // namespace mervo
