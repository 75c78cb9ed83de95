#include "platform/desk/applications/contacts/ContactsApplication.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/ascii.h"
#include "platform/desk/addressbook/CardEdit.h"
#include "platform/desk/addressbook/ContactSettings.h"
#include "platform/desk/applications/contacts/ContactObjects.h"
#include "platform/desk/applications/contacts/ContactsDictionary.h"

namespace mervo::desk {
namespace {

using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;

[[noreturn]] void refuse(const char* sentence)
{
    throw ScriptError(applescript::ErrorNumber::handlerFailed, sentence);
}

std::string textProperty(const applescript::MakeRequest& request, TermId property)
{
    const Value* value = request.property(property);
    return value == nullptr || value->is(applescript::Kind::missing) ? std::string() : applescript::toString(*value);
}

const CardObject* cardIn(const Value* value)
{
    const bool isObject = value != nullptr && value->is(applescript::Kind::object);
    return isObject ? dynamic_cast<const CardObject*>(&value->asObject()) : nullptr;
}

} // namespace

const applescript::Dictionary& ContactsApplication::dictionary() const
{
    return contactsDictionary();
}

Ref<applescript::Object> ContactsApplication::root()
{
    return makeRef<ContactsRoot>(*this);
}

AddressBook& ContactsApplication::book()
{
    if (!book_) {
        try {
            book_ = std::make_unique<AddressBook>(contactFolder(Configuration::load(sections())));
        } catch (const ConfigurationError& error) {
            refuse(error.what());
        }
    }
    return *book_;
}

const std::vector<AddressBook::CardRef>& ContactsApplication::cards()
{
    AddressBook& all = book();
    inScriptTerms([&] { all.cards(); });
    return all.cards();
}

Value ContactsApplication::make(const applescript::MakeRequest& request)
{
    if (request.newClass->id == ContactTerm::person)
        return makePerson(request);
    const auto kind = valueKind(request.newClass->id);
    const auto* owner = dynamic_cast<const CardObject*>(request.place.anchor.get());
    if (!kind)
        refuse("This desk’s Contacts makes people, emails, phones and urls, and nothing else.");
    if (owner == nullptr)
        refuse("An email, a phone or a url is made inside a person.");
    const ContactValue value{textProperty(request, ContactTerm::label), textProperty(request, ContactTerm::value)};
    if (value.value.empty())
        refuse("It needs a value.");
    const AddressBook::CardRef& card = owner->card();
    inScriptTerms([&] {
        book().edit(card, [&](ContentDocument& document, ContentDocument::Node node) {
            addContactValue(document, node, *kind, value);
        });
    });
    return Value::object(makeRef<ValueObject>(*this, card, *kind, card->contact->all(*kind).size() - 1));
}

Value ContactsApplication::makePerson(const applescript::MakeRequest& request)
{
    const auto person = makeRef<CardObject>(*this, inScriptTerms([&] { return book().add(); }));
    for (const auto& [property, value] : request.properties)
        person->set(property, value);
    return Value::object(person);
}

void ContactsApplication::remove(applescript::Object& object)
{
    if (auto* value = dynamic_cast<ValueObject*>(&object)) {
        value->remove();
    } else if (auto* card = dynamic_cast<CardObject*>(&object)) {
        inScriptTerms([&] { book().remove(card->card()); });
    } else {
        refuse("This cannot be deleted.");
    }
}

Value ContactsApplication::perform(const applescript::CommandCall& call)
{
    if (call.command == ContactTerm::save) {
        inScriptTerms([&] { book().save(); });
    } else {
        changeMembers(call);
    }
    return Value();
}

/// `add` and `remove`: a person's UID in the list of a group.
void ContactsApplication::changeMembers(const applescript::CommandCall& call)
{
    const bool adds = call.command == ContactTerm::add;
    const CardObject* person = cardIn(&call.direct);
    const CardObject* group = cardIn(call.argument(adds ? ContactTerm::toGroup : ContactTerm::fromGroup));
    if (person == nullptr || group == nullptr || !group->card()->contact.isGroup()
        || person->card()->contact->uid.empty())
        refuse("A person with an id is added to a group, or removed from one.");
    const std::string uid = person->card()->contact->uid;
    inScriptTerms([&] {
        book().edit(group->card(), [&](ContentDocument& document, ContentDocument::Node card) {
            setMember(document, card, uid, adds ? Membership::member : Membership::none);
        });
    });
}

void registerContacts(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"Contacts", "Address Book"}, "com.apple.AddressBook", contactsDictionary,
        [sections] { return std::make_unique<ContactsApplication>(sections); });
}

} // namespace mervo::desk
