// The text of one calendar file: what a server, or anyone who sends an invitation, can put before the desk.

#include "platform/desk/eventstore/ItemEdits.h"
#include "platform/desk/eventstore/ItemFields.h"
#include "platform/desk/recurrence/Recurrences.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace mervo::desk;

void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Whole series of events and tasks on another day and clock: what is written is read again.
void moveAll(std::string_view text, bool isAllDay)
{
    ContentDocument document{std::string(text)};
    for (const auto event : itemsOf(document, "VEVENT")) {
        try {
            const EventPlace place{document.valueOf(event, "UID").value_or(""), {}};
            change(document, place, {.start = 1767349800, .isAllDay = isAllDay}, 0);
        } catch (const mervo::platform::EventStoreError&) {
        }
    }
    for (const auto task : itemsOf(document, "VTODO")) {
        try {
            mervo::platform::DateComponents due{2026, 1, 2};
            if (!isAllDay)
                due.time = mervo::platform::TimeOfDay{10, 30, 0};
            change(
                document, document.valueOf(task, "UID").value_or(""), mervo::platform::ReminderChange{.due = due}, 0);
        } catch (const mervo::platform::EventStoreError&) {
        }
    }
    const std::string written = document.text();
    require(ContentDocument(written).text() == written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    setenv("TZ", "Europe/Paris", 0);
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const mervo::platform::TimeSpan span{1767225600, 1798761600};
    const Occurrences found = occurrences(text, span, 100);
    for (const Occurrence& one : found.all) {
        require(one.start <= one.end && one.start < span.end && one.end >= span.start);
        const DateLine line = dateLine(text, one.component, one.key);
        require(line.value == one.key || line.value.size() == 8);
    }
    const std::string kept = timesText(text);
    require(occurrences(kept, span, 100).all == found.all);
    require(timesText(kept) == kept);
    firstOccurrences(text);
    if (const std::optional<NextDate> next = nextDate(text, 0))
        require(!next->start.empty() || !next->due.empty());
    if (size < 4096) { // each change reads the whole text
        moveAll(text, false);
        moveAll(text, true);
    }
    return 0;
}
