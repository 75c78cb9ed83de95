#pragma once

#include "core/feedback/FeedbackItem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// One way by which a question reaches the owner and the answer comes back. Keeps no state: every operation reads the
/// configuration afresh, any thread may call it, and several processes may at once.
class AskChannel {
public:
    const std::string_view id; ///< kept in FeedbackItem::channel
    const std::string_view displayName;
    const bool needsHarvest; ///< answers have to be fetched

    virtual ~AskChannel() = default;
    AskChannel(const AskChannel&) = delete;
    AskChannel& operator=(const AskChannel&) = delete;

    /// Sends the question. Returns the channel's own reference to it, if it has one; throws ServiceError.
    virtual std::optional<std::string> deliver(const FeedbackItem& question) const = 0;

    struct Reply {
        std::string id; ///< of the question
        std::string answer; ///< never empty
    };
    /// The answers there are to open questions. A question whose answer cannot be read stays open.
    virtual std::vector<Reply> harvest(const std::vector<FeedbackItem>& open) const = 0;

    /// Tidies up behind an answered question. What fails is left as it is: tidying never undoes an answer.
    virtual void cleanup(const FeedbackItem& question) const = 0;

protected:
    AskChannel(std::string_view channelId, std::string_view name, bool isFetched) noexcept
        : id(channelId)
        , displayName(name)
        , needsHarvest(isFetched)
    {
    }
};

} // namespace mervo
