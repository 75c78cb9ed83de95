#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// The desk's Finder as scripts see it: it shows files in the desktop's file manager, and changes none.
class FinderApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    explicit FinderApplication(Sections sections)
        : DeskApplicationBase(DeskApplication::finder, sections)
    {
    }

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    applescript::Value perform(const applescript::CommandCall& call) override;
};

/// The words that Finder adds to a script; the same object at every call.
const applescript::Dictionary& finderDictionary();

/// Makes it known to the script host. `sections` must outlive the registry.
void registerFinder(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
