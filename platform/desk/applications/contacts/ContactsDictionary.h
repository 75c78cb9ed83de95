#pragma once

#include "platform/applescript/values/Dictionary.h"

namespace mervo::desk {

/// The numbers of Contacts' terms.
namespace ContactTerm {
using applescript::TermId;
enum Class : TermId { person = 1, email, phone, url, group };
enum Property : TermId {
    myCard = 1,
    unsaved,
    firstName,
    lastName,
    middleName,
    nickname,
    organization,
    department,
    jobTitle,
    note,
    company,
    birthDate,
    creationDate,
    modificationDate,
    vcard,
    label,
    value
};
enum Command : TermId { save = 1, add, remove };
enum Parameter : TermId { toGroup = 1, fromGroup };
} // namespace ContactTerm

/// The words that Contacts adds to a script; the same object at every call.
const applescript::Dictionary& contactsDictionary();

} // namespace mervo::desk
