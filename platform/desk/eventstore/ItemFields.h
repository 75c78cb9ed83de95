#pragma once

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/recurrence/DateValue.h"
#include "platform/desk/recurrence/FileZones.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the lines of an event or a task say.
namespace mervo::desk {

constexpr std::string_view kFlag =
    "X-MERVO-FLAGGED"; ///< "TRUE": the owner marked the task; the RFC has no such property

/// The components of a name that stand directly in a VCALENDAR, over all calendars of the file.
std::vector<ContentDocument::Node> itemsOf(const ContentDocument& document, std::string_view name);

/// A whole number; nothing for another value.
std::optional<std::int64_t> numberOf(
    const ContentDocument& document, ContentDocument::Node item, std::string_view name);
/// A time in UTC, seconds since 1970 ("20260105T090000Z"); nothing for another value.
std::optional<std::int64_t> momentIn(const std::string& value);
std::optional<std::int64_t> momentOf(
    const ContentDocument& document, ContentDocument::Node item, std::string_view name);
/// The first such line as a date or time; nothing for what is none.
std::optional<DateValue> dateOf(
    const ContentDocument& document, ContentDocument::Node item, std::string_view name, const FileZones& zones);

/// A task is done by its STATUS (one that was given up counts too), else by a COMPLETED or 100 percent.
bool isCompleted(const ContentDocument& document, ContentDocument::Node task);
/// DUE, else DTSTART and DURATION.
std::optional<DateValue> dueOf(const ContentDocument& document, ContentDocument::Node task, const FileZones& zones);
/// The TRIGGER lines of its alarms that name a moment.
std::vector<ContentDocument::Node> absoluteTriggers(const ContentDocument& document, ContentDocument::Node item);

} // namespace mervo::desk
