#include "core/tools/calendar/CalendarService.h"

#include "core/foundation/Text.h"
#include "core/tools/LocalTime.h"
#include "core/tools/OneLine.h"
#include "core/tools/calendar/UriSyntax.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

namespace mervo {

namespace {

using platform::Event;
using platform::EventChange;

std::string line(const std::string& text)
{
    return onOneLine(text, " ");
}

std::string titleOf(const Event& event)
{
    return event.title.empty() ? "(untitled)" : line(event.title);
}

std::string calendarOf(const Event& event)
{
    return event.calendar.title.empty() ? "?" : line(event.calendar.title);
}

std::string dateOf(const Event& event)
{
    return event.isAllDay ? LocalTime::day(event.start) + " (all-day)" : LocalTime::minute(event.start);
}

std::string listed(const Event& event)
{
    std::string text = dateOf(event) + " || " + calendarOf(event) + " || " + titleOf(event);
    if (!event.location.empty())
        text += " @ " + line(event.location);
    if (!event.url.empty())
        text += " 🔗 " + line(event.url);
    return text;
}

/// What an answer calls an event that it changed.
std::string described(const Event& event)
{
    return titleOf(event) + " @ " + (event.location.empty() ? "-" : line(event.location));
}

std::string none(std::int64_t days, const std::string& contains)
{
    std::string count = std::to_string(days);
    count.erase(0, days < 0 ? 1 : 0);
    return "(no events in the " + std::string(days < 0 ? "past" : "next") + " " + count + " day(s)"
        + (contains.empty() ? "" : " matching \"" + contains + "\"") + ")";
}

std::optional<std::string> unlessEmpty(const std::string& text)
{
    return text.empty() ? std::nullopt : std::optional(text);
}

/// What the event has afterwards.
Event changed(Event event, const EventChange& change)
{
    event.title = change.title.value_or(event.title);
    event.location = change.location.value_or(event.location);
    event.url = change.url.value_or(event.url);
    return event;
}

} // namespace

CalendarService::UpdateError CalendarService::UpdateError::noMatch(const std::string& text)
{
    return UpdateError("no event in range matching \"" + text + "\" - nothing to update.");
}

CalendarService::UpdateError CalendarService::UpdateError::ambiguous(const std::vector<std::string>& lines)
{
    return UpdateError("ambiguous: " + std::to_string(lines.size()) + " events match - refine `contains`:\n"
        + Text::join(lines, "\n"));
}

CalendarService::UpdateError CalendarService::UpdateError::nothingToChange()
{
    return UpdateError("no change requested (pass at least one of title / location / notes / url).");
}

CalendarService::CalendarService(EventKitAccess::OpenStore open, std::int64_t now)
    : open_(std::move(open))
    , now_(now)
{
}

std::vector<Event> CalendarService::matching(
    platform::EventStore& store, std::int64_t days, const std::string& contains) const
{
    const auto [start, end] = std::minmax({now_, LocalTime::daysLater(now_, days)});
    std::vector<Event> events = store.events({.start = start, .end = end});
    std::erase_if(events, [&](const Event& event) { return !Text::containsIgnoringCase(event.title, contains); });
    std::ranges::stable_sort(
        events, {}, [](const Event& event) { return std::tie(event.start, event.calendar.title, event.title); });
    return events;
}

Event CalendarService::theOnly(platform::EventStore& store, std::int64_t days, const std::string& contains) const
{
    std::vector<Event> events = matching(store, days, contains);
    if (events.empty())
        throw UpdateError::noMatch(contains);
    if (events.size() > 1) {
        std::vector<std::string> lines;
        for (const Event& event : events)
            lines.push_back("  " + titleOf(event) + " (" + calendarOf(event) + ")");
        throw UpdateError::ambiguous(lines);
    }
    return std::move(events.front());
}

std::string CalendarService::find(std::int64_t days, const std::string& contains) const
{
    const auto store = EventKitAccess::store(open_, platform::Entity::events);
    std::vector<std::string> lines;
    for (const Event& event : matching(*store, days, contains))
        lines.push_back(listed(event));
    return lines.empty() ? none(days, contains) : Text::join(lines, "\n");
}

std::string CalendarService::update(const std::string& contains, std::int64_t days, const Fields& fields) const
{
    if (fields.title.empty() && fields.location.empty() && fields.notes.empty() && fields.url.empty())
        throw UpdateError::nothingToChange();
    const auto store = EventKitAccess::store(open_, platform::Entity::events);
    const Event event = theOnly(*store, days, contains);
    const EventChange change{.title = unlessEmpty(fields.title),
        .location = unlessEmpty(fields.location),
        .notes = unlessEmpty(fields.notes),
        .url = isUriReference(fields.url) ? unlessEmpty(fields.url) : std::nullopt};
    if (change.title || change.location || change.notes || change.url) {
        store->change(event, change);
        store->commit();
    }
    const Event now = changed(event, change);
    return "OK updated [" + described(event) + "] → title=\"" + line(now.title) + "\" location=\"" + line(now.location)
        + "\"" + (now.url.empty() ? "" : " url=\"" + line(now.url) + "\"");
}

std::string CalendarService::remove(const std::string& contains, std::int64_t days) const
{
    const auto store = EventKitAccess::store(open_, platform::Entity::events);
    const Event event = theOnly(*store, days, contains);
    store->remove(event);
    store->commit();
    return "OK deleted [" + described(event) + "]";
}

} // namespace mervo
