#include "platform/desk/eventstore/EditedTimes.h"

#include "platform/ascii.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/recurrence/ItemText.h"
#include "platform/desk/recurrence/ZoneText.h"

#include <algorithm>

namespace mervo::desk {

using Node = ContentDocument::Node;

std::string utcText(std::int64_t moment)
{
    return dateTimeText(moment) + 'Z';
}

std::optional<DateValue> FileClocks::read(Node item, std::string_view name) const
{
    const ItemText text = readItemText(document_.text());
    return dateOf(document_, item, name, FileZones(text.zones));
}

/// In the place of the line there is, with its other parameters.
void FileClocks::set(Node item, ContentLine line)
{
    const auto there = document_.line(item, line.name);
    const auto old = there ? document_.read(*there) : std::nullopt;
    if (!old) {
        document_.add(item, line);
        return;
    }
    line.name = old->name;
    for (const LineParameter& parameter : old->parameters) {
        const bool isReplaced = platform::ascii::equalsIgnoringCase(parameter.name, "TZID")
            || platform::ascii::equalsIgnoringCase(parameter.name, "VALUE");
        if (!isReplaced)
            line.parameters.push_back(parameter);
    }
    document_.replace(*there, line);
}

void FileClocks::setDate(Node item, std::string_view name, WallTime day)
{
    set(item, {.name = std::string(name), .parameters = {{"VALUE", {"DATE"}}}, .value = dateText(day)});
}

void FileClocks::setMoment(Node item, std::string_view name, std::int64_t moment, std::string_view like)
{
    const std::string_view model = document_.line(item, name) || like.empty() ? name : like;
    const auto old = read(item, model);
    std::string zoneName = localZoneName();
    std::shared_ptr<const Zone> zone = Zone::local();
    if (old && !old->isDate) {
        const auto line = document_.read(*document_.line(item, model));
        zoneName = std::string(line->parameter("TZID").value_or(""));
        zone = old->zone;
        if (old->clock == DateValue::Clock::floating) {
            return set(item, {.name = std::string(name), .value = dateTimeText(zone->wallTimeAt(moment))});
        }
    }
    const bool isUtc = old && !old->isDate
        ? old->clock == DateValue::Clock::utc
        : zoneName.empty() || zoneName == "UTC" || zoneText(zoneName, moment).empty();
    if (isUtc)
        return set(item, {.name = std::string(name), .value = utcText(moment)});
    needZone(zoneName, moment);
    set(item,
        {.name = std::string(name),
            .parameters = {{"TZID", {zoneName}}},
            .value = dateTimeText(zone->wallTimeAt(moment))});
}

/// RFC 5545, 3.2.19: what TZID names stands in the same calendar.
void FileClocks::needZone(const std::string& name, std::int64_t since)
{
    const auto calendars = document_.components(document_.root(), "VCALENDAR");
    if (calendars.empty())
        return;
    for (const Node zone : document_.components(calendars.front(), "VTIMEZONE")) {
        if (document_.valueOf(zone, "TZID") == name)
            return;
    }
    const std::string text = zoneText(name, since);
    const auto components = document_.components(calendars.front());
    if (components.empty())
        document_.addText(calendars.front(), text);
    else
        document_.insertText(components.front(), text);
}

} // namespace mervo::desk
