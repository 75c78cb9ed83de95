#include "platform/desk/applications/mail/OutgoingObjects.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/desk/mail/MailAddress.h"
#include "platform/desk/mail/Outbox.h"

#include <algorithm>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

using applescript::Designation;
using applescript::Kind;
using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
using applescript::ErrorNumber::cannotSet;
namespace CommonTerm = applescript::CommonTerm;

bool isAttachable(const std::string& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), R_OK) == 0;
}

/// The paragraphs of a text; an empty text has one, so that there is a last one to put things after.
std::vector<std::string_view> paragraphs(std::string_view text)
{
    std::vector<std::string_view> found;
    while (true) {
        const std::size_t end = text.find_first_of("\r\n");
        found.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return found;
        text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
    }
}

Value parts(const Ref<OutgoingObject>& message, TermId partClass, std::size_t count)
{
    std::vector<Value> found;
    for (std::size_t i = 0; i < count; ++i)
        found.push_back(Value::object(makeRef<OutgoingPart>(message, partClass, i)));
    return Value::list(std::move(found));
}

} // namespace

OutgoingObject::OutgoingObject(MailApplication& mail, std::int64_t id, OutgoingMail draft, MailOrigin origin)
    : MailObject(mail, MailTerm::outgoingMessage)
    , id_(id)
    , draft_(std::move(draft))
    , origin_(std::move(origin))
{
}

Designation OutgoingObject::designation() const
{
    return {Designation::Form::id, className(), Value::integer(id_), {}};
}

Value OutgoingObject::get(TermId property)
{
    switch (property) {
    case CommonTerm::id:
        return Value::integer(id_);
    case MailTerm::subject:
        return Value::text(draft_.subject);
    case MailTerm::sender:
        return Value::text(draft_.sender.empty() ? store().accounts().front().addresses.front() : draft_.sender);
    case MailTerm::visible:
        return Value::boolean(visible_);
    default:
        return Value::object(makeRef<OutgoingPart>(Ref<OutgoingObject>(this), MailTerm::richText, 0));
    }
}

void OutgoingObject::set(TermId property, const Value& value)
{
    switch (property) {
    case MailTerm::subject:
        draft_.subject = applescript::toString(value);
        break;
    case MailTerm::content:
        draft_.text = applescript::toString(value);
        break;
    case MailTerm::visible:
        visible_ = applescript::toBoolean(value);
        break;
    case MailTerm::sender: {
        const std::vector<MailAddress> addresses = parseAddressList(applescript::toString(value));
        if (addresses.size() != 1 || store().accountWithAddress(addresses.front().address) == nullptr)
            throw ScriptError(cannotSet);
        draft_.sender = addresses.front().address;
        break;
    }
    default:
        throw ScriptError(cannotSet);
    }
}

std::vector<MailAddress>& OutgoingObject::recipients(TermId which)
{
    return which == MailTerm::ccRecipient ? draft_.cc : which == MailTerm::bccRecipient ? draft_.bcc : draft_.to;
}

Value OutgoingObject::recipientObjects(TermId which)
{
    return parts(Ref<OutgoingObject>(this), which, recipients(which).size());
}

Value OutgoingObject::every(TermId elementClass)
{
    const Ref<OutgoingObject> self(this);
    switch (elementClass) {
    case MailTerm::paragraph:
        return parts(self, elementClass, paragraphs(draft_.text).size());
    case MailTerm::attachment:
        return parts(self, elementClass, draft_.attachments.size());
    case MailTerm::recipient: {
        std::vector<Value> all;
        for (const TermId which : {MailTerm::toRecipient, MailTerm::ccRecipient, MailTerm::bccRecipient}) {
            for (std::size_t i = 0; i < recipients(which).size(); ++i)
                all.push_back(Value::object(makeRef<OutgoingPart>(self, which, i)));
        }
        return Value::list(std::move(all));
    }
    default:
        return recipientObjects(elementClass);
    }
}

Value OutgoingObject::addRecipients(TermId which, const std::string& address, const std::string& name)
{
    if (which == MailTerm::recipient)
        which = MailTerm::toRecipient;
    std::vector<MailAddress> added = parseAddressList(address);
    if (added.size() == 1 && !name.empty())
        added.front().name = name;
    for (const MailAddress& one : added) {
        const bool hasControl =
            std::any_of(address.begin(), address.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
        if (hasControl || !isPlainAddress(one.address)) {
            throw ScriptError(applescript::ErrorNumber::handlerFailed,
                fmt::format("“{}” is not an address that mail can be sent to.", address));
        }
    }
    if (added.empty())
        throw ScriptError(applescript::ErrorNumber::handlerFailed, "A recipient needs an address.");
    std::vector<MailAddress>& list = recipients(which);
    const std::size_t first = list.size();
    list.insert(list.end(), added.begin(), added.end());
    return Value::object(makeRef<OutgoingPart>(Ref<OutgoingObject>(this), which, first));
}

Value OutgoingObject::addAttachment(const std::string& path)
{
    if (!isAttachable(path))
        throw ScriptError(applescript::ErrorNumber::fileNotFound, fmt::format("File {} wasn’t found.", path));
    draft_.attachments.emplace_back(path);
    return Value::object(
        makeRef<OutgoingPart>(Ref<OutgoingObject>(this), MailTerm::attachment, draft_.attachments.size() - 1));
}

void OutgoingObject::save()
{
    inScriptTerms([this] {
        const std::filesystem::path before = std::exchange(saved_, Outbox(store()).saveDraft(draft_));
        if (!before.empty())
            unlink(before.c_str()); // a draft that another program has moved meanwhile stays where it is
        return true;
    });
}

void OutgoingObject::send()
{
    inScriptTerms([this] {
        Outbox(store()).send(draft_);
        return true;
    });
    if (const std::filesystem::path before = std::exchange(saved_, {}); !before.empty())
        unlink(before.c_str());
    if (origin_.message)
        origin_.message->mark(origin_.isForward ? FlagChange{.passed = true} : FlagChange{.replied = true});
}

OutgoingPart::OutgoingPart(Ref<OutgoingObject> message, TermId partClass, std::size_t index)
    : MailObject(message->mail(), partClass)
    , message_(std::move(message))
    , index_(index)
{
}

Designation OutgoingPart::designation() const
{
    if (classId() == MailTerm::richText)
        return {Designation::Form::property, "content", {}, message_};
    return {Designation::Form::index, className(), Value::integer(static_cast<std::int64_t>(index_) + 1), message_};
}

MailAddress& OutgoingPart::recipient()
{
    std::vector<MailAddress>& list = message_->recipients(classId());
    if (index_ >= list.size())
        throw ScriptError(applescript::ErrorNumber::noSuchObject);
    return list[index_];
}

Value OutgoingPart::get(TermId property)
{
    switch (property) {
    case CommonTerm::name:
        return recipient().name.empty() ? Value::missing() : Value::text(recipient().name);
    case MailTerm::address:
        return Value::text(recipient().address);
    case MailTerm::fileName:
        return Value::file(message_->draft().attachments.at(index_).native());
    default:
        return Value::missing();
    }
}

void OutgoingPart::set(TermId property, const Value& value)
{
    const std::string text = applescript::toString(value);
    if (property == CommonTerm::name) {
        recipient().name = text;
    } else if (property == MailTerm::address && isPlainAddress(text)) {
        recipient().address = text;
    } else {
        throw ScriptError(cannotSet);
    }
}

Value OutgoingPart::every(TermId elementClass)
{
    return message_->every(elementClass);
}

bool OutgoingPart::isSame(const applescript::Object& other) const
{
    const auto* part = dynamic_cast<const OutgoingPart*>(&other);
    return part != nullptr && part->message_.get() == message_.get() && part->classId() == classId()
        && part->index_ == index_;
}

Value OutgoingPart::coerced(Kind kind)
{
    if (kind != Kind::text)
        return Value();
    if (classId() == MailTerm::richText)
        return Value::text(message_->draft().text);
    if (classId() == MailTerm::paragraph) {
        const std::vector<std::string_view> all = paragraphs(message_->draft().text);
        return index_ < all.size() ? Value::text(all[index_]) : Value();
    }
    return Value();
}

} // namespace mervo::desk
