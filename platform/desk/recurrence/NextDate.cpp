#include "platform/desk/recurrence/ItemTimes.h"
#include "platform/desk/recurrence/Recurrences.h"

#include <algorithm>

namespace mervo::desk {
namespace {

/// The first date of a rule behind the start that is no exception; nothing where there is none.
std::optional<WallTime> nextOf(const ItemRule& rule, const ItemTimes& times, RuleDates::Steps& steps)
{
    RuleDates dates(rule.rule, times.start.wall, times.start.isDate, steps);
    while (const std::optional<WallTime> date = dates.next(rule.last)) {
        if (*date > times.start.wall && !times.isException(*date))
            return date;
    }
    return std::nullopt;
}

std::optional<WallTime> nextOf(const ItemTimes& times, RuleDates::Steps& steps)
{
    std::optional<WallTime> next;
    const auto offer = [&](WallTime date) { next = next ? std::min(*next, date) : date; };
    for (const ItemRule& rule : times.rules) {
        if (const std::optional<WallTime> date = nextOf(rule, times, steps))
            offer(*date);
    }
    for (const ItemDate& date : times.dates) {
        if (date.wall > times.start.wall && !times.isException(date.wall))
            offer(date.wall);
    }
    return next;
}

/// The rule as it goes on from another first date: its COUNT without the dates before it.
std::string continued(const ItemRule& rule, const ItemTimes& times, WallTime from, RuleDates::Steps& steps)
{
    if (!rule.rule.count)
        return rule.text;
    RuleDates dates(rule.rule, times.start.wall, times.start.isDate, steps);
    std::int64_t before = 0;
    while (dates.next(std::min(from - 1, rule.last)))
        ++before;
    return withCount(rule.text, std::max<std::int64_t>(*rule.rule.count - std::max<std::int64_t>(before, 1), 1));
}

/// A date as far behind another one as the new start is behind the old one, in its own form.
std::string moved(DateValue date, const ItemTimes& times, WallTime start)
{
    date.wall += start - times.start.wall;
    return date.text();
}

} // namespace

std::optional<NextDate> nextDate(std::string_view text, std::size_t component)
{
    const ItemText read = readItemText(text);
    if (component >= read.todos.size())
        return std::nullopt;
    const FileZones zones(read.zones);
    const std::optional<ItemTimes> times = readItemTimes(read.todos[component], component, zones);
    if (!times)
        return std::nullopt;
    RuleDates::Steps steps;
    const std::optional<WallTime> start = nextOf(*times, steps);
    if (!start)
        return std::nullopt;
    NextDate next;
    const auto& lines = read.todos[component].lines;
    const bool hasStart =
        std::any_of(lines.begin(), lines.end(), [](const ItemLine& line) { return line.name == "DTSTART"; });
    if (hasStart)
        next.start = moved(times->start, *times, *start);
    if (times->due)
        next.due = moved(*times->due, *times, *start);
    for (const ItemRule& rule : times->rules)
        next.rules.push_back(continued(rule, *times, *start, steps));
    return next;
}

} // namespace mervo::desk
