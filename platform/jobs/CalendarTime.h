#pragma once

#include "platform/jobs/Timetable.h"

#include <optional>
#include <vector>

namespace mervo::jobs {

/// A time that comes again, by the clock on the wall: every moment that agrees with all that is said.
struct CalendarTime {
    std::optional<int> minute = {}, hour = {}, day = {}; ///< 0 to 59, 0 to 23, 1 to 31
    std::optional<int> weekday = {}; ///< 0 to 7; 0 and 7 are Sunday. With a day of the month: one of the two suffices
    std::optional<int> month = {}; ///< 1 to 12
};

/// All of these times together, in the time zone of this process. A time that a change of the clock skips comes behind
/// the gap, one that it doubles comes once.
Calendar calendarOf(std::vector<CalendarTime> times);

/// The first moments behind the gaps that the clock of this process's time zone makes in a length of time.
std::vector<WallTime> gapsOfTheClock(WallTime from, std::chrono::days length);

} // namespace mervo::jobs
