#include "platform/desk/applications/notes/NotesDictionary.h"

namespace mervo::desk {
namespace {

using applescript::ClassTerm;
using applescript::kSettable;
using applescript::PropertyTerm;
namespace CommonTerm = applescript::CommonTerm;

std::vector<ClassTerm> classes()
{
    using namespace NotesTerm;
    const PropertyTerm id{CommonTerm::id, "id"}, name{CommonTerm::name, "name"};
    const PropertyTerm isShared{shared, "shared"}, within{container, "container"};
    return {
        {CommonTerm::applicationClass, "application", "applications",
            {{defaultAccount, "default account"}, {selection, "selection"}}, {account, folder, note}},
        {account, "account", "accounts", {name, id, {defaultFolder, "default folder"}}, {folder, note}},
        {folder, "folder", "folders", {name, id, isShared, within}, {folder, note}},
        {note, "note", "notes",
            {name, id, {body, "body", kSettable}, {plaintext, "plaintext"}, {creationDate, "creation date"},
                {modificationDate, "modification date"}, within, {passwordProtected, "password protected"}, isShared},
            {attachment}},
        {attachment, "attachment", "attachments", {id, name}},
    };
}

} // namespace

const applescript::Dictionary& notesDictionary()
{
    static const applescript::Dictionary dictionary("Notes", classes(), {{NotesTerm::show, "show"}});
    return dictionary;
}

} // namespace mervo::desk
