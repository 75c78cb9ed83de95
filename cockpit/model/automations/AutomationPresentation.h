#pragma once

#include "core/automations/model/Automation.h"

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

} // namespace mervo::AutomationPresentation
