#pragma once

#include "platform/desk/applications/mail/MailObjects.h"
#include "platform/desk/applications/mail/MessageObjects.h"
#include "platform/desk/mail/OutgoingMail.h"

#include <filesystem>
#include <string>

/// Messages that a script composes, as objects of the script host.
namespace mervo::desk {

/// The message that an outgoing one answers or forwards, if any.
struct MailOrigin {
    applescript::Ref<MessageObject> message;
    bool isForward = false;
};

class OutgoingObject final : public MailObject {
public:
    OutgoingObject(MailApplication& mail, std::int64_t id, OutgoingMail draft = {}, MailOrigin origin = {});

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    applescript::Value every(applescript::TermId elementClass) override;

    /// Adds what the address field of one recipient holds: "a@x, b@y" is two. Returns the first. -10000 with a
    /// sentence for what is no address.
    applescript::Value addRecipients(applescript::TermId which, const std::string& address, const std::string& name);
    /// -43 when there is no such file.
    applescript::Value addAttachment(const std::string& path);
    /// Saves it to the drafts mailbox of the sender's account, replacing a draft saved before.
    void save();
    /// Sends it, then removes its draft and marks the message that it answers. -10000 with a sentence when it was not
    /// sent.
    void send();

    OutgoingMail& draft() noexcept { return draft_; }
    /// The list of one class of recipients.
    std::vector<MailAddress>& recipients(applescript::TermId which);

private:
    applescript::Value recipientObjects(applescript::TermId which);

    std::int64_t id_;
    bool visible_ = false;
    OutgoingMail draft_;
    MailOrigin origin_;
    std::filesystem::path saved_;
};

/// A recipient, paragraph or attachment of a composed message, or its content: a place in it, by number.
class OutgoingPart final : public MailObject {
public:
    OutgoingPart(applescript::Ref<OutgoingObject> message, applescript::TermId partClass, std::size_t index);
    const applescript::Ref<OutgoingObject>& message() const noexcept { return message_; }

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    applescript::Value every(applescript::TermId elementClass) override;
    bool isSame(const applescript::Object& other) const override;
    applescript::Value coerced(applescript::Kind kind) override;

private:
    MailAddress& recipient();

    applescript::Ref<OutgoingObject> message_;
    std::size_t index_;
};

} // namespace mervo::desk
