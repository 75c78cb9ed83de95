#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

/// When jobs run. Pure functions: the clock and the zone are arguments.
///
/// A daily time is one on the wall's clock. On a day when the clock skips it, the run is at the first moment behind the
/// gap; when the clock shows it twice, the first of the two counts.
namespace mervo::platform {

using Moment = std::chrono::sys_seconds;

/// Every day at this time, local time. Another hour or minute than a clock shows never comes.
struct DailyTime {
    int hour = 0; ///< 0-23
    int minute = 0; ///< 0-59

    bool operator==(const DailyTime&) const = default;
};

/// How far the local clock stands before UTC at a moment (seconds, east is positive). Between two changes of the clock
/// must lie two days or more.
using OffsetAt = std::function<std::chrono::seconds(Moment)>;

/// The offset of this machine's time zone: the variable TZ, else /etc/localtime, which is looked at again whenever this
/// is called.
OffsetAt localOffset();

/// The first moment at which the clock on the wall shows this time or a later one.
Moment momentOf(std::chrono::local_seconds wall, const OffsetAt& offsetAt);

/// The first run behind `after`, which itself is not meant; nothing when there is no time that can come.
std::optional<Moment> nextRun(const std::vector<DailyTime>& times, Moment after, const OffsetAt& offsetAt);

/// The last run at `until` or before it; nothing when there is no time that can come.
std::optional<Moment> lastRun(const std::vector<DailyTime>& times, Moment until, const OffsetAt& offsetAt);

/// The runs behind `after`, up to and with `until`, in order. Two times that fall on one moment make one run.
std::vector<Moment> runsBetween(
    const std::vector<DailyTime>& times, Moment after, Moment until, const OffsetAt& offsetAt);

/// The first run behind `after` of a job that was loaded at `since` and runs each `period` from then on (1 s at least).
Moment nextRun(Moment since, std::chrono::seconds period, Moment after);

} // namespace mervo::platform
