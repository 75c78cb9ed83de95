#include "platform/jobs/CalendarTime.h"

#include "platform/schedule/Schedule.h"

#include <utility>

namespace mervo::jobs {

namespace {

using namespace std::chrono;

constexpr days kFurthest{8 * 366}; // to the next 29 February there are at most eight years

bool isOn(const CalendarTime& time, local_days today)
{
    const year_month_day date(today);
    const bool isDay = time.day && date.day() == day(static_cast<unsigned>(*time.day));
    const bool isWeekday = time.weekday && weekday(today) == weekday(static_cast<unsigned>(*time.weekday));
    return (!time.month || date.month() == month(static_cast<unsigned>(*time.month)))
        && (isDay || isWeekday || (!time.day && !time.weekday));
}

/// Of the times of one day, in order, the first that comes after a moment. They come in the order of the clock.
std::optional<platform::Moment> nextOn(
    local_days today, const CalendarTime& time, platform::Moment after, const platform::OffsetAt& offsetAt)
{
    const int perHour = time.minute ? 1 : 60;
    const auto momentOf = [&](int index) {
        const hours hour(time.hour.value_or(index / perHour));
        return platform::momentOf(today + hour + minutes(time.minute.value_or(index % perHour)), offsetAt);
    };
    const int count = (time.hour ? 1 : 24) * perHour;
    int first = 0;
    for (int end = count; first < end;) {
        const int middle = first + (end - first) / 2;
        if (momentOf(middle) > after) {
            end = middle;
        } else {
            first = middle + 1;
        }
    }
    return first == count ? std::nullopt : std::optional(momentOf(first));
}

std::optional<platform::Moment> next(
    const CalendarTime& time, platform::Moment after, const platform::OffsetAt& offsetAt)
{
    const auto today = floor<days>(local_seconds((after + offsetAt(after)).time_since_epoch()));
    for (auto day = today; day <= today + kFurthest; day += days(1)) {
        if (!isOn(time, day))
            continue;
        if (const auto moment = nextOn(day, time, after, offsetAt))
            return moment;
    }
    return std::nullopt;
}

} // namespace

Calendar calendarOf(std::vector<CalendarTime> times)
{
    return [times = std::move(times), offsetAt = platform::localOffset()](WallTime after) {
        std::optional<WallTime> first;
        for (const CalendarTime& time : times) {
            const auto moment = next(time, floor<seconds>(after), offsetAt);
            if (moment && (!first || *moment < *first))
                first = *moment;
        }
        return first;
    };
}

std::vector<WallTime> gapsOfTheClock(WallTime from, days length)
{
    const platform::OffsetAt offsetAt = platform::localOffset();
    std::vector<WallTime> gaps;
    const auto begin = floor<seconds>(from);
    for (auto before = begin; before < begin + length; before += days(1)) {
        auto lower = before, upper = before + days(1);
        const seconds old = offsetAt(lower);
        if (offsetAt(upper) <= old)
            continue;
        while (upper - lower > 1s) {
            const auto middle = lower + (upper - lower) / 2;
            (offsetAt(middle) == old ? lower : upper) = middle;
        }
        gaps.push_back(upper);
    }
    return gaps;
}

} // namespace mervo::jobs
