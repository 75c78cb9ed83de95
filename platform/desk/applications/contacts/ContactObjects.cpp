#include "platform/desk/applications/contacts/ContactObjects.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/ascii.h"
#include "platform/desk/addressbook/CardEdit.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace mervo::desk {
namespace {

using applescript::Designation;
using applescript::makeRef;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
using CardRef = AddressBook::CardRef;
namespace CommonTerm = applescript::CommonTerm;
namespace ErrorNumber = applescript::ErrorNumber;

Value textOrMissing(const std::string& text)
{
    return text.empty() ? Value::missing() : Value::text(text);
}

std::optional<ContactField> fieldOf(TermId property)
{
    switch (property) {
    case ContactTerm::firstName:
        return ContactField::firstName;
    case ContactTerm::lastName:
        return ContactField::lastName;
    case ContactTerm::middleName:
        return ContactField::middleName;
    case ContactTerm::nickname:
        return ContactField::nickname;
    case ContactTerm::organization:
        return ContactField::organization;
    case ContactTerm::department:
        return ContactField::department;
    case ContactTerm::jobTitle:
        return ContactField::jobTitle;
    case ContactTerm::note:
        return ContactField::note;
    default:
        return std::nullopt;
    }
}

/// "1985-04-12" and "19850412", with a time or without; a day without a year is no date.
Value birthDate(const std::string& written)
{
    std::string digits = written.substr(0, written.find('T'));
    std::erase(digits, '-');
    if (digits.size() != 8 || !std::ranges::all_of(digits, platform::ascii::isDigit) || written.starts_with('-'))
        return Value::missing();
    return Value::date(applescript::Date::fromParts(
        std::stoi(digits.substr(0, 4)), std::stoi(digits.substr(4, 2)), std::stoi(digits.substr(6, 2))));
}

std::string dateText(const Value& value)
{
    const applescript::DateParts parts(applescript::toDate(value));
    return fmt::format("{:04}-{:02}-{:02}", parts.year, parts.month, parts.day);
}

/// A text that is set: `missing value` takes it away.
std::string textOf(const Value& value)
{
    return value.is(applescript::Kind::missing) ? std::string() : applescript::toString(value);
}

std::string valueId(const CardRef& card, ContactValueKind kind, std::size_t index)
{
    constexpr const char* kNames[] = {"email", "phone", "url"};
    return fmt::format("{}:{}:{}", card->id(), kNames[static_cast<int>(kind)], index + 1);
}

Value valueProperty(const CardRef& card, ContactValueKind kind, std::size_t index, TermId property)
{
    const ContactValue& value = card->contact->all(kind)[index];
    if (property == CommonTerm::id)
        return Value::text(valueId(card, kind, index));
    return property == ContactTerm::label ? textOrMissing(value.label) : Value::text(value.value);
}

} // namespace

std::optional<ContactValueKind> valueKind(TermId objectClass)
{
    switch (objectClass) {
    case ContactTerm::email:
        return ContactValueKind::email;
    case ContactTerm::phone:
        return ContactValueKind::phone;
    case ContactTerm::url:
        return ContactValueKind::url;
    default:
        return std::nullopt;
    }
}

Value cardProperty(AddressBook& book, const CardRef& card, TermId property)
{
    if (property == CommonTerm::name)
        return Value::text(card->contact.name());
    const Contact& contact = *card->contact;
    if (const auto field = fieldOf(property))
        return textOrMissing(contact.field(*field));
    switch (property) {
    case CommonTerm::id:
        return Value::text(card->id());
    case ContactTerm::company:
        return Value::boolean(contact.isCompany);
    case ContactTerm::birthDate:
        return birthDate(contact.birthday);
    case ContactTerm::modificationDate:
        return Value::date(applescript::Date::fromUnix(card->stamp.modified / 1'000'000'000));
    case ContactTerm::vcard:
        return Value::text(inScriptTerms([&] { return book.textOf(card); }));
    default: // when it was made, no card says
        return Value::missing();
    }
}

ContactsRoot::ContactsRoot(ContactsApplication& contacts)
    : ContactsObject(contacts, CommonTerm::applicationClass)
{
}

Value ContactsRoot::get(TermId property)
{
    return property == ContactTerm::unsaved ? Value::boolean(contacts().book().isChanged()) : Value::missing();
}

Value ContactsRoot::every(TermId elementClass)
{
    std::vector<Value> found;
    for (const CardRef& card : contacts().cards()) {
        if (card->contact.isGroup() == (elementClass == ContactTerm::group))
            found.push_back(Value::object(makeRef<CardObject>(contacts(), card)));
    }
    return Value::list(std::move(found));
}

Value ContactsRoot::propertyOfEvery(TermId elementClass, TermId property)
{
    std::vector<Value> found;
    for (const CardRef& card : contacts().cards()) {
        if (card->contact.isGroup() == (elementClass == ContactTerm::group))
            found.push_back(cardProperty(contacts().book(), card, property));
    }
    return Value::list(std::move(found));
}

CardObject::CardObject(ContactsApplication& contacts, CardRef card)
    : ContactsObject(contacts, card->contact.isGroup() ? ContactTerm::group : ContactTerm::person)
    , card_(std::move(card))
{
}

Designation CardObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(card_->id()), {}};
}

bool CardObject::isSame(const Object& other) const
{
    const auto* card = dynamic_cast<const CardObject*>(&other);
    return card != nullptr && card->card_ == card_;
}

Value CardObject::get(TermId property)
{
    if (card_->isGone)
        throw ScriptError(ErrorNumber::noSuchObject);
    return cardProperty(contacts().book(), card_, property);
}

void CardObject::set(TermId property, const Value& value)
{
    using Document = ContentDocument;
    const auto edit = [&](const AddressBook::Change& change) {
        if (card_->isGone)
            throw ScriptError(ErrorNumber::noSuchObject);
        inScriptTerms([&] { contacts().book().edit(card_, change); });
    };
    if (const auto field = fieldOf(property)) {
        const std::string text = textOf(value);
        edit([&](Document& document, Document::Node card) { setContactField(document, card, *field, text); });
    } else if (property == ContactTerm::company) {
        const bool isCompany = applescript::toBoolean(value);
        edit([&](Document& document, Document::Node card) { setCompany(document, card, isCompany); });
    } else if (property == ContactTerm::birthDate) {
        const std::string date = value.is(applescript::Kind::missing) ? std::string() : dateText(value);
        edit([&](Document& document, Document::Node card) { setBirthday(document, card, date); });
    } else {
        Object::set(property, value);
    }
}

Value CardObject::every(TermId elementClass)
{
    std::vector<Value> found;
    if (const auto kind = valueKind(elementClass)) {
        for (std::size_t index = 0; index < card_->contact->all(*kind).size(); ++index)
            found.push_back(Value::object(makeRef<ValueObject>(contacts(), card_, *kind, index)));
        return Value::list(std::move(found));
    }
    const auto& members = card_->contact->members;
    for (const CardRef& card : contacts().cards()) {
        const bool isMember = std::ranges::find(members, card->contact->uid) != members.end();
        if (isMember && card->contact.isGroup() == (elementClass == ContactTerm::group))
            found.push_back(Value::object(makeRef<CardObject>(contacts(), card)));
    }
    return Value::list(std::move(found));
}

Value CardObject::propertyOfEvery(TermId elementClass, TermId property)
{
    const auto kind = valueKind(elementClass);
    if (!kind)
        return Object::propertyOfEvery(elementClass, property);
    std::vector<Value> found;
    for (std::size_t index = 0; index < card_->contact->all(*kind).size(); ++index)
        found.push_back(valueProperty(card_, *kind, index, property));
    return Value::list(std::move(found));
}

ValueObject::ValueObject(ContactsApplication& contacts, CardRef card, ContactValueKind kind, std::size_t index)
    : ContactsObject(contacts,
        kind == ContactValueKind::email       ? ContactTerm::email
            : kind == ContactValueKind::phone ? ContactTerm::phone
                                              : ContactTerm::url)
    , card_(std::move(card))
    , kind_(kind)
    , index_(index)
{
}

std::string ValueObject::id() const
{
    return valueId(card_, kind_, index_);
}

const ContactValue& ValueObject::value() const
{
    const auto& values = card_->contact->all(kind_);
    if (card_->isGone || index_ >= values.size())
        throw ScriptError(ErrorNumber::noSuchObject);
    return values[index_];
}

Designation ValueObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(id()), makeRef<CardObject>(contacts(), card_)};
}

Value ValueObject::get(TermId property)
{
    value(); // is there
    return valueProperty(card_, kind_, index_, property);
}

void ValueObject::set(TermId property, const Value& to)
{
    ContactValue changed = value();
    (property == ContactTerm::label ? changed.label : changed.value) = textOf(to);
    inScriptTerms([&] {
        contacts().book().edit(card_, [&](ContentDocument& document, ContentDocument::Node card) {
            setContactValue(document, card, kind_, index_, changed);
        });
    });
}

bool ValueObject::exists()
{
    return !card_->isGone && index_ < card_->contact->all(kind_).size();
}

void ValueObject::remove()
{
    value();
    inScriptTerms([&] {
        contacts().book().edit(card_, [&](ContentDocument& document, ContentDocument::Node card) {
            removeContactValue(document, card, kind_, index_);
        });
    });
}

} // namespace mervo::desk
