#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// The desk's Messages as scripts see it: one account, whose service type is iMessage, and everyone who has a handle.
/// Sending goes through the command of desk.toml.
class MessagesApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    explicit MessagesApplication(Sections sections)
        : DeskApplicationBase(DeskApplication::messages, sections)
    {
    }

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    applescript::Value perform(const applescript::CommandCall& call) override;
};

/// The words that Messages adds to a script; the same object at every call.
const applescript::Dictionary& messagesDictionary();

/// Makes it known to the script host. `sections` must outlive the registry.
void registerMessages(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
