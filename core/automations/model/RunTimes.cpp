#include "core/automations/model/RunTimes.h"

#include <algorithm>
#include <chrono>

namespace mervo::RunTimes {

namespace {

using platform::DailyTime;
using platform::Moment;
using platform::OffsetAt;
using namespace std::chrono;

constexpr minutes kGrace(2);
constexpr std::int64_t kMostMinutes = 100LL * 365 * 24 * 60; ///< longer intervals count as a hundred years

DailyTime daily(std::int64_t hour, std::int64_t minute)
{
    const auto narrow = [](std::int64_t value) { return static_cast<int>(std::clamp<std::int64_t>(value, -1, 60)); };
    return {narrow(hour), narrow(minute)};
}

std::optional<seconds> periodOf(const Automation::Schedule& schedule)
{
    const auto* every = std::get_if<Automation::Interval>(&schedule);
    if (every == nullptr)
        return std::nullopt;
    return minutes(std::clamp<std::int64_t>(every->minutes, 1, kMostMinutes));
}

} // namespace

std::vector<DailyTime> dailyTimes(const Automation::Schedule& schedule)
{
    std::vector<DailyTime> times;
    if (const auto* at = std::get_if<Automation::Calendar>(&schedule))
        times.push_back(daily(at->hour, at->minute));
    if (const auto* at = std::get_if<Automation::Hours>(&schedule)) {
        for (const std::int64_t hour : at->hours)
            times.push_back(daily(hour, at->minute));
    }
    return times;
}

std::optional<Moment> next(const Automation& automation, Moment since, Moment now, const OffsetAt& offsetAt)
{
    if (!automation.enabled)
        return std::nullopt;
    if (const auto period = periodOf(automation.schedule))
        return platform::nextRun(since, *period, now);
    return platform::nextRun(dailyTimes(automation.schedule), now, offsetAt);
}

std::optional<Moment> missed(const Automation& automation, Moment since, Moment now, const OffsetAt& offsetAt)
{
    if (!automation.enabled || automation.running)
        return std::nullopt;
    const Moment last = automation.lastRun ? floor<seconds>(*automation.lastRun) : Moment::min();
    if (const auto period = periodOf(automation.schedule)) {
        const Moment due = std::max(last, since) + *period;
        return due + kGrace < now ? std::optional(due) : std::nullopt;
    }
    const auto due = platform::lastRun(dailyTimes(automation.schedule), now - kGrace, offsetAt);
    return due && *due > since && *due > last ? due : std::nullopt;
}

} // namespace mervo::RunTimes
