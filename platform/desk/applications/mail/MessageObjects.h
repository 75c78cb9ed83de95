#pragma once

#include "platform/applescript/values/RefCounted.h"
#include "platform/desk/applications/mail/MailObjects.h"

#include <memory>
#include <string>
#include <string_view>

/// Mail's messages and what they hold, as objects of the script host.
namespace mervo::desk {

/// One state of a mailbox, shared by the handles of all its messages.
class MessageList final : public applescript::Cell {
public:
    MessageList(applescript::Ref<MailboxObject> mailbox, std::shared_ptr<const MailboxSnapshot> snapshot);

    const applescript::Ref<MailboxObject> mailbox;
    const std::shared_ptr<const MailboxSnapshot> snapshot;
};

/// A property from the index; no result for one that needs the message itself.
applescript::Value indexedProperty(
    const MailboxObject& mailbox, const MessageRecord& header, applescript::TermId property);

/// Such a property of all messages, as a list that makes its values when they are asked for; no result where
/// indexedProperty has none.
applescript::Value indexedColumn(applescript::Ref<MessageList> list, applescript::TermId property);

/// All messages, as a list that makes the handles when they are asked for.
applescript::Value messageHandles(applescript::Ref<MessageList> list);

/// A message by its file's base name. Properties show what the mailbox holds now, not what it held when the handle was
/// made. A change goes straight to the file under its last known name, without reading the mailbox first.
class MessageObject final : public MailObject {
public:
    MessageObject(applescript::Ref<MessageList> list, const MessageRecord& header);

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    applescript::Value every(applescript::TermId elementClass) override;
    std::size_t count(applescript::TermId elementClass) override;
    bool exists() override;
    bool isSame(const applescript::Object& other) const override;

    /// The whole message. Throws -1728 when it is gone.
    std::string bytes();
    const MailAccountSettings& account() const noexcept { return list_->mailbox->account(); }
    /// Marks it as answered or passed on. One that cannot be marked stays as it is: what was sent was sent.
    void mark(const FlagChange& change) noexcept;
    void moveTo(const MailboxObject& destination);
    /// Into the trash, or out of it for good.
    void remove();

private:
    /// Brings the handle up to date. Throws -1728 when the message is gone.
    const MessageRecord& current();
    applescript::Value flag(applescript::TermId property);
    std::string field(std::string_view name);
    applescript::Value recipients(applescript::TermId which);
    applescript::Value headers();
    applescript::Value attachments();

    applescript::Ref<MessageList> list_;
    const MessageRecord* header_; // in the list's snapshot
};

} // namespace mervo::desk
