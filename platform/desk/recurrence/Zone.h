#pragma once

#include "platform/desk/recurrence/CivilTime.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// How far a zone's clock stands before UTC, and what it calls that.
struct ZoneOffset {
    std::int64_t seconds = 0;
    bool isDaylight = false;
    std::string name = {}; ///< "CET"; may be empty

    friend bool operator==(const ZoneOffset&, const ZoneOffset&) = default;
};

/// When the clock changes in every year, in the clock's own time before the change: the n-th weekday of a month (5: the
/// last), or a day of the year.
struct YearlyChange {
    enum class Kind : std::uint8_t { weekdayOfMonth, dayOfYear, dayOfYearWithoutLeapDay };
    Kind kind = Kind::weekdayOfMonth;
    int month = 1;
    int week = 1;
    Weekday weekday = Weekday::sunday;
    int day = 0; ///< of the year: from 0, or from 1 where the leap day is never counted
    std::int64_t second = 7200; ///< of the day; -167 to 167 hours

    friend bool operator==(const YearlyChange&, const YearlyChange&) = default;
};

/// What holds from the last known change on (the TZ string of POSIX).
struct ZoneRule {
    ZoneOffset standard = {};
    struct Daylight {
        ZoneOffset offset = {};
        YearlyChange begins = {};
        YearlyChange ends = {};
    };
    std::optional<Daylight> daylight = {};
};

/// A time zone: the offsets of its clock, and when they changed. Never changed once it is made; any thread may ask.
class Zone {
public:
    struct Change {
        std::int64_t moment = 0; ///< seconds since 1970 UTC
        ZoneOffset offset = {}; ///< from there on
    };

    /// `changes` in ascending order; `rule` holds behind the last one.
    Zone(ZoneOffset first, std::vector<Change> changes, std::optional<ZoneRule> rule);

    /// The zone of an Olson name ("Europe/Paris") from the system's files; each is read once in the life of the
    /// process. Nothing for a name that the system does not know.
    static std::shared_ptr<const Zone> find(const std::string& name);
    /// The owner's zone; UTC where the machine does not say. Follows the variable TZ, which may be a POSIX rule.
    static std::shared_ptr<const Zone> local();
    static std::shared_ptr<const Zone> utc();

    const ZoneOffset& offsetAt(std::int64_t moment) const;
    WallTime wallTimeAt(std::int64_t moment) const { return moment + offsetAt(moment).seconds; }
    /// As RFC 5545, 3.3.5 reads a local time: one that occurs twice is the first of them, and one that the clock leaves
    /// out is read with the offset before that gap.
    std::int64_t momentOf(WallTime time) const;

    /// The changes behind `since` and before `until`, the rule's as well.
    std::vector<Change> changesBetween(std::int64_t since, std::int64_t until) const;
    const std::optional<ZoneRule>& rule() const { return rule_; }
    /// The last change that the rule does not give.
    std::optional<std::int64_t> lastChange() const;

private:
    const ZoneOffset& ruleOffsetAt(std::int64_t moment) const;
    std::vector<Change> ruleChangesBetween(std::int64_t since, std::int64_t until) const;
    bool isLastChangeByRule() const;

    ZoneOffset first_;
    std::vector<Change> changes_;
    std::optional<ZoneRule> rule_;
};

/// When a yearly change happens on the clock that it changes.
WallTime changeInYear(const YearlyChange& change, int year);

/// The Olson name of the owner's zone: the variable TZ, what /etc/localtime leads to, /etc/timezone. Empty where none
/// of them is a name that the system knows.
std::string localZoneName();

} // namespace mervo::desk
