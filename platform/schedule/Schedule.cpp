#include "platform/schedule/Schedule.h"

#include <algorithm>
#include <ctime>
#include <set>

namespace mervo::platform {

namespace {

using namespace std::chrono;

using WallDay = local_days;
using Wall = local_seconds;

constexpr hours kFurthest(26); ///< no clock stands further from UTC

Wall wallAt(Moment moment, const OffsetAt& offsetAt)
{
    return Wall((moment + offsetAt(moment)).time_since_epoch());
}

Moment on(Wall wall, seconds offset)
{
    return Moment(wall.time_since_epoch()) - offset;
}

/// The first moment at which the clock has changed, which it does between the two.
Moment changeBetween(Moment before, Moment behind, const OffsetAt& offsetAt)
{
    const seconds old = offsetAt(before);
    while (behind - before > 1s) {
        const Moment middle = before + (behind - before) / 2;
        (offsetAt(middle) == old ? before : behind) = middle;
    }
    return behind;
}

/// The runs of the days around a moment's.
std::set<Moment> runsAround(const std::vector<DailyTime>& times, Moment moment, const OffsetAt& offsetAt)
{
    std::set<Moment> runs;
    const auto today = floor<days>(wallAt(moment, offsetAt));
    for (WallDay day = today - days(2); day <= today + days(2); day += days(1)) {
        for (const DailyTime& time : times) {
            if (time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60)
                runs.insert(momentOf(day + hours(time.hour) + minutes(time.minute), offsetAt));
        }
    }
    return runs;
}

} // namespace

OffsetAt localOffset()
{
    ::tzset();
    return [](Moment moment) {
        const std::time_t time = moment.time_since_epoch().count();
        std::tm local{};
        return seconds(::localtime_r(&time, &local) == nullptr ? 0 : local.tm_gmtoff);
    };
}

Moment momentOf(Wall wall, const OffsetAt& offsetAt)
{
    const seconds old = offsetAt(on(wall, 0s) - kFurthest), later = offsetAt(on(wall, 0s) + kFurthest);
    const Moment first = on(wall, old), second = on(wall, later);
    const bool isOld = offsetAt(first) == old, isLater = offsetAt(second) == later;
    if (isOld && isLater)
        return std::min(first, second);
    if (isOld)
        return first;
    return isLater ? second : changeBetween(second, first, offsetAt);
}

std::optional<Moment> nextRun(const std::vector<DailyTime>& times, Moment after, const OffsetAt& offsetAt)
{
    const auto runs = runsAround(times, after, offsetAt);
    const auto found = runs.upper_bound(after);
    return found == runs.end() ? std::nullopt : std::optional(*found);
}

std::optional<Moment> lastRun(const std::vector<DailyTime>& times, Moment until, const OffsetAt& offsetAt)
{
    const auto runs = runsAround(times, until, offsetAt);
    const auto behind = runs.upper_bound(until);
    return behind == runs.begin() ? std::nullopt : std::optional(*std::prev(behind));
}

std::vector<Moment> runsBetween(
    const std::vector<DailyTime>& times, Moment after, Moment until, const OffsetAt& offsetAt)
{
    std::vector<Moment> runs;
    for (auto run = nextRun(times, after, offsetAt); run && *run <= until; run = nextRun(times, *run, offsetAt))
        runs.push_back(*run);
    return runs;
}

Moment nextRun(Moment since, seconds period, Moment after)
{
    period = std::max(period, 1s);
    return after < since ? since + period : since + ((after - since) / period + 1) * period;
}

} // namespace mervo::platform
