#include "platform/desk/addressbook/LazyContact.h"

#include "platform/desk/cache/CacheText.h"

namespace mervo::desk {

std::string packed(const Contact& contact)
{
    std::string bytes;
    put(bytes, std::uint64_t{contact.isGroup});
    put(bytes, contact.name);
    put(bytes, std::uint64_t{contact.isCompany});
    put(bytes, contact.uid);
    put(bytes, contact.birthday);
    for (const std::string& field : contact.fields)
        put(bytes, field);
    for (const auto& values : contact.values) {
        put(bytes, values.size());
        for (const ContactValue& value : values) {
            put(bytes, value.label);
            put(bytes, value.value);
        }
    }
    put(bytes, contact.members.size());
    for (const std::string& member : contact.members)
        put(bytes, member);
    return bytes;
}

LazyContact::LazyContact(std::string_view bytes)
{
    CacheTaker from(bytes);
    isGroup_ = from.number() != 0;
    name_ = from.text();
    rest_ = from.rest();
}

const Contact& LazyContact::operator*() const
{
    if (contact_)
        return *contact_;
    auto contact = std::make_unique<Contact>();
    contact->isGroup = isGroup_;
    contact->name = name_;
    CacheTaker from(rest_);
    contact->isCompany = from.number() != 0;
    contact->uid = from.text();
    contact->birthday = from.text();
    for (std::string& field : contact->fields)
        field = from.text();
    for (auto& values : contact->values) {
        values.resize(from.count());
        for (ContactValue& value : values) {
            value.label = from.text();
            value.value = from.text();
        }
    }
    contact->members.resize(from.count());
    for (std::string& member : contact->members)
        member = from.text();
    contact_ = std::move(contact);
    return *contact_;
}

} // namespace mervo::desk
