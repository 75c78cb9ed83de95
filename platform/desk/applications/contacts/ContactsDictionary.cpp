#include "platform/desk/applications/contacts/ContactsDictionary.h"

namespace mervo::desk {
namespace {

using applescript::ClassTerm;
using applescript::CommandTerm;
using applescript::kSettable;
using applescript::PropertyTerm;
namespace CommonTerm = applescript::CommonTerm;

std::vector<ClassTerm> classes()
{
    using namespace ContactTerm;
    const PropertyTerm id{CommonTerm::id, "id"}, name{CommonTerm::name, "name"};
    const std::vector<PropertyTerm> labelled{{label, "label", kSettable}, {value, "value", kSettable}, id};
    return {
        {CommonTerm::applicationClass, "application", "applications", {{myCard, "my card"}, {unsaved, "unsaved"}},
            {person, group}},
        {person, "person", "people",
            {{firstName, "first name", kSettable}, {lastName, "last name", kSettable},
                {middleName, "middle name", kSettable}, {nickname, "nickname", kSettable},
                {organization, "organization", kSettable}, {department, "department", kSettable},
                {jobTitle, "job title", kSettable}, {note, "note", kSettable}, name, {company, "company", kSettable},
                {birthDate, "birth date", kSettable}, id, {creationDate, "creation date"},
                {modificationDate, "modification date"}, {vcard, "vcard"}},
            {email, phone, url}, applescript::kNoTerm, {}, {"persons"}},
        {email, "email", "emails", labelled},
        {phone, "phone", "phones", labelled},
        {url, "url", "urls", labelled},
        {group, "group", "groups", {name, id}, {person, group}},
    };
}

std::vector<CommandTerm> commands()
{
    using namespace ContactTerm;
    return {
        {save, "save", {}, CommandTerm::Direct::optional},
        {add, "add", {{toGroup, "to"}}},
        {remove, "remove", {{fromGroup, "from"}}},
    };
}

} // namespace

const applescript::Dictionary& contactsDictionary()
{
    static const applescript::Dictionary dictionary("Contacts", classes(), commands());
    return dictionary;
}

} // namespace mervo::desk
