#pragma once

#include "platform/applescript/values/Object.h"
#include "platform/desk/applications/notes/NotesApplication.h"
#include "platform/desk/applications/notes/NotesDictionary.h"

#include <filesystem>

/// Notes' accounts, folders and notes, and the application itself, as objects of the script host.
namespace mervo::desk {

/// The base of all of Notes' objects.
class NotesObject : public applescript::Object {
public:
    NotesObject(NotesApplication& notes, applescript::TermId objectClass) noexcept
        : notes_(notes)
        , class_(objectClass)
    {
    }

    applescript::Application& application() const override { return notes_; }
    const applescript::ClassTerm& objectClass() const override;
    NotesApplication& notes() const noexcept { return notes_; }
    NoteStore& store() const { return notes_.store(); }

protected:
    /// A path below the root as the id of what it leads to.
    applescript::Value idOf(const std::filesystem::path& path) const;

private:
    NotesApplication& notes_;
    applescript::TermId class_;
};

class NotesRootObject final : public NotesObject {
public:
    explicit NotesRootObject(NotesApplication& notes);
    applescript::Designation designation() const override { return {}; }
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
};

class NotesAccountObject final : public NotesObject {
public:
    NotesAccountObject(NotesApplication& notes, std::string name);
    /// As it is now; -1728 when it is gone.
    NoteAccount account() const;
    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;

private:
    std::string name_;
};

class NotesFolderObject final : public NotesObject {
public:
    NotesFolderObject(NotesApplication& notes, std::string account, NoteFolder folder);
    const NoteFolder& folder() const noexcept { return folder_; }
    const std::string& accountName() const noexcept { return account_; }
    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    applescript::Value every(applescript::TermId elementClass) override;
    std::size_t count(applescript::TermId elementClass) override;
    /// The notes of the last look, so that several columns and the notes themselves agree.
    applescript::Value propertyOfEvery(applescript::TermId elementClass, applescript::TermId property) override;
    bool isSame(const applescript::Object& other) const override;

private:
    std::string account_;
    NoteFolder folder_;
};

class NoteObject final : public NotesObject {
public:
    NoteObject(applescript::Ref<NotesFolderObject> folder, std::string fileName);
    std::filesystem::path path() const { return folder_->folder().path / fileName_; }
    const NotesFolderObject& folder() const noexcept { return *folder_; }
    applescript::Designation designation() const override;
    applescript::Value get(applescript::TermId property) override;
    void set(applescript::TermId property, const applescript::Value& value) override;
    bool exists() override;
    bool isSame(const applescript::Object& other) const override;

private:
    applescript::Ref<NotesFolderObject> folder_;
    std::string fileName_;
};

/// A folder at this path, whether or not it is there.
applescript::Ref<NotesFolderObject> folderAt(
    NotesApplication& notes, const NoteAccount& account, const std::filesystem::path& path);

/// Runs work of the store and translates its errors into those of scripts: NoteGone into -1728, everything else into
/// -10000 with its sentence.
template <typename Work>
auto inScriptTerms(Work&& work) -> decltype(work())
{
    try {
        return work();
    } catch (const NoteGone&) {
        throw applescript::ScriptError(applescript::ErrorNumber::noSuchObject);
    } catch (const NoteError& error) {
        throw applescript::ScriptError(applescript::ErrorNumber::handlerFailed, error.what());
    }
}

} // namespace mervo::desk
