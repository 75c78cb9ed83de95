#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// When the jobs of a running scheduler are due.
namespace mervo::jobs {

using WallTime = std::chrono::sys_time<std::chrono::nanoseconds>;

/// One moment by two clocks: the one on the wall, which can be set, and the one that counts what has passed since the
/// machine was started, sleep included (CLOCK_BOOTTIME).
struct Moment {
    WallTime wall;
    std::chrono::nanoseconds elapsed;
};

/// The next time of a calendar after a moment; nothing when there is none.
using Calendar = std::function<std::optional<WallTime>(WallTime after)>;

/// Asks no clock: every function is told the moment.
///  - Intervals follow the elapsed time, so that setting the clock changes nothing; calendars follow the wall.
///  - Times that passed unseen, while the machine slept or because the clock was set forward, make one run together.
///  - After the clock was set back by no more than kCorrection nothing runs again that has run. By more, the clock is
///    taken to have been wrong before, and its times count from now on.
class Timetable {
public:
    static constexpr std::chrono::hours kCorrection{3}; // what cron takes for the change of a day or a correction

    /// Every `interval` after `since`; a time that lies in the past already is left out. `since` in the future counts
    /// as now. `interval` is at least one second.
    void add(const std::string& label, std::chrono::seconds interval, WallTime since, const Moment& now);
    /// At the calendar's times after now.
    void add(const std::string& label, Calendar calendar, const Moment& now);
    void remove(std::string_view label);

    /// The calendars' times are other moments now.
    void changeZone();

    /// The labels that are due, each once. They count as having run.
    std::vector<std::string> takeDue(const Moment& now);
    /// When the next one is due by the clock on the wall as it stands; nothing when there is none.
    std::optional<WallTime> next(const Moment& now) const;

private:
    struct Interval {
        std::chrono::nanoseconds length, next;
    };
    struct Times {
        Calendar calendar;
        WallTime seen; ///< up to here the calendar's times are done with
        std::optional<WallTime> next; ///< the first one behind it
    };

    static bool takeDue(Interval& interval, const Moment& now);
    static bool takeDue(Times& times, const Moment& now);

    std::map<std::string, Interval, std::less<>> intervals_;
    std::map<std::string, Times, std::less<>> calendars_;
};

} // namespace mervo::jobs
