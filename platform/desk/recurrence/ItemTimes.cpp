#include "platform/desk/recurrence/ItemTimes.h"

#include <algorithm>
#include <charconv>

namespace mervo::desk {
namespace {

const ItemLine* lineOf(const ItemComponent& component, std::string_view name)
{
    const auto found = std::find_if(
        component.lines.begin(), component.lines.end(), [&](const ItemLine& line) { return line.name == name; });
    return found == component.lines.end() ? nullptr : &*found;
}

std::optional<DateValue> dateOf(const ItemComponent& component, std::string_view name, const FileZones& zones)
{
    const ItemLine* line = lineOf(component, name);
    return line == nullptr ? std::nullopt : readDateValue(line->value, zones.find(line->tzid), zones.local());
}

template <typename Visit>
void eachValue(std::string_view list, Visit visit)
{
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(','), list.size());
        visit(std::string(list.substr(0, end)));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
}

/// DTEND is an exact length, DURATION one on the clock (RFC 5545, 3.8.5.3). An end before the start is none.
TimeLength lengthOf(const DateValue& start, const std::optional<DateValue>& end, const ItemLine* duration)
{
    TimeLength length;
    if (end && start.isDate) {
        length.days = dayOf(end->wall) - dayOf(start.wall);
    } else if (end) {
        const std::int64_t endMoment =
            end->isDate || (end->clock == DateValue::Clock::floating) ? start.zone->momentOf(end->wall) : end->moment();
        length.seconds = endMoment - start.moment();
    } else if (duration != nullptr) {
        length = readTimeLength(duration->value).value_or(TimeLength{});
    }
    if (start.isDate)
        return {std::max<std::int64_t>(length.days + length.seconds / kDay, 1), 0};
    return length.days * kDay + length.seconds < 0 ? TimeLength{} : length;
}

std::optional<ItemRule> readItemRule(const std::string& text, const DateValue& start, const FileZones& zones)
{
    const std::optional<Rule> rule = readRule(text);
    if (!rule)
        return std::nullopt;
    ItemRule read{text, *rule};
    const std::string until(untilOf(text));
    if (until.empty())
        return read;
    const std::optional<DateValue> last = readDateValue(until, nullptr, zones.local());
    if (!last)
        return std::nullopt;
    read.last = start.isDate ? last->wall : onClockOf(*last, start);
    return read;
}

/// One value of RDATE: a date, or a period of start and end or length.
std::optional<ItemDate> readItemDate(
    const std::string& value, const ItemLine& line, const DateValue& start, const FileZones& zones)
{
    const std::size_t slash = value.find('/');
    const std::optional<DateValue> date = readDateValue(value.substr(0, slash), zones.find(line.tzid), zones.local());
    if (!date)
        return std::nullopt;
    ItemDate read{.wall = onClockOf(*date, start)};
    if (slash == std::string::npos || start.isDate)
        return read;
    const std::string end = value.substr(slash + 1);
    if (const auto length = readTimeLength(end)) {
        read.end = std::max(endOf(*date, *length), date->moment());
    } else if (const auto moment = readDateValue(end, zones.find(line.tzid), zones.local())) {
        read.end = std::max(moment->moment(), date->moment());
    }
    return read;
}

void readException(const std::string& value, const ItemLine& line, const FileZones& zones, ItemTimes& times)
{
    const std::optional<DateValue> date = readDateValue(value, zones.find(line.tzid), zones.local());
    if (!date)
        return;
    if (date->isDate && !times.start.isDate) {
        times.exceptionDays.push_back(dayOf(date->wall));
    } else {
        times.exceptions.push_back(onClockOf(*date, times.start));
    }
}

void readRepetition(const ItemComponent& component, const FileZones& zones, ItemTimes& times)
{
    for (const ItemLine& line : component.lines) {
        if (line.name == "RRULE") {
            if (auto rule = readItemRule(line.value, times.start, zones))
                times.rules.push_back(*std::move(rule));
        } else if (line.name == "RDATE") {
            eachValue(line.value, [&](const std::string& value) {
                if (const auto date = readItemDate(value, line, times.start, zones))
                    times.dates.push_back(*date);
            });
        } else if (line.name == "EXDATE") {
            eachValue(line.value, [&](const std::string& value) { readException(value, line, zones, times); });
        }
    }
    std::sort(times.exceptions.begin(), times.exceptions.end());
    std::sort(times.exceptionDays.begin(), times.exceptionDays.end());
}

} // namespace

bool ItemTimes::isException(WallTime wall) const
{
    return std::binary_search(exceptions.begin(), exceptions.end(), wall)
        || std::binary_search(exceptionDays.begin(), exceptionDays.end(), dayOf(wall));
}

std::optional<ItemTimes> readItemTimes(const ItemComponent& component, std::size_t index, const FileZones& zones)
{
    ItemTimes times;
    times.component = index;
    times.due = dateOf(component, "DUE", zones);
    const std::optional<DateValue> start = dateOf(component, "DTSTART", zones);
    if (!start && !times.due)
        return std::nullopt;
    times.start = start ? *start : *times.due;
    if (const ItemLine* uid = lineOf(component, "UID"))
        times.uid = uid->value;
    if (const ItemLine* sequence = lineOf(component, "SEQUENCE"))
        std::from_chars(sequence->value.data(), sequence->value.data() + sequence->value.size(), times.sequence);
    times.length = lengthOf(times.start, dateOf(component, "DTEND", zones), lineOf(component, "DURATION"));
    if (const ItemLine* changed = lineOf(component, "RECURRENCE-ID")) {
        times.changed = readDateValue(changed->value, zones.find(changed->tzid), zones.local());
        times.isForFuture = changed->range == "THISANDFUTURE";
    }
    if (!times.changed)
        readRepetition(component, zones, times);
    return times;
}

} // namespace mervo::desk
