#pragma once

#include "core/feedback/channels/AskChannel.h"

namespace mervo {

/// Questions that are mailed to the owner, and answered by a reply.
///
/// A question finds its reply by three things together: the sender's address is the owner's, the subject holds the
/// tag "[mervo#<id>]", and "re:" stands before the tag. Mail decides nothing by the gate here: the tools run as they
/// are, since they reach nobody but the owner and touch nothing but tagged mail.
class MailAskChannel final : public AskChannel {
public:
    MailAskChannel() noexcept
        : AskChannel("mail", "Mail (reply)", true)
    {
    }

    /// Throws ServiceError when the mail cannot be sent, or the owner's address is not configured.
    std::optional<std::string> deliver(const FeedbackItem& question) const override;

    /// In every mailbox of every account; from several replies in one mailbox the newest. Takes one search for all
    /// questions, and a look at one message for each reply.
    std::vector<Reply> harvest(const std::vector<FeedbackItem>& open) const override;

    /// Archives or deletes the question and its replies in the inboxes, or leaves them, as configured.
    void cleanup(const FeedbackItem& question) const override;
};

} // namespace mervo
