#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/running/DeskApplication.h"
#include "platform/desk/running/RunningApplications.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// What the applications of the desk have in common: whether they run, how they start and quit.
///
/// A script that uses an application has it running from then on, for itself: no process is started for it, since none
/// would have anything to do. Quitting also asks whatever runs outside of the script: the presence, the owner's own
/// program.
class DeskApplicationBase : public applescript::Application {
public:
    /// `sections` must outlive it.
    DeskApplicationBase(DeskApplication which, Sections sections)
        : which_(which)
        , sections_(sections)
    {
    }

    bool isRunning() const override;
    void launch() override { isLaunched_ = true; }
    void quit(applescript::Saving saving) override;

protected:
    Sections sections() const noexcept { return sections_; }
    /// Throws ScriptError when desk.toml has a mistake.
    RunningApplications running() const;

private:
    DeskApplication which_;
    Sections sections_;
    bool isLaunched_ = false;
};

} // namespace mervo::desk
