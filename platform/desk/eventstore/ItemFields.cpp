#include "platform/desk/eventstore/ItemFields.h"

#include "platform/ascii.h"

#include <charconv>

namespace mervo::desk {

using Node = ContentDocument::Node;
namespace ascii = platform::ascii;

std::vector<Node> itemsOf(const ContentDocument& document, std::string_view name)
{
    std::vector<Node> items;
    for (const Node calendar : document.components(document.root(), "VCALENDAR")) {
        const auto found = document.components(calendar, name);
        items.insert(items.end(), found.begin(), found.end());
    }
    return items;
}

std::optional<std::int64_t> numberOf(const ContentDocument& document, Node item, std::string_view name)
{
    const std::string value = document.valueOf(item, name).value_or("");
    std::int64_t number = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), number);
    return read.ec == std::errc() && read.ptr == value.data() + value.size() ? std::optional(number) : std::nullopt;
}

std::optional<std::int64_t> momentIn(const std::string& value)
{
    const auto date = readDateValue(value, nullptr, Zone::utc());
    return date && date->clock == DateValue::Clock::utc ? std::optional(date->moment()) : std::nullopt;
}

std::optional<std::int64_t> momentOf(const ContentDocument& document, Node item, std::string_view name)
{
    return momentIn(document.valueOf(item, name).value_or(""));
}

std::optional<DateValue> dateOf(
    const ContentDocument& document, Node item, std::string_view name, const FileZones& zones)
{
    const auto node = document.line(item, name);
    const auto line = node ? document.read(*node) : std::nullopt;
    if (!line)
        return std::nullopt;
    const auto zone = line->parameter("TZID");
    return readDateValue(line->value, zone ? zones.find(std::string(*zone)) : nullptr, zones.local());
}

bool isCompleted(const ContentDocument& document, Node task)
{
    const std::string status = document.valueOf(task, "STATUS").value_or("");
    if (!status.empty())
        return ascii::equalsIgnoringCase(status, "COMPLETED") || ascii::equalsIgnoringCase(status, "CANCELLED");
    return document.line(task, "COMPLETED") || numberOf(document, task, "PERCENT-COMPLETE") == 100;
}

std::optional<DateValue> dueOf(const ContentDocument& document, Node task, const FileZones& zones)
{
    if (auto due = dateOf(document, task, "DUE", zones))
        return due;
    auto start = dateOf(document, task, "DTSTART", zones);
    const auto length = readTimeLength(document.valueOf(task, "DURATION").value_or(""));
    if (!start || !length)
        return std::nullopt;
    start->wall = start->zone->wallTimeAt(endOf(*start, *length));
    return start;
}

std::vector<Node> absoluteTriggers(const ContentDocument& document, Node item)
{
    std::vector<Node> found;
    for (const Node alarm : document.components(item, "VALARM")) {
        const auto trigger = document.line(alarm, "TRIGGER");
        const auto line = trigger ? document.read(*trigger) : std::nullopt;
        if (line && momentIn(line->value))
            found.push_back(*trigger);
    }
    return found;
}

} // namespace mervo::desk
