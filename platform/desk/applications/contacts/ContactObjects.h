#pragma once

#include "platform/applescript/values/Object.h"
#include "platform/desk/addressbook/AddressBook.h"
#include "platform/desk/applications/contacts/ContactsApplication.h"
#include "platform/desk/applications/contacts/ContactsDictionary.h"

#include <string>

namespace mervo::desk {

class ContactsObject : public applescript::Object {
public:
    ContactsObject(ContactsApplication& contacts, applescript::TermId objectClass)
        : contacts_(contacts)
        , class_(objectClass)
    {
    }
    applescript::Application& application() const override { return contacts_; }
    const applescript::ClassTerm& objectClass() const override { return *contactsDictionary().findClass(class_); }

protected:
    ContactsApplication& contacts() const { return contacts_; }
    applescript::TermId classId() const { return class_; }

private:
    ContactsApplication& contacts_;
    applescript::TermId class_;
};

/// Contacts itself: its people and groups.
class ContactsRoot final : public ContactsObject {
public:
    explicit ContactsRoot(ContactsApplication& contacts);
    applescript::Designation designation() const override { return {}; }
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
};

/// A person or a group: a card.
class CardObject final : public ContactsObject {
public:
    CardObject(ContactsApplication& contacts, AddressBook::CardRef card);
    const AddressBook::CardRef& card() const { return card_; }

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    applescript::Value every(applescript::TermId elementClass) override;
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
    bool exists() override { return !card_->isGone; }
    bool isSame(const applescript::Object& other) const override;

private:
    AddressBook::CardRef card_;
};

/// One address, number or page of a person, by its place.
class ValueObject final : public ContactsObject {
public:
    ValueObject(ContactsApplication& contacts, AddressBook::CardRef card, ContactValueKind kind, std::size_t index);

    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    bool exists() override;
    void remove();

private:
    std::string id() const;
    const ContactValue& value() const;

    AddressBook::CardRef card_;
    ContactValueKind kind_;
    std::size_t index_;
};

/// Nothing for another class.
std::optional<ContactValueKind> valueKind(applescript::TermId objectClass);

/// One property of a card, as scripts see it.
applescript::Value cardProperty(AddressBook& book, const AddressBook::CardRef& card, applescript::TermId property);

} // namespace mervo::desk
