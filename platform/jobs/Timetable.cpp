#include "platform/jobs/Timetable.h"

#include <algorithm>
#include <set>
#include <utility>

namespace mervo::jobs {

void Timetable::add(const std::string& label, std::chrono::seconds interval, WallTime since, const Moment& now)
{
    const std::chrono::nanoseconds length = std::max(interval, std::chrono::seconds(1));
    const std::chrono::nanoseconds passed = std::max(now.wall - since, std::chrono::nanoseconds(0));
    intervals_[label] = {length, now.elapsed + length - passed % length};
}

void Timetable::add(const std::string& label, Calendar calendar, const Moment& now)
{
    const auto next = calendar(now.wall);
    calendars_[label] = {std::move(calendar), now.wall, next};
}

void Timetable::remove(std::string_view label)
{
    if (const auto found = intervals_.find(label); found != intervals_.end())
        intervals_.erase(found);
    if (const auto found = calendars_.find(label); found != calendars_.end())
        calendars_.erase(found);
}

void Timetable::changeZone()
{
    for (auto& [label, times] : calendars_)
        times.next = times.calendar(times.seen);
}

bool Timetable::takeDue(Interval& interval, const Moment& now)
{
    if (now.elapsed < interval.next)
        return false;
    interval.next += interval.length * ((now.elapsed - interval.next) / interval.length + 1);
    return true;
}

bool Timetable::takeDue(Times& times, const Moment& now)
{
    const bool isDue = times.next && now.wall >= *times.next;
    if (isDue || now.wall + kCorrection < times.seen) {
        times.seen = now.wall;
        times.next = times.calendar(times.seen);
    }
    return isDue;
}

std::vector<std::string> Timetable::takeDue(const Moment& now)
{
    std::set<std::string> due; // a job can have both
    for (auto& [label, interval] : intervals_) {
        if (takeDue(interval, now))
            due.insert(label);
    }
    for (auto& [label, times] : calendars_) {
        if (takeDue(times, now))
            due.insert(label);
    }
    return {due.begin(), due.end()};
}

std::optional<WallTime> Timetable::next(const Moment& now) const
{
    std::optional<WallTime> next;
    const auto consider = [&next](WallTime time) { next = std::min(next.value_or(time), time); };
    for (const auto& [label, interval] : intervals_)
        consider(now.wall + (interval.next - now.elapsed));
    for (const auto& [label, times] : calendars_) {
        if (times.next)
            consider(*times.next);
    }
    return next;
}

} // namespace mervo::jobs
