#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// The desk's System Events as scripts see it: the applications of the desk that run, as its processes. Other programs
/// of the owner's are none of it.
class SystemEventsApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    explicit SystemEventsApplication(Sections sections)
        : DeskApplicationBase(DeskApplication::systemEvents, sections)
    {
    }

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    using DeskApplicationBase::running;
};

/// The words that System Events adds to a script; the same object at every call.
const applescript::Dictionary& systemEventsDictionary();

/// Makes it known to the script host. `sections` must outlive the registry.
void registerSystemEvents(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
