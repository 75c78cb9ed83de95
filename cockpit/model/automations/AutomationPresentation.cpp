#include "cockpit/model/automations/AutomationPresentation.h"

#include "cockpit/model/shown/RelativeTime.h"
#include "core/automations/model/RunTimes.h"

#include <algorithm>
#include <chrono>
#include <fmt/chrono.h>

namespace mervo::AutomationPresentation {

namespace {

using platform::Moment;
using platform::OffsetAt;

/// "45 min", "2 h", "3 d".
std::string distance(std::chrono::seconds length)
{
    using namespace std::chrono;
    if (length >= days(1))
        return fmt::format("{} d", floor<days>(length).count());
    if (length >= hours(1))
        return fmt::format("{} h", floor<hours>(length).count());
    return fmt::format("{} min", std::max<std::int64_t>(1, floor<minutes>(length).count()));
}

/// "07:30" of today, "2026-03-01 07:30" of another day.
std::string onTheWall(Moment moment, Moment now, const OffsetAt& offsetAt)
{
    const Moment shown = moment + offsetAt(moment), today = now + offsetAt(now);
    const bool isToday = std::chrono::floor<std::chrono::days>(shown) == std::chrono::floor<std::chrono::days>(today);
    return isToday ? fmt::format("{:%H:%M}", shown) : fmt::format("{:%Y-%m-%d %H:%M}", shown);
}

} // namespace

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

std::string upcoming(
    const Automation& automation, std::optional<Moment> since, Timestamps::Time now, const OffsetAt& offsetAt)
{
    if (!since || automation.running)
        return {};
    const auto second = std::chrono::floor<std::chrono::seconds>(now);
    if (const auto missed = RunTimes::missed(automation, *since, second, offsetAt))
        return "missed " + onTheWall(*missed, second, offsetAt);
    const auto next = RunTimes::next(automation, *since, second, offsetAt);
    return next ? "next in " + distance(*next - second) : std::string();
}

} // namespace mervo::AutomationPresentation
