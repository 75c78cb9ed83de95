#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/notebook/NoteStore.h"
#include "platform/desk/settings/Configuration.h"

#include <memory>

namespace mervo::desk {

/// The desk's Notes as scripts see it. It has no windows: a note is shown by the desktop's own program for its file.
class NotesApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    explicit NotesApplication(Sections sections)
        : DeskApplicationBase(DeskApplication::notes, sections)
    {
    }

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    /// Reads the configuration: a mistake in it is the error, in the words of ConfigurationError.
    void launch() override;
    applescript::Value make(const applescript::MakeRequest& request) override;
    void remove(applescript::Object& object) override;
    applescript::Value move(applescript::Object& object, const applescript::Insertion& place) override;
    applescript::Value perform(const applescript::CommandCall& call) override;

    NoteStore& store();

private:
    std::unique_ptr<NoteStore> store_; // once made it stays: objects of the script refer to it
};

/// Makes it known to the script host. `sections` must outlive the registry.
void registerNotes(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
