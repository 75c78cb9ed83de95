#include "core/foundation/Timestamps.h"

#include "platform/ascii.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo {

namespace {

using namespace std::chrono;

constexpr std::string_view kForm = "0000-00-00T00:00:00Z";

bool hasForm(std::string_view text)
{
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
        [](char letter, char form) { return form == '0' ? platform::ascii::isDigit(letter) : letter == form; });
}

int number(std::string_view digits)
{
    int value = 0;
    for (const char digit : digits)
        value = value * 10 + (digit - '0');
    return value;
}

Timestamps::Time nearest(sys_seconds time)
{
    constexpr auto kFirst = ceil<seconds>(Timestamps::Time::min());
    constexpr auto kLast = floor<seconds>(Timestamps::Time::max());
    return std::clamp(time, kFirst, kLast);
}

} // namespace

std::string Timestamps::now()
{
    return string(system_clock::now());
}

std::string Timestamps::string(Time time)
{
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(floor<seconds>(time - day));
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
        clock.minutes().count(), clock.seconds().count());
}

std::optional<Timestamps::Time> Timestamps::date(std::string_view text)
{
    if (!hasForm(text))
        return std::nullopt;
    const auto part = [&](std::size_t start, std::size_t length) { return number(text.substr(start, length)); };
    const year_month_day date(
        year(part(0, 4)), month(static_cast<unsigned>(part(5, 2))), day(static_cast<unsigned>(part(8, 2))));
    const int hour = part(11, 2), minute = part(14, 2), second = part(17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return nearest(sys_days(date) + hours(hour) + minutes(minute) + seconds(second));
}

} // namespace mervo
