#pragma once

#include "core/automations/model/Automation.h"
#include "platform/schedule/Schedule.h"

#include <optional>
#include <string>

/// What a row of the automations shows.
namespace mervo::AutomationPresentation {

/// In order of precedence.
enum class State { running, paused, failed, stopped, ok, never };

State state(const Automation& automation);

struct Look {
    const char* name;
    const char* symbol; ///< empty: a progress indicator
    const char* tint; ///< "red", "green" or ""
};
Look look(State state);

/// "running...", "paused", or the schedule, followed by the outcome of the last run if that was not good.
std::string subtitle(const Automation& automation, Timestamps::Time now);

/// "last run ✗ exit 3 5 minutes ago"; empty when it never ran.
std::string lastRun(const Automation& automation, Timestamps::Time now);

/// What a paused or running automation, or one without a job, has not: "missed 07:30" when the last run that was due
/// did not happen, with the date before the time when that is another day's; else "next in 2 h", in the largest unit
/// that fits, at least a minute. `since` is when the job was loaded.
std::string upcoming(const Automation& automation, std::optional<platform::Moment> since, Timestamps::Time now,
    const platform::OffsetAt& offsetAt);

} // namespace mervo::AutomationPresentation
