#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/applications/eventkit/EventSession.h"
#include "platform/desk/applications/shared/DeskApplicationBase.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// The desk's Calendar as scripts see it: the owner's calendars and their events. An event that repeats is one event
/// here, and what is done to it is done to all its dates.
class CalendarApplication final : public DeskApplicationBase {
public:
    /// `sections` must outlive it.
    CalendarApplication(EventSession::Open open, Sections sections);

    const applescript::Dictionary& dictionary() const override;
    applescript::Ref<applescript::Object> root() override;
    void together(const std::function<void()>& change) override { session_.together(change); }
    applescript::Value make(const applescript::MakeRequest& request) override;
    void remove(applescript::Object& object) override;
    applescript::Value perform(const applescript::CommandCall& call) override;

    EventSession& session() noexcept { return session_; }

private:
    applescript::Value makeEvent(const applescript::MakeRequest& request);

    EventSession session_;
};

/// Makes it known to the script host. `sections` must outlive the registry.
void registerCalendar(applescript::ApplicationRegistry& registry, Sections sections);

} // namespace mervo::desk
