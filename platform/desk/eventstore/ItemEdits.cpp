#include "platform/desk/eventstore/ItemEdits.h"

#include "platform/ascii.h"
#include "platform/desk/contentlines/TextValue.h"
#include "platform/desk/eventstore/EditedTimes.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/eventstore/MovedSeries.h"
#include "platform/desk/recurrence/ItemText.h"
#include "platform/desk/recurrence/Recurrences.h"
#include "platform/desk/recurrence/Rule.h"

#include <algorithm>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

using Node = ContentDocument::Node;
using platform::EventChange;
using platform::EventStoreError;
using platform::ReminderChange;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kFarOff = 366 * kDay; // a changed occurrence is looked for so far from where its rule has it

enum class Weight { text, schedule }; ///< whether SEQUENCE rises

void touch(ContentDocument& document, Node item, std::int64_t now, Weight weight)
{
    document.setValue(item, "DTSTAMP", utcText(now));
    document.setValue(item, "LAST-MODIFIED", utcText(now));
    if (weight == Weight::schedule)
        document.setValue(item, "SEQUENCE", fmt::to_string(numberOf(document, item, "SEQUENCE").value_or(0) + 1));
}

/// An empty value takes the lines away.
void setOrRemove(ContentDocument& document, Node item, std::string_view name, const std::string& value)
{
    if (value.empty())
        document.removeLines(item, name);
    else
        document.setValue(item, name, value);
}

void setText(ContentDocument& document, Node item, std::string_view name, const std::optional<std::string>& text)
{
    if (text)
        setOrRemove(document, item, name, escapedText(*text));
}

bool hasUid(const ContentDocument& document, Node item, const std::string& uid)
{
    return document.valueOf(item, "UID").value_or("") == uid;
}

/// An occurrence as it stands in the file.
struct Standing {
    std::size_t component = 0;
    std::int64_t start = 0, end = 0;
    bool isAllDay = false;
};

std::optional<Standing> standing(const std::vector<Occurrence>& all, const ContentDocument& document,
    const std::vector<Node>& events, const EventPlace& place)
{
    for (const Occurrence& found : all) {
        const bool isMeant = place.key.empty() || found.key == place.key;
        if (isMeant && found.component < events.size() && hasUid(document, events[found.component], place.uid))
            return Standing{found.component, found.start, found.end, found.isAllDay};
    }
    return std::nullopt;
}

[[noreturn]] void failGone()
{
    throw EventStoreError("Nothing was changed: the event is not in its file any more; try again.");
}

/// How the occurrence stands in the file; nothing where it is gone, and for an event without a date.
std::optional<Standing> lookUp(
    const ContentDocument& document, const std::vector<Node>& events, const EventPlace& place)
{
    const std::string text = document.text();
    if (place.key.empty())
        return standing(firstOccurrences(text), document, events, place);
    const auto key = readDateValue(place.key, nullptr, Zone::local());
    if (!key)
        return std::nullopt;
    for (const std::int64_t width : {2 * kDay, kFarOff}) {
        const std::int64_t middle = key->moment();
        if (auto found = standing(occurrences(text, {middle - width, middle + width}).all, document, events, place))
            return found;
    }
    return std::nullopt;
}

/// The date of an EXDATE or RECURRENCE-ID for a key.
ContentLine dateLineFor(
    const ContentDocument& document, std::size_t component, const std::string& key, const char* name)
{
    const DateLine found = dateLine(document.text(), component, key);
    ContentLine line{.name = name, .value = found.value};
    for (const auto& [parameter, value] : found.parameters)
        line.parameters.push_back({parameter, {value}});
    return line;
}

Node calendarOf(const ContentDocument& document, Node item)
{
    for (const Node calendar : document.components(document.root(), "VCALENDAR")) {
        const auto items = document.components(calendar);
        if (std::ranges::find(items, item) != items.end())
            return calendar;
    }
    failGone();
}

void setTimes(ContentDocument& document, Node event, const Standing& old, const EventChange& change)
{
    FileClocks clocks(document);
    const bool isAllDay = change.isAllDay.value_or(old.isAllDay);
    const std::int64_t start = change.start.value_or(old.start);
    const bool isSwitched = isAllDay != old.isAllDay;
    std::int64_t end = change.end.value_or(start + (old.end - old.start));
    const auto zone = Zone::local();
    if (end < start)
        throw EventStoreError("An event cannot end before it starts.");
    if (change.start || isSwitched) {
        if (isAllDay)
            clocks.setDate(event, "DTSTART", dayOf(zone->wallTimeAt(start)) * kDay);
        else
            clocks.setMoment(event, "DTSTART", start);
    }
    const bool hasEnd = document.line(event, "DTEND").has_value();
    if (!change.end && !isSwitched && !hasEnd)
        return; // its DURATION, or what the lack of one means, follows the start
    document.removeLines(event, "DURATION");
    if (!isAllDay)
        return clocks.setMoment(event, "DTEND", end, "DTSTART");
    const std::int64_t firstDay = dayOf(zone->wallTimeAt(start));
    const std::int64_t days = std::max<std::int64_t>(1, (zone->wallTimeAt(end) - firstDay * kDay + kDay - 1) / kDay);
    clocks.setDate(event, "DTEND", (firstDay + days) * kDay);
}

/// Changes the times of an item; what names its dates follows its start.
template <typename Change>
void moveAlong(ContentDocument& document, Node item, const Change& change)
{
    const FileClocks clocks(document);
    const auto start = [&] {
        auto found = clocks.read(item, "DTSTART");
        return found ? found : clocks.read(item, "DUE");
    };
    const auto before = start();
    change();
    const auto after = start();
    if (before && after)
        moveDates(document, item, *before, *after);
}

/// A component of its own for one occurrence.
Node changedOccurrence(
    ContentDocument& document, const std::vector<Node>& events, const Standing& found, const EventPlace& place)
{
    const Node from = events[found.component];
    const auto ours = document.line(from, "RECURRENCE-ID");
    const bool isOwn = ours && !document.read(*ours)->parameter("RANGE");
    if (isOwn)
        return from;
    const ContentLine id = dateLineFor(document, found.component, place.key, "RECURRENCE-ID");
    const Node made = document.addText(calendarOf(document, from), document.bytes(from)).value();
    for (const char* name : {"RRULE", "RDATE", "EXDATE", "EXRULE", "RECURRENCE-ID"})
        document.removeLines(made, name);
    document.add(made, id);
    setTimes(document, made, found,
        {.start = found.start, .end = document.line(made, "DTEND") ? std::optional(found.end) : std::nullopt});
    return made;
}

bool changesSchedule(const EventChange& change)
{
    return change.start || change.end || change.isAllDay || change.location || change.recurrence || change.status;
}

void setUrl(ContentDocument& document, Node item, const std::optional<std::string>& url)
{
    if (url)
        setOrRemove(document, item, "URL", *url);
}

Node taskOf(const ContentDocument& document, const std::string& uid)
{
    const auto tasks = itemsOf(document, "VTODO");
    for (const bool isMaster : {true, false}) {
        for (const Node task : tasks) {
            if (hasUid(document, task, uid) && isMaster != document.line(task, "RECURRENCE-ID").has_value())
                return task;
        }
    }
    throw EventStoreError("Nothing was changed: the reminder is not in its file any more; try again.");
}

std::optional<DateValue> dueIn(const ContentDocument& document, Node task)
{
    const ItemText text = readItemText(document.text());
    return dueOf(document, task, FileZones(text.zones));
}

void moveAlarms(ContentDocument& document, Node task, std::int64_t distance)
{
    for (const Node trigger : absoluteTriggers(document, task))
        document.setValue(trigger, utcText(*momentIn(document.read(trigger)->value) + distance));
}

/// True when the task goes on to another date.
bool goOn(ContentDocument& document, Node task)
{
    const auto tasks = itemsOf(document, "VTODO");
    const auto at = std::ranges::find(tasks, task);
    const auto next = nextDate(document.text(), static_cast<std::size_t>(at - tasks.begin()));
    if (!next)
        return false;
    const auto before = dueIn(document, task);
    if (!next->start.empty())
        document.setValue(task, "DTSTART", next->start);
    if (!next->due.empty())
        document.setValue(task, "DUE", next->due);
    const auto rules = document.lines(task, "RRULE");
    for (std::size_t i = 0; i < std::min(rules.size(), next->rules.size()); ++i)
        document.setValue(rules[i], next->rules[i]);
    const auto after = dueIn(document, task);
    if (before && after)
        moveAlarms(document, task, after->moment() - before->moment());
    return true;
}

void reopen(ContentDocument& document, Node task)
{
    document.setValue(task, "STATUS", "NEEDS-ACTION");
    document.removeLines(task, "COMPLETED");
    document.removeLines(task, "PERCENT-COMPLETE");
}

void complete(ContentDocument& document, Node task, std::int64_t when)
{
    if (goOn(document, task))
        return reopen(document, task);
    document.setValue(task, "STATUS", "COMPLETED");
    document.setValue(task, "COMPLETED", utcText(when));
    document.setValue(task, "PERCENT-COMPLETE", "100");
}

WallTime wallOf(const platform::DateComponents& date)
{
    const auto time = date.time.value_or(platform::TimeOfDay{});
    const bool isDate = date.year >= 1 && date.year <= 9999 && date.month >= 1 && date.month <= 12 && date.day >= 1
        && date.day <= daysInMonth(date.year, date.month);
    if (!isDate)
        throw EventStoreError("Nothing was changed: there is no such date.");
    return wallTime({date.year, date.month, date.day}, time.hour, time.minute, time.second);
}

/// RFC 5545, 3.8.2.3: DUE has the type of DTSTART and lies behind it. The start of a repeating task moves along.
void fitStart(ContentDocument& document, Node task, const std::optional<DateValue>& before)
{
    FileClocks clocks(document);
    const auto start = clocks.read(task, "DTSTART"), due = clocks.read(task, "DUE");
    if (!start || !due)
        return;
    const bool isRepeating = document.line(task, "RRULE") || document.line(task, "RDATE");
    if (isRepeating) {
        const std::int64_t moment = due->moment() - (before ? before->moment() - start->moment() : 0);
        if (due->isDate)
            clocks.setDate(task, "DTSTART", dayOf(Zone::local()->wallTimeAt(moment)) * kDay);
        else
            clocks.setMoment(task, "DTSTART", moment, "DUE");
    } else if (start->isDate != due->isDate || start->moment() > due->moment()) {
        document.removeLines(task, "DTSTART");
    }
}

void setDue(ContentDocument& document, Node task, const platform::DateComponents& due)
{
    const WallTime wall = wallOf(due);
    const auto before = dueIn(document, task);
    document.removeLines(task, "DURATION");
    FileClocks clocks(document);
    if (due.time)
        clocks.setMoment(task, "DUE", Zone::local()->momentOf(wall), "DTSTART");
    else
        clocks.setDate(task, "DUE", wall);
    fitStart(document, task, before);
}

void setRecurrence(ContentDocument& document, Node event, const std::string& rule)
{
    if (!rule.empty() && !readRule(rule))
        throw EventStoreError("Nothing was changed: “" + rule + "” is no rule by which an event repeats.");
    setOrRemove(document, event, "RRULE", rule);
}

/// The alarms at moments of their own, in the order of the file: further ones are added, those too many taken away.
void setAlarms(ContentDocument& document, Node task, const std::vector<std::int64_t>& moments)
{
    const auto triggers = absoluteTriggers(document, task);
    const std::size_t kept = std::min(triggers.size(), moments.size());
    for (std::size_t i = 0; i < kept; ++i)
        document.setValue(triggers[i], utcText(moments[i]));
    for (std::size_t i = kept; i < moments.size(); ++i) {
        document.addText(task,
            "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Reminder\r\nTRIGGER;VALUE=DATE-TIME:" + utcText(moments[i])
                + "\r\nEND:VALARM\r\n");
    }
    for (const Node alarm : document.components(task, "VALARM")) {
        const auto trigger = document.line(alarm, "TRIGGER");
        if (trigger
            && std::find(triggers.begin() + static_cast<std::ptrdiff_t>(kept), triggers.end(), *trigger)
                != triggers.end())
            document.remove(alarm);
    }
}

void setCompletion(ContentDocument& document, Node task, const ReminderChange& change, std::int64_t now)
{
    if (!change.isCompleted)
        return;
    const bool was = isCompleted(document, task);
    if (!*change.isCompleted && was)
        reopen(document, task);
    else if (*change.isCompleted && !was)
        complete(document, task, change.completed.value_or(now));
    else if (was && change.completed)
        document.setValue(task, "COMPLETED", utcText(*change.completed));
}

} // namespace

std::string newItem(std::string_view component, const std::string& uid, std::int64_t now)
{
    const std::string stamp = utcText(now);
    return fmt::format("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Mervo//Desk//EN\r\nBEGIN:{0}\r\nUID:{1}\r\n"
                       "DTSTAMP:{2}\r\nCREATED:{2}\r\nLAST-MODIFIED:{2}\r\nEND:{0}\r\nEND:VCALENDAR\r\n",
        component, uid, stamp);
}

void change(ContentDocument& document, const EventPlace& place, const EventChange& change, std::int64_t now)
{
    const auto events = itemsOf(document, "VEVENT");
    std::optional<Standing> found = lookUp(document, events, place);
    Node event{};
    if (found) {
        event = place.key.empty() ? events[found->component] : changedOccurrence(document, events, *found, place);
    } else {
        // A new one, or one without a date: it lies where it is put.
        const auto meant = std::ranges::find_if(events, [&](Node node) { return hasUid(document, node, place.uid); });
        if (meant == events.end() || !place.key.empty())
            failGone();
        event = *meant;
    }
    setText(document, event, "SUMMARY", change.title);
    setText(document, event, "LOCATION", change.location);
    setText(document, event, "DESCRIPTION", change.notes);
    setUrl(document, event, change.url);
    if (change.recurrence)
        setRecurrence(document, event, *change.recurrence);
    if (change.status)
        setOrRemove(document, event, "STATUS", *change.status);
    if (change.start || change.end || change.isAllDay) {
        if (!found && !change.start)
            failGone();
        const std::int64_t start = change.start.value_or(0);
        const bool isAllDay = change.isAllDay.value_or(false);
        EventChange times = change;
        if (!found)
            times.end = change.end.value_or(start + (isAllDay ? kDay : kHour));
        moveAlong(document, event, [&] {
            setTimes(document, event, found.value_or(Standing{0, start, start + kHour, isAllDay}), times);
        });
    }
    touch(document, event, now, found && changesSchedule(change) ? Weight::schedule : Weight::text);
}

void removeEvent(ContentDocument& document, const EventPlace& place, std::int64_t now)
{
    const auto events = itemsOf(document, "VEVENT");
    if (place.key.empty()) {
        for (const Node event : events) {
            if (hasUid(document, event, place.uid))
                document.remove(event);
        }
        return;
    }
    const auto found = lookUp(document, events, place);
    if (!found)
        failGone();
    const auto master = std::ranges::find_if(events,
        [&](Node event) { return hasUid(document, event, place.uid) && !document.line(event, "RECURRENCE-ID"); });
    std::optional<ContentLine> exception;
    if (master != events.end()) {
        exception = dateLineFor(document, static_cast<std::size_t>(master - events.begin()), place.key, "EXDATE");
        document.add(*master, *exception);
        touch(document, *master, now, Weight::schedule);
    }
    const auto id = document.line(events[found->component], "RECURRENCE-ID");
    if (id && !document.read(*id)->parameter("RANGE"))
        document.remove(events[found->component]);
}

void change(ContentDocument& document, const std::string& uid, const ReminderChange& change, std::int64_t now)
{
    const Node task = taskOf(document, uid);
    setText(document, task, "SUMMARY", change.title);
    setText(document, task, "DESCRIPTION", change.notes);
    if (change.isFlagged)
        setOrRemove(document, task, kFlag, *change.isFlagged ? "TRUE" : "");
    if (change.priority)
        setOrRemove(document, task, "PRIORITY", *change.priority == 0 ? "" : fmt::to_string(*change.priority));
    if (change.clearDue) {
        document.removeLines(task, "DUE");
        document.removeLines(task, "DURATION");
    }
    if (change.due)
        moveAlong(document, task, [&] { setDue(document, task, *change.due); });
    if (change.absoluteAlarms)
        setAlarms(document, task, *change.absoluteAlarms);
    setCompletion(document, task, change, now);
    const bool isSchedule = change.due || change.clearDue || change.isCompleted;
    touch(document, task, now, isSchedule ? Weight::schedule : Weight::text);
}

void removeTask(ContentDocument& document, const std::string& uid)
{
    for (const Node task : itemsOf(document, "VTODO")) {
        if (hasUid(document, task, uid))
            document.remove(task);
    }
}

void removeAll(ContentDocument& document, platform::Entity entity)
{
    for (const Node item : itemsOf(document, entity == platform::Entity::events ? "VEVENT" : "VTODO"))
        document.remove(item);
}

bool holdsItems(const ContentDocument& document)
{
    for (const Node top : document.components(document.root())) {
        if (!platform::ascii::equalsIgnoringCase(document.name(top), "VCALENDAR"))
            return true;
        for (const Node item : document.components(top)) {
            if (!platform::ascii::equalsIgnoringCase(document.name(item), "VTIMEZONE"))
                return true;
        }
    }
    return false;
}

} // namespace mervo::desk
