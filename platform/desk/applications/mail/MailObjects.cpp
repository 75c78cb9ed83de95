#include "platform/desk/applications/mail/MailObjects.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/desk/applications/mail/MessageObjects.h"
#include "platform/desk/applications/mail/OutgoingObjects.h"

#include <algorithm>

namespace mervo::desk {
namespace {

using applescript::Designation;
using applescript::makeRef;
using applescript::Ref;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

Value text(std::string_view value)
{
    return Value::text(value);
}

std::vector<MailFolder> foldersOf(const AccountObject& account)
{
    return inScriptTerms([&] { return account.store().mailboxes(account.account()); });
}

Value mailboxNamed(const Ref<AccountObject>& account, const std::string& name)
{
    for (MailFolder& folder : foldersOf(*account)) {
        if (folder.name == name)
            return Value::object(makeRef<MailboxObject>(account, std::move(folder)));
    }
    return Value::missing();
}

Value mailboxesOf(const Ref<AccountObject>& account)
{
    std::vector<Value> found;
    for (MailFolder& folder : foldersOf(*account))
        found.push_back(Value::object(makeRef<MailboxObject>(account, std::move(folder))));
    return Value::list(std::move(found));
}

} // namespace

const applescript::ClassTerm& MailObject::objectClass() const
{
    return *mailDictionary().findClass(class_);
}

MailRootObject::MailRootObject(MailApplication& mail)
    : MailObject(mail, CommonTerm::applicationClass)
{
}

Value MailRootObject::get(TermId property)
{
    const auto special = [this](SpecialMailbox which) {
        const MailAccountSettings& first = store().accounts().front();
        return mailboxNamed(makeRef<AccountObject>(mail(), first), specialMailbox(first, which));
    };
    switch (property) {
    case MailTerm::inbox:
        return special(SpecialMailbox::inbox);
    case MailTerm::draftsMailbox:
        return special(SpecialMailbox::drafts);
    case MailTerm::sentMailbox:
        return special(SpecialMailbox::sent);
    case MailTerm::trashMailbox:
        return special(SpecialMailbox::trash);
    case MailTerm::junkMailbox:
        return special(SpecialMailbox::junk);
    default: // the selection of a window that is not there
        return Value::list(std::vector<Value>());
    }
}

Value MailRootObject::every(TermId elementClass)
{
    std::vector<Value> found;
    if (elementClass == MailTerm::outgoingMessage) {
        for (const Ref<OutgoingObject>& message : mail().outgoing())
            found.push_back(Value::object(message));
        return Value::list(std::move(found));
    }
    for (const MailAccountSettings& account : store().accounts()) {
        const auto object = makeRef<AccountObject>(mail(), account);
        if (elementClass == MailTerm::account) {
            found.push_back(Value::object(object));
        } else if (account.local) { // the mailboxes that belong to no server
            const Value mailboxes = mailboxesOf(object);
            for (const Value& mailbox : mailboxes.asList().items())
                found.push_back(mailbox);
        }
    }
    return Value::list(std::move(found));
}

AccountObject::AccountObject(MailApplication& mail, const MailAccountSettings& account)
    : MailObject(mail, MailTerm::account)
    , account_(account)
{
}

Designation AccountObject::designation() const
{
    return {Designation::Form::id, className(), text(account_.name), {}};
}

Value AccountObject::get(TermId property)
{
    switch (property) {
    case CommonTerm::name:
    case CommonTerm::id:
        return text(account_.name);
    case MailTerm::userName:
        return text(account_.addresses.front());
    case MailTerm::serverName:
        return text(account_.server);
    case MailTerm::emailAddresses: {
        std::vector<Value> addresses;
        for (const std::string& address : account_.addresses)
            addresses.push_back(text(address));
        return Value::list(std::move(addresses));
    }
    case MailTerm::enabled:
        return Value::boolean(true);
    case MailTerm::accountType:
        return Value::constant(applescript::Symbol(account_.server.empty() ? "unknown" : "imap"));
    default: // full name: none is known
        return text("");
    }
}

Value AccountObject::every(TermId)
{
    return mailboxesOf(Ref<AccountObject>(this));
}

bool AccountObject::isSame(const applescript::Object& other) const
{
    const auto* account = dynamic_cast<const AccountObject*>(&other);
    return account != nullptr && &account->account_ == &account_;
}

MailboxObject::MailboxObject(Ref<AccountObject> account, MailFolder folder)
    : MailObject(account->mail(), MailTerm::mailbox)
    , account_(std::move(account))
    , folder_(std::move(folder))
{
}

std::shared_ptr<const MailboxSnapshot> MailboxObject::snapshot(MailLook::OwnChanges changes) const
{
    return inScriptTerms([&] { return store().messages(account(), folder_.path, changes); });
}

bool MailboxObject::isForJunk() const
{
    if (!isForJunk_)
        isForJunk_ = folder_.name == specialMailbox(account(), SpecialMailbox::junk);
    return *isForJunk_;
}

Designation MailboxObject::designation() const
{
    return {Designation::Form::name, className(), text(folder_.name), account_};
}

Value MailboxObject::get(TermId property)
{
    switch (property) {
    case CommonTerm::name:
        return text(folder_.name);
    case MailTerm::unreadCount: {
        const auto messages = snapshot();
        return Value::integer(std::count_if(messages->messages().begin(), messages->messages().end(),
            [](const MessageRecord& message) { return !message.flags().seen; }));
    }
    case MailTerm::container: {
        const std::size_t slash = folder_.name.rfind('/');
        const Value parent =
            slash == std::string::npos ? Value::missing() : mailboxNamed(account_, folder_.name.substr(0, slash));
        return parent.is(applescript::Kind::missing) ? Value::object(account_) : parent;
    }
    default:
        return Value::object(account_);
    }
}

Value MailboxObject::children() const
{
    std::vector<Value> found;
    const std::string prefix = folder_.name + "/";
    for (MailFolder& folder : foldersOf(*account_)) {
        if (folder.name.starts_with(prefix) && folder.name.find('/', prefix.size()) == std::string::npos)
            found.push_back(Value::object(makeRef<MailboxObject>(account_, std::move(folder))));
    }
    return Value::list(std::move(found));
}

Value MailboxObject::every(TermId elementClass)
{
    if (elementClass == MailTerm::mailbox)
        return children();
    return messageHandles(makeRef<MessageList>(Ref<MailboxObject>(this), snapshot()));
}

std::size_t MailboxObject::count(TermId elementClass)
{
    return elementClass == MailTerm::message ? snapshot()->messages().size() : Object::count(elementClass);
}

Value MailboxObject::at(TermId elementClass, std::size_t index)
{
    if (elementClass != MailTerm::message)
        return Object::at(elementClass, index);
    const auto list = makeRef<MessageList>(Ref<MailboxObject>(this), snapshot());
    const auto& messages = list->snapshot->messages();
    return index < messages.size() ? Value::object(makeRef<MessageObject>(list, messages[index])) : Value();
}

Value MailboxObject::withId(TermId elementClass, const Value& id)
{
    if (elementClass != MailTerm::message)
        return Object::withId(elementClass, id);
    const auto list = makeRef<MessageList>(Ref<MailboxObject>(this), snapshot());
    const MessageRecord* header = list->snapshot->withId(static_cast<std::uint32_t>(applescript::toInteger(id)));
    return header == nullptr ? Value() : Value::object(makeRef<MessageObject>(list, *header));
}

Value MailboxObject::propertyOfEvery(TermId elementClass, TermId property)
{
    if (elementClass != MailTerm::message)
        return Object::propertyOfEvery(elementClass, property);
    Value column = indexedColumn(makeRef<MessageList>(Ref<MailboxObject>(this), snapshot()), property);
    return column.is(applescript::Kind::none) ? Object::propertyOfEvery(elementClass, property) : column;
}

bool MailboxObject::isSame(const applescript::Object& other) const
{
    const auto* mailbox = dynamic_cast<const MailboxObject*>(&other);
    return mailbox != nullptr && mailbox->folder_.path == folder_.path;
}

} // namespace mervo::desk
