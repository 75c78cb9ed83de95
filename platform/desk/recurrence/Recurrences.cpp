#include "platform/desk/recurrence/Recurrences.h"

#include "platform/desk/recurrence/DateValue.h"
#include "platform/desk/recurrence/ItemText.h"
#include "platform/desk/recurrence/Zone.h"

#include <algorithm>
#include <set>

namespace mervo::desk {
namespace {

const ItemLine* lineOf(const ItemComponent& component, std::string_view name)
{
    const auto found = std::find_if(
        component.lines.begin(), component.lines.end(), [&](const ItemLine& line) { return line.name == name; });
    return found == component.lines.end() ? nullptr : &*found;
}

std::string uidOf(const ItemComponent& component)
{
    const ItemLine* uid = lineOf(component, "UID");
    return uid == nullptr ? std::string() : uid->value;
}

void append(const std::vector<ItemComponent>& components, std::string& text, std::set<std::string>& tzids)
{
    for (const ItemComponent& component : components) {
        text += "BEGIN:" + component.name + "\n";
        for (const ItemLine& line : component.lines) {
            text += line.raw + "\n";
            if (!line.tzid.empty())
                tzids.insert(line.tzid);
        }
        text += "END:" + component.name + "\n";
    }
}

void append(const ItemZone& zone, std::string& text)
{
    text += "BEGIN:VTIMEZONE\nTZID:" + zone.tzid + "\n";
    std::set<std::string> none;
    append(zone.observances, text, none);
    text += "END:VTIMEZONE\n";
}

/// The event that a component belongs to, or the component itself where that is not in the file.
const ItemComponent& eventOf(const std::vector<ItemComponent>& events, std::size_t component)
{
    const auto event = std::find_if(events.begin(), events.end(), [&](const ItemComponent& other) {
        return uidOf(other) == uidOf(events[component]) && lineOf(other, "RECURRENCE-ID") == nullptr
            && lineOf(other, "DTSTART") != nullptr;
    });
    return event == events.end() ? events[component] : *event;
}

} // namespace

std::string timesText(std::string_view text)
{
    const ItemText read = readItemText(text);
    std::string items;
    std::set<std::string> tzids;
    append(read.events, items, tzids);
    append(read.todos, items, tzids);
    std::string zones;
    for (const ItemZone& zone : read.zones) {
        if (tzids.erase(zone.tzid) != 0 && !Zone::find(zone.tzid))
            append(zone, zones);
    }
    return "BEGIN:VCALENDAR\n" + zones + items + "END:VCALENDAR\n";
}

DateLine dateLine(std::string_view text, std::size_t component, const std::string& key)
{
    if (key.size() == 8)
        return {{{"VALUE", "DATE"}}, key};
    const ItemText read = readItemText(text);
    if (key.ends_with('Z') || component >= read.events.size())
        return {{}, key};
    const ItemComponent& event = eventOf(read.events, component);
    const ItemLine* form = lineOf(event, lineOf(event, "RECURRENCE-ID") == nullptr ? "DTSTART" : "RECURRENCE-ID");
    if (form == nullptr || form->tzid.empty())
        return {{}, key};
    return {{{"TZID", form->tzid}}, key};
}

} // namespace mervo::desk
