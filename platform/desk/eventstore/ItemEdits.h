#pragma once

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/eventkit.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Changes of events and tasks in a file. Only the lines that a change is about are touched, and with them DTSTAMP,
/// LAST-MODIFIED and SEQUENCE, which rises when time, place or recurrence change (RFC 5545, 3.8.7.4). `now` is in
/// seconds since 1970 UTC. Throws EventStoreError for what a file cannot hold.
namespace mervo::desk {

/// A new calendar with one empty component ("VEVENT", "VTODO") of this UID.
std::string newItem(std::string_view component, const std::string& uid, std::int64_t now);

/// An event of a file, or one occurrence of it.
struct EventPlace {
    std::string uid;
    std::string key; ///< as in platform::Event::occurrence
};
/// A repeating event's occurrence gets a component of its own. Without a key the whole event changes.
void change(ContentDocument& document, const EventPlace& place, const platform::EventChange& change, std::int64_t now);
/// Without a key every component of the UID goes; the file may then hold no item any more.
void removeEvent(ContentDocument& document, const EventPlace& place, std::int64_t now);

/// The task of a UID; a repeating one that is completed goes on to its next date.
void change(
    ContentDocument& document, const std::string& uid, const platform::ReminderChange& change, std::int64_t now);
void removeTask(ContentDocument& document, const std::string& uid);

/// Takes all events, or all tasks, away.
void removeAll(ContentDocument& document, platform::Entity entity);
/// True when the file holds an event, a task, a journal entry or another component than time zones.
bool holdsItems(const ContentDocument& document);

} // namespace mervo::desk
