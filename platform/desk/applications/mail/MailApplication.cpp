#include "platform/desk/applications/mail/MailApplication.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/desk/applications/mail/MailDictionary.h"
#include "platform/desk/applications/mail/MailObjects.h"
#include "platform/desk/applications/mail/MessageObjects.h"
#include "platform/desk/applications/mail/OpenMessage.h"
#include "platform/desk/applications/mail/OutgoingObjects.h"
#include "platform/desk/mail/Answer.h"
#include "platform/desk/settings/Places.h"

namespace mervo::desk {
namespace {

using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

/// The composed message that a new recipient or attachment goes into, from any place in it.
Ref<OutgoingObject> outgoingAt(const applescript::MakeRequest& request)
{
    applescript::Object* place = request.place.anchor.get();
    if (auto* message = dynamic_cast<OutgoingObject*>(place))
        return message;
    if (auto* part = dynamic_cast<OutgoingPart*>(place))
        return part->message();
    refuse("A recipient or an attachment is made inside an outgoing message.");
}

std::string textProperty(const applescript::MakeRequest& request, TermId property)
{
    const Value* value = request.property(property);
    return value == nullptr || value->is(applescript::Kind::missing) ? std::string() : applescript::toString(*value);
}

Value makeAttachment(const applescript::MakeRequest& request)
{
    const Ref<OutgoingObject> message = outgoingAt(request);
    const Value* file = request.property(MailTerm::fileName);
    if (file == nullptr)
        refuse("An attachment needs a file name.");
    return message->addAttachment(applescript::toPath(*file));
}

/// The messages that a command is for: one, or each of a list.
template <typename Wanted, typename Work>
void forEach(const Value& what, const char* refusal, const Work& work)
{
    if (what.is(applescript::Kind::list)) {
        for (const Value& item : what.asList().items())
            forEach<Wanted>(item, refusal, work);
        return;
    }
    auto* message = what.is(applescript::Kind::object) ? dynamic_cast<Wanted*>(&what.asObject()) : nullptr;
    if (message == nullptr)
        refuse(refusal);
    work(*message);
}

} // namespace

void refuse(const char* sentence)
{
    throw ScriptError(applescript::ErrorNumber::handlerFailed, sentence);
}

MailApplication::MailApplication(Sections sections)
    : DeskApplicationBase(DeskApplication::mail, sections)
{
}

MailApplication::~MailApplication() = default;

const applescript::Dictionary& MailApplication::dictionary() const
{
    return mailDictionary();
}

Ref<applescript::Object> MailApplication::root()
{
    return makeRef<MailRootObject>(*this);
}

void MailApplication::launch()
{
    store();
    DeskApplicationBase::launch();
}

void MailApplication::quit(applescript::Saving saving)
{
    DeskApplicationBase::quit(saving);
    outgoing_.clear();
}

MailStore& MailApplication::store()
{
    if (!store_) {
        try {
            store_ = std::make_unique<MailStore>(mailAccounts(Configuration::load(sections())), cacheFolder());
        } catch (const ConfigurationError& error) {
            throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
        }
    }
    return *store_;
}

Value MailApplication::make(const applescript::MakeRequest& request)
{
    switch (request.newClass->id) {
    case MailTerm::outgoingMessage: {
        const auto message = makeRef<OutgoingObject>(*this, static_cast<std::int64_t>(outgoing_.size()) + 1);
        for (const auto& [property, value] : request.properties)
            message->set(property, value);
        return add(message);
    }
    case MailTerm::recipient:
    case MailTerm::toRecipient:
    case MailTerm::ccRecipient:
    case MailTerm::bccRecipient:
        return outgoingAt(request)->addRecipients(
            request.newClass->id, textProperty(request, MailTerm::address), textProperty(request, CommonTerm::name));
    case MailTerm::attachment:
        return makeAttachment(request);
    default:
        refuse("This desk’s Mail makes outgoing messages, recipients and attachments, and nothing else.");
    }
}

void MailApplication::remove(applescript::Object& object)
{
    auto* message = dynamic_cast<MessageObject*>(&object);
    if (message == nullptr)
        refuse("This desk’s Mail deletes messages, and nothing else.");
    message->remove();
}

Value MailApplication::move(applescript::Object& object, const applescript::Insertion& place)
{
    auto* message = dynamic_cast<MessageObject*>(&object);
    const auto* destination = dynamic_cast<MailboxObject*>(place.anchor.get());
    if (message == nullptr || destination == nullptr)
        refuse("This desk’s Mail moves messages to mailboxes, and nothing else.");
    message->moveTo(*destination);
    return Value();
}

Value MailApplication::perform(const applescript::CommandCall& call)
{
    switch (call.command) {
    case MailTerm::save:
        forEach<OutgoingObject>(
            call.direct, "Only an outgoing message can be saved.", [](OutgoingObject& message) { message.save(); });
        return Value();
    case MailTerm::checkForNewMail:
        return Value(); // every look at a mailbox is one
    case MailTerm::open:
        forEach<MessageObject>(call.direct, "Only a message can be opened.", [](MessageObject& message) {
            const std::string subject = applescript::toString(message.get(MailTerm::subject));
            inScriptTerms([&] { openMessage(message.bytes(), subject); });
        });
        return Value();
    case MailTerm::send:
        forEach<OutgoingObject>(
            call.direct, "Only an outgoing message can be sent.", [](OutgoingObject& message) { message.send(); });
        return Value::boolean(true);
    default:
        return answer(call);
    }
}

Value MailApplication::answer(const applescript::CommandCall& call)
{
    auto* message =
        call.direct.is(applescript::Kind::object) ? dynamic_cast<MessageObject*>(&call.direct.asObject()) : nullptr;
    if (message == nullptr)
        refuse("Only a message can be answered or forwarded.");
    const std::string bytes = message->bytes();
    const bool isForward = call.command == MailTerm::forward;
    const ReplyTo whom = call.isOn(MailTerm::replyToAll) ? ReplyTo::all : ReplyTo::sender;
    OutgoingMail begun =
        isForward ? forwardOf(bytes, message->account()) : replyTo(bytes, message->account(), store().accounts(), whom);
    return add(makeRef<OutgoingObject>(*this, static_cast<std::int64_t>(outgoing_.size()) + 1, std::move(begun),
        MailOrigin{.message = Ref<MessageObject>(message), .isForward = isForward}));
}

Value MailApplication::add(Ref<OutgoingObject> message)
{
    outgoing_.push_back(message);
    return Value::object(std::move(message));
}

void registerMail(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add(
        {"Mail"}, "com.apple.mail", mailDictionary, [sections] { return std::make_unique<MailApplication>(sections); });
}

} // namespace mervo::desk
