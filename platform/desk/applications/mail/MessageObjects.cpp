#include "platform/desk/applications/mail/MessageObjects.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/MessageHead.h"
#include "platform/unicode.h"
#include "platform/unified_log.h"

#include <algorithm>
#include <optional>

namespace mervo::desk {
namespace {

using applescript::Designation;
using applescript::makeRef;
using applescript::Ref;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

Value validText(std::string_view bytes)
{
    return platform::isValidUtf8(bytes) ? Value::text(bytes) : Value::text(platform::withValidUtf8(bytes));
}

Value date(std::int64_t moment)
{
    return Value::date(applescript::Date::fromUnix(moment));
}

Value colourOf(const MailboxObject& mailbox, std::string_view info)
{
    return Value::integer(messageColour(info, mailbox.store().keywords(mailbox.folder().path)));
}

Value isJunk(const MailboxObject& mailbox, std::string_view info)
{
    const std::optional<bool> mark = junkMark(info, mailbox.store().keywords(mailbox.folder().path));
    return Value::boolean(mark ? *mark : mailbox.isForJunk());
}

/// What to do to a message so that a property has a value; nothing when no message can have that.
std::optional<FlagChange> changeTo(TermId property, const Value& value)
{
    FlagChange change;
    if (property == MailTerm::flagIndex) {
        const std::int64_t colour = applescript::toInteger(value);
        if (colour < kNoColour || colour > kLastColour)
            return std::nullopt;
        change.colour = static_cast<int>(colour);
        return change;
    }
    const bool on = applescript::toBoolean(value);
    if (property == MailTerm::readStatus) {
        change.seen = on;
    } else if (property == MailTerm::flaggedStatus) {
        change.flagged = on;
    } else if (property == MailTerm::deletedStatus) {
        change.trashed = on;
    } else {
        change.junk = on;
    }
    return change;
}

/// Something inside a message: a recipient, a header field, an attachment. It keeps what it was made from.
class MessagePart final : public MailObject {
public:
    using Fields = std::vector<std::pair<TermId, Value>>;

    MessagePart(Ref<MessageObject> message, TermId partClass, std::size_t index, Fields fields)
        : MailObject(message->mail(), partClass)
        , message_(std::move(message))
        , index_(index)
        , fields_(std::move(fields))
    {
    }

    Designation designation() const override
    {
        return {Designation::Form::index, className(), Value::integer(static_cast<std::int64_t>(index_) + 1), message_};
    }

    Value get(TermId property) override
    {
        for (const auto& [id, value] : fields_) {
            if (id == property)
                return value;
        }
        return Value::missing();
    }

private:
    Ref<MessageObject> message_;
    std::size_t index_;
    Fields fields_;
};

/// A value for each message of a list, made by a function when it is asked for.
template <typename Make>
class MessageSource final : public applescript::ItemSource {
public:
    MessageSource(Ref<MessageList> list, Make make)
        : list_(std::move(list))
        , make_(std::move(make))
    {
    }
    std::size_t size() const noexcept override { return list_->snapshot->messages().size(); }
    Value item(std::size_t index) const override { return make_(*list_, index); }

private:
    Ref<MessageList> list_;
    Make make_;
};

template <typename Make>
Value lazyList(Ref<MessageList> list, Make make)
{
    auto source = std::make_unique<const MessageSource<Make>>(std::move(list), std::move(make));
    return Value::list(makeRef<applescript::List>(std::move(source)));
}

/// Dates are changed in place by scripts, so one that was made is kept; most scripts look at few or none.
class DateSource final : public applescript::ItemSource {
public:
    DateSource(Ref<MessageList> list, TermId property)
        : list_(std::move(list))
        , property_(property)
    {
    }
    std::size_t size() const noexcept override { return list_->snapshot->messages().size(); }
    Value item(std::size_t index) const override
    {
        made_.resize(size());
        if (made_[index].is(applescript::Kind::none))
            made_[index] = indexedProperty(*list_->mailbox, list_->snapshot->messages()[index], property_);
        return made_[index];
    }

private:
    Ref<MessageList> list_;
    TermId property_;
    mutable std::vector<Value> made_; // empty until the first date is asked for
};

bool isField(std::string_view name, std::string_view wanted)
{
    return platform::foldCase(name) == platform::foldCase(wanted);
}

} // namespace

MessageList::MessageList(Ref<MailboxObject> ofMailbox, std::shared_ptr<const MailboxSnapshot> state)
    : mailbox(std::move(ofMailbox))
    , snapshot(std::move(state))
{
}

Value indexedProperty(const MailboxObject& mailbox, const MessageRecord& header, TermId property)
{
    switch (property) {
    case CommonTerm::id:
        return Value::integer(header.id());
    case MailTerm::messageId:
        return Value::text(header.messageId());
    case MailTerm::subject:
        return Value::text(header.subject());
    case MailTerm::sender:
        return Value::text(header.sender());
    case MailTerm::dateReceived:
        return date(header.receivedSeconds());
    case MailTerm::dateSent:
        return date(header.sent());
    case MailTerm::messageSize:
        return Value::integer(static_cast<std::int64_t>(header.size()));
    case MailTerm::readStatus:
        return Value::boolean(header.flags().seen);
    case MailTerm::flaggedStatus:
        return Value::boolean(header.flags().flagged);
    case MailTerm::deletedStatus:
        return Value::boolean(header.flags().trashed);
    case MailTerm::flagIndex:
        return colourOf(mailbox, splitMaildirName(header.fileName()).info);
    case MailTerm::wasRepliedTo:
        return Value::boolean(header.flags().replied);
    case MailTerm::wasForwarded:
        return Value::boolean(header.flags().passed);
    case MailTerm::junkMailStatus:
        return isJunk(mailbox, splitMaildirName(header.fileName()).info);
    default:
        return Value();
    }
}

Value indexedColumn(Ref<MessageList> list, TermId property)
{
    if (property == MailTerm::dateReceived || property == MailTerm::dateSent) {
        auto source = std::make_unique<const DateSource>(std::move(list), property);
        return Value::list(makeRef<applescript::List>(std::move(source)));
    }
    const std::vector<MessageRecord>& messages = list->snapshot->messages();
    if (!messages.empty() && indexedProperty(*list->mailbox, messages[0], property).is(applescript::Kind::none))
        return Value();
    return lazyList(std::move(list), [property](const MessageList& all, std::size_t index) {
        return indexedProperty(*all.mailbox, all.snapshot->messages()[index], property);
    });
}

Value messageHandles(Ref<MessageList> list)
{
    return lazyList(list, [](MessageList& all, std::size_t index) {
        return Value::object(makeRef<MessageObject>(Ref<MessageList>(&all), all.snapshot->messages()[index]));
    });
}

MessageObject::MessageObject(Ref<MessageList> list, const MessageRecord& header)
    : MailObject(list->mailbox->mail(), MailTerm::message)
    , list_(std::move(list))
    , header_(&header)
{
}

Designation MessageObject::designation() const
{
    return {Designation::Form::id, className(), Value::integer(header_->id()), list_->mailbox};
}

const MessageRecord& MessageObject::current()
{
    std::shared_ptr<const MailboxSnapshot> now = list_->mailbox->snapshot(MailLook::OwnChanges::keep);
    if (now != list_->snapshot) {
        const MessageRecord* header = now->withBase(header_->base());
        if (header == nullptr)
            throw applescript::ScriptError(applescript::ErrorNumber::noSuchObject);
        list_ = makeRef<MessageList>(list_->mailbox, std::move(now));
        header_ = header;
    }
    return *header_;
}

std::string MessageObject::bytes()
{
    const MessageRecord& header = current();
    return inScriptTerms([&] { return store().bytes(*list_->snapshot, header); });
}

std::string MessageObject::field(std::string_view name)
{
    std::string found;
    const std::string message = bytes();
    forEachField(message, [&](std::string_view fieldName, std::string_view value) {
        if (found.empty() && isField(fieldName, name))
            found = value;
    });
    return found;
}

/// The flags out of the file's name, which this script may have changed after the last look. None: no flag.
Value MessageObject::flag(TermId property)
{
    const MaildirEntry file = inScriptTerms([&] { return store().entry(*list_->snapshot, *header_); });
    const std::string_view info = splitMaildirName(file.fileName).info;
    const MaildirFlags flags = maildirFlags(info);
    switch (property) {
    case MailTerm::readStatus:
        return Value::boolean(flags.seen);
    case MailTerm::flaggedStatus:
        return Value::boolean(flags.flagged);
    case MailTerm::deletedStatus:
        return Value::boolean(flags.trashed);
    case MailTerm::wasRepliedTo:
        return Value::boolean(flags.replied);
    case MailTerm::wasForwarded:
        return Value::boolean(flags.passed);
    case MailTerm::flagIndex:
        return colourOf(*list_->mailbox, info);
    case MailTerm::junkMailStatus:
        return isJunk(*list_->mailbox, info);
    default:
        return Value();
    }
}

Value MessageObject::get(TermId property)
{
    const MessageRecord& header = current();
    if (Value now = flag(property); !now.is(applescript::Kind::none))
        return now;
    if (Value indexed = indexedProperty(*list_->mailbox, header, property); !indexed.is(applescript::Kind::none))
        return indexed;
    switch (property) {
    case MailTerm::content:
        return inScriptTerms([&] { return validText(store().content(*list_->snapshot, header).text); });
    case MailTerm::source:
        return validText(bytes());
    case MailTerm::allHeaders: {
        const std::string message = bytes();
        return validText(std::string_view(message).substr(0, endOfHead(message).value_or(message.size())));
    }
    case MailTerm::replyTo: {
        const std::vector<MailAddress> addresses = parseAddressList(field("reply-to"));
        return addresses.empty() ? Value::text(header.sender()) : Value::text(displayAddress(addresses.front()));
    }
    default:
        return Value::object(list_->mailbox);
    }
}

void MessageObject::set(TermId property, const Value& value)
{
    if (property == MailTerm::mailboxOf) {
        const auto* mailbox =
            value.is(applescript::Kind::object) ? dynamic_cast<MailboxObject*>(&value.asObject()) : nullptr;
        if (mailbox == nullptr)
            throw applescript::ScriptError(applescript::ErrorNumber::cannotSet);
        return moveTo(*mailbox);
    }
    const std::optional<FlagChange> change = changeTo(property, value);
    if (!change)
        throw applescript::ScriptError(applescript::ErrorNumber::cannotSet);
    inScriptTerms([&] { store().change(*list_->snapshot, *header_, *change); });
}

void MessageObject::mark(const FlagChange& change) noexcept
{
    try {
        store().change(*list_->snapshot, *header_, change);
    } catch (const std::exception& error) {
        platform::logError("Mail", error.what());
    }
}

void MessageObject::moveTo(const MailboxObject& destination)
{
    inScriptTerms([&] { store().move(*list_->snapshot, *header_, destination.folder()); });
}

void MessageObject::remove()
{
    inScriptTerms([&] { store().remove(list_->mailbox->account(), *list_->snapshot, *header_); });
}

Value MessageObject::recipients(TermId which)
{
    std::vector<Value> found;
    const auto add = [&](TermId partClass, std::string_view raw) {
        std::size_t index = 0;
        for (const MailAddress& address : parseAddressList(raw)) {
            MessagePart::Fields fields = {
                {CommonTerm::name, address.name.empty() ? Value::missing() : validText(address.name)},
                {MailTerm::address, validText(address.address)}};
            found.push_back(
                Value::object(makeRef<MessagePart>(Ref<MessageObject>(this), partClass, index++, std::move(fields))));
        }
    };
    const bool all = which == MailTerm::recipient;
    if (all || which == MailTerm::toRecipient)
        add(MailTerm::toRecipient, current().to());
    if (all || which == MailTerm::ccRecipient)
        add(MailTerm::ccRecipient, field("cc"));
    if (all || which == MailTerm::bccRecipient)
        add(MailTerm::bccRecipient, field("bcc"));
    return Value::list(std::move(found));
}

Value MessageObject::headers()
{
    std::vector<Value> found;
    const std::string message = bytes();
    forEachField(message, [&](std::string_view name, std::string_view value) {
        MessagePart::Fields fields = {{CommonTerm::name, validText(name)}, {MailTerm::content, validText(value)}};
        found.push_back(Value::object(
            makeRef<MessagePart>(Ref<MessageObject>(this), MailTerm::header, found.size(), std::move(fields))));
    });
    return Value::list(std::move(found));
}

Value MessageObject::attachments()
{
    const MessageRecord& header = current();
    if (header.attachments() == 0)
        return Value::list(std::vector<Value>());
    return inScriptTerms([&] {
        std::vector<Value> found;
        for (const MimeAttachment& attachment : store().content(*list_->snapshot, header).attachments) {
            const std::string id = std::to_string(found.size() + 1);
            MessagePart::Fields fields = {{CommonTerm::id, Value::text(id)},
                {CommonTerm::name, Value::text(attachment.name)}, {MailTerm::mimeType, Value::text(attachment.type)},
                {MailTerm::fileSize, Value::integer(static_cast<std::int64_t>(attachment.size))},
                {MailTerm::downloaded, Value::boolean(true)}};
            found.push_back(Value::object(makeRef<MessagePart>(
                Ref<MessageObject>(this), MailTerm::mailAttachment, found.size(), std::move(fields))));
        }
        return Value::list(std::move(found));
    });
}

Value MessageObject::every(TermId elementClass)
{
    switch (elementClass) {
    case MailTerm::header:
        return headers();
    case MailTerm::mailAttachment:
        return attachments();
    default:
        return recipients(elementClass);
    }
}

std::size_t MessageObject::count(TermId elementClass)
{
    if (elementClass != MailTerm::mailAttachment)
        return Object::count(elementClass);
    const MessageRecord& header = current();
    return inScriptTerms([&] { return store().attachmentCount(*list_->snapshot, header); });
}

bool MessageObject::exists()
{
    try {
        current();
        inScriptTerms([&] { return store().entry(*list_->snapshot, *header_); });
        return true;
    } catch (const applescript::ScriptError& error) {
        if (error.number == applescript::ErrorNumber::noSuchObject)
            return false;
        throw;
    }
}

bool MessageObject::isSame(const applescript::Object& other) const
{
    const auto* message = dynamic_cast<const MessageObject*>(&other);
    return message != nullptr && message->list_->snapshot->maildir() == list_->snapshot->maildir()
        && message->header_->base() == header_->base();
}

} // namespace mervo::desk
