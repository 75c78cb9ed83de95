#include "platform/desk/applications/notes/NotesApplication.h"

#include "platform/applescript/values/Coercion.h"
#include "platform/applescript/values/List.h"
#include "platform/desk/applications/notes/NotesObjects.h"
#include "platform/desk/notebook/HtmlText.h"
#include "platform/desk/notebook/OpenNote.h"
#include "platform/desk/settings/Places.h"

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using applescript::makeRef;
using applescript::Ref;
using applescript::ScriptError;
using applescript::Value;
namespace CommonTerm = applescript::CommonTerm;

[[noreturn]] void refuse(const char* sentence)
{
    throw ScriptError(applescript::ErrorNumber::handlerFailed, sentence);
}

/// The folder that something new goes into: the place itself, or the default folder of an account.
Ref<NotesFolderObject> folderFor(NotesApplication& notes, const applescript::Insertion& place)
{
    if (auto* folder = dynamic_cast<NotesFolderObject*>(place.anchor.get()))
        return folder;
    auto* named = dynamic_cast<NotesAccountObject*>(place.anchor.get());
    const NoteAccount account =
        named != nullptr ? named->account() : inScriptTerms([&] { return notes.store().accounts().front(); });
    return folderAt(notes, account, account.newFolder);
}

std::string textProperty(const applescript::MakeRequest& request, applescript::TermId property)
{
    const Value* value = request.property(property);
    return value == nullptr || value->is(applescript::Kind::missing) ? std::string() : applescript::toString(*value);
}

/// A name that is given becomes the first line of the body.
Value makeNote(NotesApplication& notes, const applescript::MakeRequest& request)
{
    const std::string name = textProperty(request, CommonTerm::name);
    std::string body = textProperty(request, NotesTerm::body);
    if (!name.empty())
        body = "<div><b>" + htmlOfText(name) + "</b></div>" + body;
    const auto folder = folderFor(notes, request.place);
    const fs::path note = inScriptTerms([&] { return notes.store().add(folder->folder().path, body); });
    return Value::object(makeRef<NoteObject>(folder, note.filename().native()));
}

Value makeFolder(NotesApplication& notes, const applescript::MakeRequest& request)
{
    const std::string name = textProperty(request, CommonTerm::name);
    const auto* within = dynamic_cast<NotesFolderObject*>(request.place.anchor.get());
    const auto beside = folderFor(notes, request.place);
    const fs::path root = notes.store().settings().root;
    const fs::path parent = within != nullptr ? within->folder().path
        : beside->folder().path == root       ? root
                                              : beside->folder().path.parent_path();
    NoteFolder folder = beside->folder();
    folder.path = inScriptTerms([&] { return notes.store().addFolder(parent, name.empty() ? "New Folder" : name); });
    folder.name = onOneLine(folder.path.filename().native());
    folder.parent = within != nullptr ? parent : fs::path();
    return Value::object(makeRef<NotesFolderObject>(notes, beside->accountName(), std::move(folder)));
}

} // namespace

const applescript::Dictionary& NotesApplication::dictionary() const
{
    return notesDictionary();
}

Ref<applescript::Object> NotesApplication::root()
{
    return makeRef<NotesRootObject>(*this);
}

void NotesApplication::launch()
{
    store();
    DeskApplicationBase::launch();
}

NoteStore& NotesApplication::store()
{
    if (!store_) {
        try {
            store_ = std::make_unique<NoteStore>(
                notesSettings(Configuration::load(sections())), dataFolder() / "notes.lock");
        } catch (const ConfigurationError& error) {
            throw ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
        }
    }
    return *store_;
}

Value NotesApplication::make(const applescript::MakeRequest& request)
{
    if (request.newClass->id == NotesTerm::note)
        return makeNote(*this, request);
    if (request.newClass->id == NotesTerm::folder)
        return makeFolder(*this, request);
    refuse("This desk’s Notes makes notes and folders, and nothing else.");
}

void NotesApplication::remove(applescript::Object& object)
{
    if (auto* note = dynamic_cast<NoteObject*>(&object)) {
        inScriptTerms([&] { store().remove(note->path(), note->folder().folder()); });
        return;
    }
    auto* folder = dynamic_cast<NotesFolderObject*>(&object);
    if (folder == nullptr || folder->folder().isTrash || folder->folder().path == store().settings().root)
        refuse("This desk’s Notes deletes notes and folders, and neither accounts nor the trash.");
    inScriptTerms([&] { store().move(folder->folder().path, folder->folder().trash); });
}

Value NotesApplication::move(applescript::Object& object, const applescript::Insertion& place)
{
    auto* note = dynamic_cast<NoteObject*>(&object);
    const Ref<NotesFolderObject> folder(dynamic_cast<NotesFolderObject*>(place.anchor.get()));
    if (note == nullptr || !folder)
        refuse("This desk’s Notes moves notes to folders, and nothing else.");
    const fs::path moved = inScriptTerms([&] { return store().move(note->path(), folder->folder().path); });
    return Value::object(makeRef<NoteObject>(folder, moved.filename().native()));
}

Value NotesApplication::perform(const applescript::CommandCall& call)
{
    applescript::Object* what = call.direct.is(applescript::Kind::object) ? &call.direct.asObject() : nullptr;
    if (auto* note = dynamic_cast<NoteObject*>(what)) {
        inScriptTerms([&] { store().read(note->path(), NotePart::name); });
        inScriptTerms([&] { openNote(note->path()); });
    } else if (auto* folder = dynamic_cast<NotesFolderObject*>(what)) {
        inScriptTerms([&] { openNote(folder->folder().path); });
    } else {
        refuse("Only a note or a folder can be shown.");
    }
    return Value();
}

void registerNotes(applescript::ApplicationRegistry& registry, Sections sections)
{
    registry.add({"Notes"}, "com.apple.Notes", notesDictionary,
        [sections] { return std::make_unique<NotesApplication>(sections); });
}

} // namespace mervo::desk
