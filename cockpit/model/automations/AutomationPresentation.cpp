#include "cockpit/model/automations/AutomationPresentation.h"

#include "cockpit/model/shown/RelativeTime.h"

namespace mervo::AutomationPresentation {

State state(const Automation& automation)
{
    if (automation.running)
        return State::running;
    if (!automation.enabled)
        return State::paused;
    const auto outcome = automation.lastOutcome();
    if (!outcome)
        return State::never;
    switch (*outcome) {
    case Automation::RunOutcome::failed:
        return State::failed;
    case Automation::RunOutcome::stopped:
        return State::stopped;
    case Automation::RunOutcome::ok:
        break;
    }
    return State::ok;
}

Look look(State state)
{
    switch (state) {
    case State::running:
        return {"running", "", ""};
    case State::paused:
        return {"paused", "stop.circle.fill", ""};
    case State::failed:
        return {"failed", "exclamationmark.circle.fill", "red"};
    case State::stopped:
        return {"stopped", "stop.circle.fill", ""};
    case State::ok:
        return {"ok", "checkmark.circle.fill", "green"};
    case State::never:
        break;
    }
    return {"never", "circle.dotted.circle", ""};
}

std::string subtitle(const Automation& automation, Timestamps::Time now)
{
    std::string when = scheduleLabel(automation.schedule);
    switch (state(automation)) {
    case State::running:
        return "running...";
    case State::paused:
        return "paused";
    case State::failed:
    case State::stopped:
        return when + " · " + lastRun(automation, now);
    case State::ok:
    case State::never:
        break;
    }
    return when;
}

std::string lastRun(const Automation& automation, Timestamps::Time now)
{
    if (automation.running)
        return "running...";
    const auto outcome = automation.lastOutcome();
    if (!outcome)
        return {};
    std::string when = automation.lastRun ? RelativeTime::text(*automation.lastRun, now) : std::string();
    const std::string behind = when.empty() ? when : " " + when;
    switch (*outcome) {
    case Automation::RunOutcome::stopped:
        return "last run ■ stopped" + behind;
    case Automation::RunOutcome::failed:
        return "last run ✗ exit " + std::to_string(*automation.lastExit) + behind;
    case Automation::RunOutcome::ok:
        break;
    }
    return when;
}

} // namespace mervo::AutomationPresentation
