#pragma once

#include "core/automations/model/Automation.h"
#include "platform/schedule/Schedule.h"

#include <optional>
#include <vector>

/// When automations run by themselves. Pure functions; `since` is when the automation's job was loaded.
namespace mervo::RunTimes {

/// A schedule's times on the wall's clock; none for an interval.
std::vector<platform::DailyTime> dailyTimes(const Automation::Schedule& schedule);

/// The first run behind `now`; nothing when it is paused, or when no time of its schedule can come.
std::optional<platform::Moment> next(
    const Automation& automation, platform::Moment since, platform::Moment now, const platform::OffsetAt& offsetAt);

/// The last run that was due before `now` and did not happen, nor any other since; nothing when it is paused or runs.
/// A run has two minutes to begin. One that was due before the job was loaded does not count.
std::optional<platform::Moment> missed(
    const Automation& automation, platform::Moment since, platform::Moment now, const platform::OffsetAt& offsetAt);

} // namespace mervo::RunTimes
