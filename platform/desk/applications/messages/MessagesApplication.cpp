#include "platform/desk/applications/messages/MessagesApplication.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/desk/chat/ChatSettings.h"
#include "platform/desk/chat/ChatStore.h"
#include "platform/desk/chat/MessageSender.h"

namespace mervo::desk {
namespace {

using applescript::Designation;
using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

constexpr const char* kAccountId = "iMessage";

enum Class : TermId { account = 1, participant, chat };
enum Property : TermId {
    description = 1,
    enabled,
    connectionStatus,
    serviceType,
    fullName,
    firstName,
    lastName,
    handle,
    accountOf
};
enum Command : TermId { send = 1 };
enum Parameter : TermId { recipient = 1 };

/// The application, its account, or one participant (by handle).
class MessagesObject final : public applescript::Object {
public:
    MessagesObject(MessagesApplication& messages, TermId objectClass, std::string text = {})
        : messages_(messages)
        , class_(objectClass)
        , handle_(std::move(text))
    {
    }

    applescript::Application& application() const override { return messages_; }
    const applescript::ClassTerm& objectClass() const override { return *messagesDictionary().findClass(class_); }
    TermId classId() const { return class_; }
    const std::string& handleText() const { return handle_; }

    Designation designation() const override
    {
        if (class_ == account)
            return {Designation::Form::id, objectClass().name, Value::text(kAccountId), {}};
        if (class_ == participant)
            return {Designation::Form::id, objectClass().name, Value::text(handle_), {}};
        return {};
    }

    Value get(TermId property) override
    {
        switch (property) {
        case enabled:
            return Value::boolean(true);
        case serviceType:
            return Value::constant(applescript::Symbol("iMessage"));
        case connectionStatus:
            return Value::constant(applescript::Symbol("connected"));
        case accountOf:
            return Value::object(makeRef<MessagesObject>(messages_, account));
        case firstName:
        case lastName:
            return Value::missing(); // no address book stands behind this
        default:
            return Value::text(class_ == account ? kAccountId : handle_);
        }
    }

    Value every(TermId elementClass) override
    {
        std::vector<Value> found;
        if (elementClass == account)
            found.push_back(Value::object(makeRef<MessagesObject>(messages_, account)));
        if (elementClass == participant) {
            for (const std::string& known : knownHandles())
                found.push_back(participantOf(known));
        }
        return Value::list(std::move(found));
    }

    /// Any handle is somebody, known or not.
    Value named(TermId elementClass, std::string_view name) override
    {
        return elementClass == participant ? participantOf(std::string(name)) : Object::named(elementClass, name);
    }

    Value withId(TermId elementClass, const Value& id) override
    {
        return elementClass == participant ? participantOf(applescript::toString(id))
                                           : Object::withId(elementClass, id);
    }

private:
    Value participantOf(std::string text) const
    {
        return Value::object(makeRef<MessagesObject>(messages_, participant, std::move(text)));
    }

    static std::vector<std::string> knownHandles()
    {
        try {
            return ChatStore(chatFile()).handles();
        } catch (const std::exception& error) {
            throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
        }
    }

    MessagesApplication& messages_;
    TermId class_;
    std::string handle_;
};

std::vector<applescript::ClassTerm> classes()
{
    const applescript::PropertyTerm id{CommonTerm::id, "id"}, name{CommonTerm::name, "name"};
    return {
        {CommonTerm::applicationClass, "application", "applications", {}, {account, participant, chat}},
        {account, "account", "accounts",
            {id, {description, "description"}, {enabled, "enabled"}, {connectionStatus, "connection status"},
                {serviceType, "service type"}},
            {participant, chat}, applescript::kNoTerm, {"service"}, {"services"}},
        {participant, "participant", "participants",
            {id, name, {fullName, "full name"}, {firstName, "first name"}, {lastName, "last name"}, {handle, "handle"},
                {accountOf, "account"}},
            {}, applescript::kNoTerm, {"buddy"}, {"buddies"}},
        {chat, "chat", "chats", {id, name, {accountOf, "account"}}, {participant}},
    };
}

} // namespace

const applescript::Dictionary& messagesDictionary()
{
    static const applescript::Dictionary dictionary(
        "Messages", classes(), {{send, "send", {{recipient, "to"}}}}, {"iMessage", "SMS", "RCS", "connected"});
    return dictionary;
}

const applescript::Dictionary& MessagesApplication::dictionary() const
{
    return messagesDictionary();
}

Ref<applescript::Object> MessagesApplication::root()
{
    return makeRef<MessagesObject>(*this, CommonTerm::applicationClass);
}

Value MessagesApplication::perform(const applescript::CommandCall& call)
{
    const Value* to = call.argument(recipient);
    const auto* someone = to != nullptr && to->is(applescript::Kind::object)
        ? dynamic_cast<const MessagesObject*>(&to->asObject())
        : nullptr;
    if (someone == nullptr || someone->classId() != participant)
        throw ScriptError(applescript::ErrorNumber::handlerFailed, "A message goes to a participant.");
    try {
        sendMessage(
            messageCommand(Configuration::load(sections())), someone->handleText(), applescript::toString(call.direct));
    } catch (const ChatError& error) {
        throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    } catch (const ConfigurationError& error) {
        throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
    return Value();
}

void registerMessages(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"Messages"}, "com.apple.MobileSMS", messagesDictionary,
        [sections] { return std::make_unique<MessagesApplication>(sections); });
}

} // namespace mervo::desk
