#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/eventkit/EventSession.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/settings/Configuration.h"

#include <string>

namespace mervo::desk {

/// The desk's Reminders as scripts see it: one account with the owner's lists, those in groups too.
class RemindersApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    RemindersApplication(EventSession::Open open, Sections sections);

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    void together(const std::function<void()>& change) override { session_.together(change); }
    applescript::Value make(const applescript::MakeRequest& request) override;
    void remove(applescript::Object& object) override;
    applescript::Value move(applescript::Object& object, const applescript::Insertion& place) override;
    applescript::Value perform(const applescript::CommandCall& call) override;

    EventSession& session() noexcept { return session_; }

private:
    applescript::Value makeReminder(const applescript::MakeRequest& request);
    /// The reminder of this UID, which was in the list a moment ago.
    applescript::Value reminderIn(const platform::Collection& list, const std::string& uid);

    EventSession session_;
};

/// Makes it known to the script host. `sections` must outlive the registry.
void registerReminders(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
