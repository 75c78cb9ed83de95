#pragma once

#include "platform/desk/recurrence/Rule.h"

namespace mervo::desk {

/// The dates of one rule, on the clock of its event, each later than the one before.
///
/// What a rule leaves open comes from the first date (RFC 5545, 3.3.10). The work is counted in steps (days looked at,
/// dates made; some 10 to 50 ns each), so that a rule that matches nothing, or only in centuries, ends.
class RuleDates {
public:
    /// How much work a call may take. Several rules can share it.
    struct Steps {
        std::int64_t left = 1'000'000;
        bool areUsedUp() const { return left <= 0; }
    };

    /// `start` has no time of day where the event lasts all day (`isDate`): the parts of a time are left out then.
    /// `steps` must outlive this.
    RuleDates(const Rule& rule, WallTime start, bool isDate, Steps& steps);

    /// Leaves out what lies before the time, without walking there where the rule does not count its dates. Before the
    /// first `next` alone.
    void skipTo(WallTime time);
    /// Nothing behind `last`, behind the rule's last date, and when the steps are used up.
    std::optional<WallTime> next(WallTime last);
    /// How many dates of the rule went by, those that were left out as well (where the rule counts).
    std::int64_t passed() const { return passed_; }

private:
    void deriveFromStart(bool isDate);
    void fillPeriod(WallTime last);
    void fillDays(std::int64_t first, std::int64_t end);
    void fillTimes();
    std::int64_t firstDayOfPeriod() const;
    std::int64_t firstDayBehindPeriod() const;
    void advance();
    void jumpTo(WallTime time);
    std::size_t size() const { return rule_.positions.empty() ? bases_.size() * times_.size() : picked_.size(); }
    WallTime at(std::size_t index) const;
    void passBases();
    bool jumpToMatch();
    bool matchesDay(std::int64_t day) const;
    bool matchesMonthDay(const CivilDate& date) const;
    bool matchesYearDay(std::int64_t day, int year) const;
    bool matchesWeek(std::int64_t day) const;
    bool matchesWeekday(std::int64_t day, const CivilDate& date) const;
    void pick();
    bool isSubDaily() const { return rule_.frequency >= Frequency::hourly; }
    std::int64_t unit() const;
    std::int64_t length() const;

    Rule rule_;
    std::bitset<32> monthDays_, monthDaysFromEnd_;
    WallTime start_;
    std::int64_t period_ = 0; // the present one, of rule_.interval: a year, a month, a first day, or a first second
    std::vector<std::int64_t> times_; // seconds of a day, or of the present hour, minute or second
    // The dates of the present period are each of `bases_` with each of `times_`, or those that BYSETPOS picks.
    std::vector<WallTime> bases_; // days, or an hour, a minute, a second
    std::vector<std::size_t> picked_;
    std::size_t position_ = 0; // among them
    Steps& steps_;
    std::int64_t passed_ = 0;
    std::optional<WallTime> skipped_;
    std::optional<WallTime> previous_;
    bool isDate_;
    bool isPlain_;
};

} // namespace mervo::desk
