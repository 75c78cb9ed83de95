#include "platform/desk/recurrence/RuleDates.h"

#include <algorithm>
#include <cstdlib>

namespace mervo::desk {
namespace {

std::int64_t startOfWeek(std::int64_t day, Weekday weekStart)
{
    return day - (static_cast<int>(weekdayOf(day)) - static_cast<int>(weekStart) + 7) % 7;
}

/// The first day of a year's week 1, the first one with at least four days in the year (RFC 5545, 3.3.10).
std::int64_t firstWeek(int year, Weekday weekStart)
{
    return startOfWeek(dayNumber({year, 1, 4}), weekStart);
}

std::int64_t monthIndex(const CivilDate& date)
{
    return date.year * 12LL + date.month - 1;
}

constexpr std::int64_t kBehindAll = 10000; // a year

int yearOf(std::int64_t period)
{
    return static_cast<int>(std::min(period, kBehindAll));
}

CivilDate firstOfMonth(std::int64_t index)
{
    return {yearOf(index / 12), static_cast<int>(index % 12) + 1, 1};
}

bool contains(const std::vector<int>& list, std::int64_t value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

/// Counted from the front or, below 0, from the end of `size` numbers that begin with 1.
bool containsFromEither(const std::vector<int>& list, std::int64_t value, std::int64_t size)
{
    return contains(list, value) || contains(list, value - size - 1);
}

/// Without a part that begins with BY.
bool hasNoParts(const Rule& rule)
{
    return rule.seconds.none() && rule.minutes.none() && rule.hours.none() && rule.months.none() && rule.days.empty()
        && rule.monthDays.empty() && rule.yearDays.empty() && rule.weeks.empty() && rule.positions.empty();
}

template <std::size_t size>
std::vector<std::int64_t> members(const std::bitset<size>& set, std::int64_t scale)
{
    std::vector<std::int64_t> found;
    for (std::size_t i = 0; i < size; ++i) {
        if (set.test(i))
            found.push_back(static_cast<std::int64_t>(i) * scale);
    }
    return found.empty() ? std::vector<std::int64_t>{0} : found;
}

} // namespace

RuleDates::RuleDates(const Rule& rule, WallTime start, bool isDate, Steps& steps)
    : rule_(rule)
    , start_(start)
    , steps_(steps)
    , isDate_(isDate)
    , isPlain_(rule.frequency >= Frequency::weekly && !(isDate && isSubDaily()) && hasNoParts(rule))
{
    deriveFromStart(isDate);
    for (const int day : rule_.monthDays)
        (day > 0 ? monthDays_ : monthDaysFromEnd_).set(static_cast<std::size_t>(std::abs(day)));
    fillTimes();
    const std::int64_t day = dayOf(start);
    switch (rule_.frequency) {
    case Frequency::yearly:
        period_ = civilDate(day).year;
        break;
    case Frequency::monthly:
        period_ = monthIndex(civilDate(day));
        break;
    case Frequency::weekly:
        period_ = startOfWeek(day, rule_.weekStart);
        break;
    case Frequency::daily:
        period_ = day;
        break;
    case Frequency::hourly:
    case Frequency::minutely:
    case Frequency::secondly:
        period_ = start - secondOfDay(start) % unit();
        break;
    }
}

void RuleDates::deriveFromStart(bool isDate)
{
    const CivilDate date = civilDate(dayOf(start_));
    const std::int64_t second = secondOfDay(start_);
    if (isDate) {
        rule_.hours.reset();
        rule_.minutes.reset();
        rule_.seconds.reset();
    }
    if (rule_.hours.none() && rule_.frequency < Frequency::hourly)
        rule_.hours.set(static_cast<std::size_t>(second / 3600));
    if (rule_.minutes.none() && rule_.frequency < Frequency::minutely)
        rule_.minutes.set(static_cast<std::size_t>(second / 60 % 60));
    if (rule_.seconds.none() && rule_.frequency < Frequency::secondly)
        rule_.seconds.set(static_cast<std::size_t>(second % 60));
    if (!rule_.days.empty() || !rule_.monthDays.empty() || !rule_.yearDays.empty())
        return;
    const bool hasWeeks = !rule_.weeks.empty();
    if (rule_.frequency == Frequency::weekly || (rule_.frequency == Frequency::yearly && hasWeeks)) {
        rule_.days.push_back({weekdayOf(dayOf(start_)), 0});
    } else if (rule_.frequency == Frequency::monthly || rule_.frequency == Frequency::yearly) {
        if (hasWeeks)
            return;
        rule_.monthDays.push_back(date.day);
        if (rule_.frequency == Frequency::yearly && rule_.months.none())
            rule_.months.set(static_cast<std::size_t>(date.month));
    }
}

/// Each combination of the parts of a time that a period holds.
void RuleDates::fillTimes()
{
    const bool hasHours = rule_.frequency < Frequency::hourly;
    const bool hasMinutes = rule_.frequency < Frequency::minutely;
    const bool hasSeconds = rule_.frequency < Frequency::secondly;
    const std::vector<std::int64_t> none = {0};
    for (const std::int64_t hour : hasHours ? members(rule_.hours, 3600) : none) {
        for (const std::int64_t minute : hasMinutes ? members(rule_.minutes, 60) : none) {
            for (const std::int64_t second : hasSeconds ? members(rule_.seconds, 1) : none)
                times_.push_back(hour + minute + second);
        }
    }
}

/// Seconds in a period that is shorter than a day.
std::int64_t RuleDates::unit() const
{
    return rule_.frequency == Frequency::hourly ? 3600 : rule_.frequency == Frequency::minutely ? 60 : 1;
}

bool RuleDates::matchesMonthDay(const CivilDate& date) const
{
    const int fromEnd = daysInMonth(date.year, date.month) - date.day + 1;
    return rule_.monthDays.empty() || monthDays_.test(static_cast<std::size_t>(date.day))
        || monthDaysFromEnd_.test(static_cast<std::size_t>(fromEnd));
}

bool RuleDates::matchesYearDay(std::int64_t day, int year) const
{
    return rule_.yearDays.empty()
        || containsFromEither(rule_.yearDays, day - dayNumber({year, 1, 1}) + 1, daysInYear(year));
}

/// The weeks of a year may begin before it and end behind it.
bool RuleDates::matchesWeek(std::int64_t day) const
{
    if (rule_.weeks.empty())
        return true;
    const int year = civilDate(startOfWeek(day, rule_.weekStart) + 3).year;
    const std::int64_t first = firstWeek(year, rule_.weekStart);
    const std::int64_t count = (firstWeek(year + 1, rule_.weekStart) - first) / 7;
    return containsFromEither(rule_.weeks, (day - first) / 7 + 1, count);
}

/// A position counts within the month where the rule names months, else within the year (RFC 5545, 3.3.10).
bool RuleDates::matchesWeekday(std::int64_t day, const CivilDate& date) const
{
    if (rule_.days.empty())
        return true;
    const Weekday weekday = weekdayOf(day);
    const bool isPositioned = rule_.frequency <= Frequency::monthly;
    const bool isInYear = rule_.frequency == Frequency::yearly && rule_.months.none();
    const std::int64_t index = isInYear ? day - dayNumber({date.year, 1, 1}) : date.day - 1;
    const std::int64_t length = isInYear ? daysInYear(date.year) : daysInMonth(date.year, date.month);
    return std::any_of(rule_.days.begin(), rule_.days.end(), [&](const Rule::Day& wanted) {
        return wanted.weekday == weekday
            && (wanted.position == 0 || !isPositioned || wanted.position == index / 7 + 1
                || wanted.position == -((length - 1 - index) / 7 + 1));
    });
}

bool RuleDates::matchesDay(std::int64_t day) const
{
    const CivilDate date = civilDate(day);
    return (rule_.months.none() || rule_.months.test(static_cast<std::size_t>(date.month))) && matchesMonthDay(date)
        && matchesWeekday(day, date) && matchesYearDay(day, date.year) && matchesWeek(day);
}

std::int64_t RuleDates::firstDayOfPeriod() const
{
    switch (rule_.frequency) {
    case Frequency::yearly:
        return dayNumber({yearOf(period_), 1, 1});
    case Frequency::monthly:
        return dayNumber(firstOfMonth(period_));
    case Frequency::weekly:
    case Frequency::daily:
        return period_;
    case Frequency::hourly:
    case Frequency::minutely:
    case Frequency::secondly:
        break;
    }
    return dayOf(period_);
}

std::int64_t RuleDates::firstDayBehindPeriod() const
{
    switch (rule_.frequency) {
    case Frequency::yearly:
        return dayNumber({yearOf(period_) + 1, 1, 1});
    case Frequency::monthly:
        return dayNumber(firstOfMonth(period_ + 1));
    case Frequency::weekly:
        return period_ + 7;
    case Frequency::daily:
    case Frequency::hourly:
    case Frequency::minutely:
    case Frequency::secondly:
        break;
    }
    return firstDayOfPeriod() + 1;
}

/// From one period to the next, in the unit of `period_`.
std::int64_t RuleDates::length() const
{
    return rule_.interval * (rule_.frequency == Frequency::weekly ? 7 : isSubDaily() ? unit() : 1);
}

void RuleDates::advance()
{
    const std::int64_t day = dayOf(period_);
    period_ += length();
    if (isDate_ && isSubDaily() && dayOf(period_) == day) // the day has its date
        period_ += ((day + 1) * kDay - period_ + length() - 1) / length() * length();
}

/// To the last period that begins at or before the time, where that lies ahead.
void RuleDates::jumpTo(WallTime time)
{
    std::int64_t wanted = time;
    if (rule_.frequency == Frequency::yearly) {
        wanted = civilDate(dayOf(time)).year;
    } else if (rule_.frequency == Frequency::monthly) {
        wanted = monthIndex(civilDate(dayOf(time)));
    } else if (!isSubDaily()) {
        wanted = dayOf(time);
    }
    if (wanted > period_)
        period_ += (wanted - period_) / length() * length();
}

/// Of periods shorter than a day: to the next one that the larger parts allow. False when the present one is.
bool RuleDates::jumpToMatch()
{
    const std::int64_t second = secondOfDay(period_);
    const std::int64_t day = period_ - second;
    std::int64_t target = period_;
    if (!matchesDay(dayOf(period_))) {
        target = day + kDay;
    } else if (rule_.hours.any() && !rule_.hours.test(static_cast<std::size_t>(second / 3600))) {
        target = day + (second / 3600 + 1) * 3600;
    } else if (rule_.frequency >= Frequency::minutely && rule_.minutes.any()
        && !rule_.minutes.test(static_cast<std::size_t>(second / 60 % 60))) {
        target = day + (second / 60 + 1) * 60;
    } else if (rule_.frequency == Frequency::secondly && rule_.seconds.any()
        && !rule_.seconds.test(static_cast<std::size_t>(second % 60))) {
        target = period_ + 1;
    }
    if (target == period_)
        return false;
    period_ += (target - period_ + length() - 1) / length() * length();
    return true;
}

void RuleDates::fillDays(std::int64_t first, std::int64_t end)
{
    for (std::int64_t day = first; day < end; ++day) {
        --steps_.left;
        const CivilDate date = civilDate(day);
        if (rule_.months.any() && !rule_.months.test(static_cast<std::size_t>(date.month))) {
            day += daysInMonth(date.year, date.month) - date.day;
        } else if (matchesDay(day)) {
            bases_.push_back(day * kDay);
        }
    }
}

/// BYSETPOS: the n-th dates of a period.
void RuleDates::pick()
{
    picked_.clear();
    const std::int64_t all = static_cast<std::int64_t>(bases_.size() * times_.size());
    for (const int position : rule_.positions) {
        const std::int64_t index = position > 0 ? position - 1 : all + position;
        if (index >= 0 && index < all)
            picked_.push_back(static_cast<std::size_t>(index));
    }
    std::sort(picked_.begin(), picked_.end());
}

WallTime RuleDates::at(std::size_t index) const
{
    const std::size_t picked = rule_.positions.empty() ? index : picked_[index];
    const WallTime date = bases_[picked / times_.size()] + times_[picked % times_.size()];
    return isDate_ ? dayOf(date) * kDay : date;
}

/// The days before the wanted ones, which may have 86,400 dates each.
void RuleDates::passBases()
{
    if (!skipped_ || rule_.count || !rule_.positions.empty())
        return;
    const auto first = std::lower_bound(bases_.begin(), bases_.end(), dayOf(*skipped_) * kDay);
    if (!isSubDaily())
        position_ = static_cast<std::size_t>(first - bases_.begin()) * times_.size();
}

/// The dates of the present period, or of the next one that has any.
void RuleDates::fillPeriod(WallTime last)
{
    bases_.clear();
    picked_.clear();
    position_ = 0;
    while (position_ == size() && !steps_.areUsedUp() && firstDayOfPeriod() * kDay <= last) {
        --steps_.left;
        if (isSubDaily() && jumpToMatch())
            continue;
        bases_.clear();
        position_ = 0;
        if (isSubDaily()) {
            bases_.push_back(period_);
        } else {
            fillDays(firstDayOfPeriod(), firstDayBehindPeriod());
        }
        pick();
        passBases();
        advance();
    }
}

void RuleDates::skipTo(WallTime time)
{
    if (time <= start_)
        return;
    skipped_ = time;
    const std::int64_t before = period_;
    if (!rule_.count || isPlain_)
        jumpTo(time);
    if (rule_.count && isPlain_)
        passed_ = (period_ - before) / length(); // one date in each of them
}

std::optional<WallTime> RuleDates::next(WallTime last)
{
    last = std::min(last, kLastWallTime);
    while (!rule_.count || passed_ < *rule_.count) {
        if (position_ == size()) {
            fillPeriod(last);
            if (position_ == size())
                return std::nullopt;
        }
        const WallTime date = at(position_++);
        --steps_.left;
        if (date > last || steps_.areUsedUp())
            return std::nullopt;
        if (date < start_ || (previous_ && date <= *previous_))
            continue;
        previous_ = date;
        ++passed_;
        if (!skipped_ || date >= *skipped_)
            return date;
    }
    return std::nullopt;
}

} // namespace mervo::desk
