#pragma once

#include "platform/eventkit.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// When the items of one .ics file (RFC 5545) are.
///
/// These functions are pure but for the system's time zones and the owner's own (TZ, /etc/localtime); any thread may
/// call them. None throws for what a file holds. The work of a call is bounded, whatever the rules of the file: 10,000
/// dates for a rule, and about a tenth of a second for all rules together.
///
/// A component is named by its number among the VEVENTs (or VTODOs) that stand directly in a VCALENDAR, from 0, over
/// all calendars of the text.
namespace mervo::desk {

constexpr std::size_t kMostDates = 10'000;

/// One occurrence of an event.
struct Occurrence {
    std::int64_t start = 0; ///< seconds since 1970 UTC; a day's local midnight where it lasts all day
    std::int64_t end = 0; ///< the first moment behind it; the start where the event says no other
    bool isAllDay = false;
    /// Which one of a repeating item: the date that the rule gave, as DTSTART is written ("20260105",
    /// "20260105T090000", "20260105T090000Z"). Empty: the item does not repeat. A changed occurrence keeps the key of
    /// the date it changes, also where the item that it changes is not in the file.
    std::string key = {};
    std::size_t component = 0; ///< the VEVENT that says what it is: a changed occurrence's own

    friend bool operator==(const Occurrence&, const Occurrence&) = default;
};

struct Occurrences {
    std::vector<Occurrence> all; ///< by start, then component
    bool isBounded = false; ///< a rule has more dates in the span than were given, or took too long
};

/// The occurrences that overlap the span; one without a length does at its moment.
///
/// Rules, RDATE, EXDATE, RECURRENCE-ID (with THISANDFUTURE) as RFC 5545 says, and where it leaves room:
/// a first date that its rule does not give is not shown; what the rule's end leaves of a day without a time is decided
/// by that day's midnight; a time in a zone that nobody knows floats; a time that occurs twice is the first one, one
/// that the clock leaves out comes with the offset before the gap; an event that ends before it starts has no length.
Occurrences occurrences(std::string_view text, platform::TimeSpan span, std::size_t bound = kMostDates);

/// Each event once: at its first occurrence. A change of an event that is in the file is none of its own.
std::vector<Occurrence> firstOccurrences(std::string_view text);

/// All that the functions of this header need of a file, as a text of the same form with the same numbers of
/// components: what a cache keeps, so that an unchanged file need not be read again. Some 200 bytes for an event; time
/// zones are in it where the system does not know them. What it says in an owner's zone is not in it, so it stays true
/// in another one.
std::string timesText(std::string_view text);

/// The parameters and the value of an EXDATE or RECURRENCE-ID (";VALUE=DATE", "20260105") that mean the occurrence with
/// this key, in the form of the item's DTSTART. `component` is any VEVENT of the item.
struct DateLine {
    std::vector<std::pair<std::string, std::string>> parameters; ///< name, and value without quotes
    std::string value;

    friend bool operator==(const DateLine&, const DateLine&) = default;
};
DateLine dateLine(std::string_view text, std::size_t component, const std::string& key);

/// What a repeating task becomes when it is done: values for the lines that it has, in their form.
struct NextDate {
    std::string start = {}; ///< DTSTART; empty where it has none
    std::string due = {}; ///< DUE; likewise
    std::vector<std::string> rules = {}; ///< RRULE, in the order of the readable ones; COUNT is what is left

    friend bool operator==(const NextDate&, const NextDate&) = default;
};

/// The first date of a repeating VTODO behind the one that it has. Nothing where that was the last one, and for a task
/// that does not repeat.
std::optional<NextDate> nextDate(std::string_view text, std::size_t component);

} // namespace mervo::desk
