#include "core/tools/LocalTime.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fmt/format.h>

namespace mervo::LocalTime {

namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kMostDays = 2'900'000;

/// Seconds that the local clock is ahead of UTC.
std::int64_t offsetAt(std::int64_t moment)
{
    const std::time_t seconds = moment;
    std::tm local{};
    return ::localtime_r(&seconds, &local) == nullptr ? 0 : local.tm_gmtoff;
}

/// The moment at which the local clock shows so many seconds since 1970-01-01 00:00.
std::int64_t whenShown(std::int64_t shown)
{
    const std::int64_t before = offsetAt(shown - kDay);
    const std::int64_t after = offsetAt(shown + kDay);
    const bool isShownBefore = offsetAt(shown - before) == before;
    const bool isShownAfter = offsetAt(shown - after) == after;
    return !isShownBefore && isShownAfter ? shown - after : shown - before;
}

platform::DateComponents shownAt(std::int64_t moment)
{
    using namespace std::chrono;
    const sys_seconds shown(seconds(moment + offsetAt(moment)));
    const auto midnight = floor<days>(shown);
    const year_month_day date(midnight);
    const hh_mm_ss time(shown - midnight);
    return {.year = int(date.year()),
        .month = int(unsigned(date.month())),
        .day = int(unsigned(date.day())),
        .time =
            platform::TimeOfDay{int(time.hours().count()), int(time.minutes().count()), int(time.seconds().count())}};
}

} // namespace

std::int64_t daysLater(std::int64_t moment, std::int64_t days)
{
    return whenShown(moment + offsetAt(moment) + std::clamp(days, -kMostDays, kMostDays) * kDay);
}

std::int64_t moment(const platform::DateComponents& date)
{
    using namespace std::chrono;
    const sys_days midnight(
        std::chrono::year(date.year) / std::chrono::month(unsigned(date.month)) / std::chrono::day(unsigned(date.day)));
    const platform::TimeOfDay time = date.time.value_or(platform::TimeOfDay{});
    return whenShown(
        midnight.time_since_epoch().count() * kDay + time.hour * 3600LL + time.minute * 60LL + time.second);
}

std::string day(std::int64_t moment)
{
    return day(shownAt(moment));
}

std::string minute(std::int64_t moment)
{
    return minute(shownAt(moment));
}

std::string day(const platform::DateComponents& date)
{
    return fmt::format("{:04}-{:02}-{:02}", date.year, date.month, date.day);
}

std::string minute(const platform::DateComponents& date)
{
    const platform::TimeOfDay time = date.time.value_or(platform::TimeOfDay{});
    return fmt::format("{} {:02}:{:02}", day(date), time.hour, time.minute);
}

} // namespace mervo::LocalTime
