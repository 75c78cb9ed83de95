#include "platform/desk/recurrence/Rule.h"

#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <string>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::size_t kMostNumbers = 1000; // in one part; a year has 366 days

std::string upper(std::string_view text)
{
    std::string folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(),
        [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return folded;
}

/// The text up to the separator, which goes too.
std::string_view takeUntil(std::string_view& text, char separator)
{
    const std::size_t at = text.find(separator);
    const std::string_view taken = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return taken;
}

/// A whole number with an optional sign; longer ones than fit are the largest there is.
std::optional<std::int64_t> number(std::string_view text)
{
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    if (text.empty() || !std::all_of(text.begin(), text.end(), platform::ascii::isDigit))
        return std::nullopt;
    std::int64_t value = 0;
    for (const char c : text)
        value = std::min<std::int64_t>(value * 10 + (c - '0'), std::numeric_limits<std::int32_t>::max());
    return isNegative ? -value : value;
}

template <std::size_t size>
bool readSet(std::string_view text, int least, std::bitset<size>& set)
{
    while (!text.empty()) {
        const std::optional<std::int64_t> value = number(takeUntil(text, ','));
        if (!value || *value < least || *value >= static_cast<std::int64_t>(size))
            return false;
        set.set(static_cast<std::size_t>(*value));
    }
    return set.any();
}

/// Seconds may be 60: where leap seconds are not counted, that is second 59 (RFC 5545, 3.3.12).
bool readSeconds(std::string_view text, std::bitset<60>& set)
{
    std::bitset<61> all;
    if (!readSet(text, 0, all))
        return false;
    for (std::size_t second = 0; second < all.size(); ++second) {
        if (all.test(second))
            set.set(std::min<std::size_t>(second, 59));
    }
    return true;
}

/// Numbers from 1 to `most`, or likewise below 0.
bool readList(std::string_view text, int most, std::vector<int>& list)
{
    while (!text.empty()) {
        const std::optional<std::int64_t> value = number(takeUntil(text, ','));
        if (!value || *value == 0 || *value > most || *value < -most || list.size() >= kMostNumbers)
            return false;
        list.push_back(static_cast<int>(*value));
    }
    return !list.empty();
}

std::optional<Weekday> weekday(std::string_view text)
{
    constexpr std::array<std::string_view, 7> kNames = {"MO", "TU", "WE", "TH", "FR", "SA", "SU"};
    const auto* const found = std::find(kNames.begin(), kNames.end(), text);
    return found == kNames.end() ? std::nullopt : std::optional(static_cast<Weekday>(found - kNames.begin()));
}

bool readDays(std::string_view text, std::vector<Rule::Day>& days)
{
    while (!text.empty()) {
        const std::string_view day = takeUntil(text, ',');
        if (day.size() < 2 || days.size() >= kMostNumbers)
            return false;
        const std::string_view position = day.substr(0, day.size() - 2);
        const std::optional<Weekday> name = weekday(day.substr(day.size() - 2));
        const std::optional<std::int64_t> number = position.empty() ? 0 : mervo::desk::number(position);
        if (!name || !number || *number > 53 || *number < -53 || (*number == 0 && !position.empty()))
            return false;
        days.push_back({*name, static_cast<int>(*number)});
    }
    return !days.empty();
}

bool readFrequency(std::string_view text, Rule& rule)
{
    constexpr std::array<std::string_view, 7> kNames = {
        "YEARLY", "MONTHLY", "WEEKLY", "DAILY", "HOURLY", "MINUTELY", "SECONDLY"};
    const auto* const found = std::find(kNames.begin(), kNames.end(), text);
    rule.frequency = static_cast<Frequency>(found - kNames.begin());
    return found != kNames.end();
}

bool readPositive(std::string_view text, std::int64_t& value)
{
    value = number(text).value_or(0);
    return value > 0;
}

bool readPart(std::string_view name, std::string_view value, Rule& rule)
{
    if (name == "FREQ")
        return readFrequency(value, rule);
    if (name == "INTERVAL")
        return readPositive(value, rule.interval);
    if (name == "COUNT")
        return readPositive(value, rule.count.emplace());
    if (name == "BYSECOND")
        return readSeconds(value, rule.seconds);
    if (name == "BYMINUTE")
        return readSet(value, 0, rule.minutes);
    if (name == "BYHOUR")
        return readSet(value, 0, rule.hours);
    if (name == "BYMONTH")
        return readSet(value, 1, rule.months);
    if (name == "BYDAY")
        return readDays(value, rule.days);
    if (name == "BYMONTHDAY")
        return readList(value, 31, rule.monthDays);
    if (name == "BYYEARDAY")
        return readList(value, 366, rule.yearDays);
    if (name == "BYWEEKNO")
        return readList(value, 53, rule.weeks);
    if (name == "BYSETPOS")
        return readList(value, 366, rule.positions);
    if (name == "WKST") {
        const std::optional<Weekday> day = weekday(value);
        rule.weekStart = day.value_or(Weekday::monday);
        return day.has_value();
    }
    return true;
}

} // namespace

std::optional<Rule> readRule(std::string_view value)
{
    const std::string folded = upper(value);
    std::string_view rest = folded;
    std::set<std::string_view> seen;
    Rule rule;
    while (!rest.empty()) {
        std::string_view part = takeUntil(rest, ';');
        const std::string_view name = takeUntil(part, '=');
        if (!name.empty() && (!seen.insert(name).second || !readPart(name, part, rule)))
            return std::nullopt;
    }
    return seen.count("FREQ") != 0 ? std::optional(rule) : std::nullopt;
}

std::string_view untilOf(std::string_view rule)
{
    while (!rule.empty()) {
        std::string_view part = takeUntil(rule, ';');
        if (upper(takeUntil(part, '=')) == "UNTIL")
            return part;
    }
    return {};
}

std::string withCount(std::string_view rule, std::int64_t count)
{
    std::string changed;
    while (!rule.empty()) {
        const std::string_view part = takeUntil(rule, ';');
        changed += changed.empty() ? "" : ";";
        if (upper(part.substr(0, part.find('='))) == "COUNT") {
            changed += std::string(part.substr(0, 6)) + std::to_string(count);
        } else {
            changed += part;
        }
    }
    return changed;
}

} // namespace mervo::desk
