#include "platform/desk/applications/notes/NotesObjects.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/Date.h"
#include "platform/applescript/values/List.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using applescript::Designation;
using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::TermId;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;
namespace ErrorNumber = applescript::ErrorNumber;

constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::vector<NoteAccount> accountsOf(const NotesObject& object)
{
    return inScriptTerms([&] { return object.store().accounts(); });
}

Ref<NotesFolderObject> folderObject(NotesApplication& notes, const NoteAccount& account, const NoteFolder& folder)
{
    return makeRef<NotesFolderObject>(notes, account.name, folder);
}

void append(std::vector<Value>& found, const Value& more)
{
    found.insert(found.end(), more.asList().items().begin(), more.asList().items().end());
}

/// The folders of an account, or all of their notes.
Value elementsOf(NotesApplication& notes, const NoteAccount& account, TermId elementClass)
{
    std::vector<Value> found;
    for (const NoteFolder& folder : account.folders) {
        const auto object = folderObject(notes, account, folder);
        if (elementClass == NotesTerm::folder) {
            found.push_back(Value::object(object));
        } else {
            append(found, object->every(NotesTerm::note));
        }
    }
    return Value::list(std::move(found));
}

Value dateOf(std::int64_t nanoseconds)
{
    return Value::date(applescript::Date::fromUnix(nanoseconds / kNanoseconds));
}

/// When the file came to be, where the file system knows, and when it was written last.
struct Times {
    std::int64_t created = 0, modified = 0; // nanoseconds since 1970
};

Times timesOf(const fs::path& note)
{
    struct statx found { };
    if (::statx(AT_FDCWD, note.c_str(), 0, STATX_BTIME | STATX_MTIME, &found) != 0)
        throw ScriptError(ErrorNumber::noSuchObject);
    const auto moment = [](const statx_timestamp& time) -> std::int64_t {
        return time.tv_sec * kNanoseconds + time.tv_nsec;
    };
    const std::int64_t modified = moment(found.stx_mtime);
    const bool hasCreation = (found.stx_mask & STATX_BTIME) != 0;
    return {hasCreation ? std::min(moment(found.stx_btime), modified) : modified, modified};
}

} // namespace

const applescript::ClassTerm& NotesObject::objectClass() const
{
    return *notesDictionary().findClass(class_);
}

Value NotesObject::idOf(const fs::path& path) const
{
    return Value::text(onOneLine(path.lexically_relative(store().settings().root).native()));
}

NotesRootObject::NotesRootObject(NotesApplication& notes)
    : NotesObject(notes, CommonTerm::applicationClass)
{
}

Value NotesRootObject::get(TermId property)
{
    if (property == NotesTerm::defaultAccount)
        return Value::object(makeRef<NotesAccountObject>(notes(), accountsOf(*this).front().name));
    return Value::list(std::vector<Value>()); // the selection of a window that is not there
}

Value NotesRootObject::every(TermId elementClass)
{
    std::vector<Value> found;
    for (const NoteAccount& account : accountsOf(*this)) {
        if (elementClass == NotesTerm::account) {
            found.push_back(Value::object(makeRef<NotesAccountObject>(notes(), account.name)));
        } else {
            append(found, elementsOf(notes(), account, elementClass));
        }
    }
    return Value::list(std::move(found));
}

NotesAccountObject::NotesAccountObject(NotesApplication& notes, std::string name)
    : NotesObject(notes, NotesTerm::account)
    , name_(std::move(name))
{
}

NoteAccount NotesAccountObject::account() const
{
    for (NoteAccount& account : accountsOf(*this)) {
        if (account.name == name_)
            return std::move(account);
    }
    throw ScriptError(ErrorNumber::noSuchObject);
}

Designation NotesAccountObject::designation() const
{
    return {Designation::Form::id, objectClass().name, Value::text(name_), {}};
}

Value NotesAccountObject::get(TermId property)
{
    if (property != NotesTerm::defaultFolder)
        return Value::text(name_);
    const NoteAccount found = account();
    return Value::object(folderAt(notes(), found, found.newFolder));
}

Value NotesAccountObject::every(TermId elementClass)
{
    return elementsOf(notes(), account(), elementClass);
}

NotesFolderObject::NotesFolderObject(NotesApplication& notes, std::string account, NoteFolder folder)
    : NotesObject(notes, NotesTerm::folder)
    , account_(std::move(account))
    , folder_(std::move(folder))
{
}

Designation NotesFolderObject::designation() const
{
    return {Designation::Form::id, objectClass().name, idOf(folder_.path), {}};
}

Value NotesFolderObject::get(TermId property)
{
    switch (property) {
    case CommonTerm::name:
        return Value::text(folder_.name);
    case CommonTerm::id:
        return idOf(folder_.path);
    case NotesTerm::container: {
        const auto account = makeRef<NotesAccountObject>(notes(), account_);
        return folder_.parent.empty() ? Value::object(account)
                                      : Value::object(folderAt(notes(), account->account(), folder_.parent));
    }
    default:
        return Value::boolean(false);
    }
}

Value NotesFolderObject::every(TermId elementClass)
{
    std::vector<Value> found;
    if (elementClass == NotesTerm::note) {
        const Ref<NotesFolderObject> self(this);
        for (const NoteFile& note : inScriptTerms([&] { return store().notes(folder_.path); }))
            found.push_back(Value::object(makeRef<NoteObject>(self, note.name)));
        return Value::list(std::move(found));
    }
    const NoteAccount account = NotesAccountObject(notes(), account_).account();
    for (const NoteFolder& folder : account.folders) {
        if (folder.parent == folder_.path)
            found.push_back(Value::object(folderObject(notes(), account, folder)));
    }
    return Value::list(std::move(found));
}

std::size_t NotesFolderObject::count(TermId elementClass)
{
    if (elementClass != NotesTerm::note)
        return Object::count(elementClass);
    return inScriptTerms([&] { return store().notes(folder_.path).size(); });
}

Value NotesFolderObject::propertyOfEvery(TermId elementClass, TermId property)
{
    const bool isText = property == CommonTerm::name || property == NotesTerm::plaintext;
    if (elementClass != NotesTerm::note || !(isText || property == NotesTerm::modificationDate))
        return Object::propertyOfEvery(elementClass, property);
    const auto notes = inScriptTerms([&] { return store().notes(folder_.path, NoteStore::Look::asBefore); });
    const NotePart part = property == CommonTerm::name ? NotePart::name : NotePart::text;
    std::vector<Value> values;
    values.reserve(notes.size());
    for (const NoteFile& note : notes) {
        if (!isText) {
            values.push_back(dateOf(note.modified));
            continue;
        }
        values.push_back(Value::text(store().readOfMany((folder_.path / note.name).native(), note.stamp, part)));
    }
    return Value::list(std::move(values));
}

bool NotesFolderObject::isSame(const Object& other) const
{
    const auto* folder = dynamic_cast<const NotesFolderObject*>(&other);
    return folder != nullptr && folder->folder_.path == folder_.path;
}

NoteObject::NoteObject(Ref<NotesFolderObject> folder, std::string fileName)
    : NotesObject(folder->notes(), NotesTerm::note)
    , folder_(std::move(folder))
    , fileName_(std::move(fileName))
{
}

Designation NoteObject::designation() const
{
    return {Designation::Form::id, objectClass().name, idOf(path()), {}};
}

Value NoteObject::get(TermId property)
{
    switch (property) {
    case CommonTerm::name:
        if (!exists())
            throw ScriptError(ErrorNumber::noSuchObject);
        return Value::text(store().readOfMany(
            path().native(), platform::fileStamp(path()).value_or(platform::FileStamp()), NotePart::name));
    case NotesTerm::plaintext:
        return inScriptTerms([&] { return Value::text(store().read(path(), NotePart::text)); });
    case NotesTerm::body:
        return inScriptTerms([&] { return Value::text(store().body(path())); });
    case CommonTerm::id:
        return idOf(path());
    case NotesTerm::creationDate:
        return dateOf(timesOf(path()).created);
    case NotesTerm::modificationDate:
        return dateOf(timesOf(path()).modified);
    case NotesTerm::container:
        return Value::object(folder_);
    default:
        return Value::boolean(false);
    }
}

void NoteObject::set(TermId, const Value& value)
{
    const std::string html = applescript::toString(value);
    inScriptTerms([&] { store().setBody(path(), html); });
}

bool NoteObject::exists()
{
    std::error_code error;
    return fs::is_regular_file(path(), error);
}

bool NoteObject::isSame(const Object& other) const
{
    const auto* note = dynamic_cast<const NoteObject*>(&other);
    return note != nullptr && note->path() == path();
}

Ref<NotesFolderObject> folderAt(NotesApplication& notes, const NoteAccount& account, const fs::path& path)
{
    const auto found = std::ranges::find(account.folders, path, &NoteFolder::path);
    if (found != account.folders.end())
        return folderObject(notes, account, *found);
    return folderObject(notes, account,
        {.path = path, .name = onOneLine(path.filename().native()), .trash = path.parent_path() / kTrashName});
}

} // namespace mervo::desk
