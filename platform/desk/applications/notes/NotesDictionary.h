#pragma once

#include "platform/applescript/values/Dictionary.h"

namespace mervo::desk {

/// The numbers of Notes' own terms.
namespace NotesTerm {

enum Class : applescript::TermId { account = 1, folder, note, attachment };

enum Property : applescript::TermId {
    defaultAccount = 1,
    defaultFolder,
    selection,
    shared,
    container,
    body,
    plaintext,
    creationDate,
    modificationDate,
    passwordProtected,
};

enum Command : applescript::TermId { show = 1 };

} // namespace NotesTerm

/// The words that Notes adds to a script; the same object at every call.
const applescript::Dictionary& notesDictionary();

} // namespace mervo::desk
