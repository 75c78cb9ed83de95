#include "cockpit/model/shown/RelativeTime.h"

#include <array>
#include <fmt/format.h>

namespace mervo::RelativeTime {

namespace {

struct Unit {
    std::int64_t seconds;
    const char* name;
};

constexpr std::array kUnits{Unit{365 * 86'400, "year"}, Unit{30 * 86'400, "month"}, Unit{7 * 86'400, "week"},
    Unit{86'400, "day"}, Unit{3'600, "hour"}, Unit{60, "minute"}, Unit{1, "second"}};

std::int64_t secondsOf(Timestamps::Time time)
{
    return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
}

} // namespace

std::string text(Timestamps::Time then, Timestamps::Time now)
{
    const std::int64_t age = secondsOf(now) - secondsOf(then);
    const std::int64_t distance = age < 0 ? -age : age;
    for (const auto& [seconds, name] : kUnits) {
        if (distance < seconds && seconds > 1)
            continue;
        const std::int64_t count = distance / seconds;
        const auto amount = fmt::format("{} {}{}", count, name, count == 1 ? "" : "s");
        return age < 0 ? "in " + amount : amount + " ago";
    }
    return {};
}

std::string text(std::string_view then, Timestamps::Time now)
{
    const auto time = Timestamps::date(then);
    return time ? text(*time, now) : std::string();
}

} // namespace mervo::RelativeTime
