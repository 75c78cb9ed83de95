#include "platform/desk/recurrence/ItemTimes.h"
#include "platform/desk/recurrence/Recurrences.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace mervo::desk {
namespace {

constexpr std::int64_t kClockSlack = kDay; // how far a clock may stand from UTC
constexpr std::size_t kMostOccurrences = 200'000; // of one file, in one call

std::vector<ItemTimes> readEvents(const ItemText& text, const FileZones& zones)
{
    std::vector<ItemTimes> events;
    for (std::size_t i = 0; i < text.events.size(); ++i) {
        if (auto times = readItemTimes(text.events[i], i, zones))
            events.push_back(*std::move(times));
    }
    return events;
}

std::int64_t secondsOf(const TimeLength& length)
{
    return length.days * kDay + length.seconds;
}

std::string keyOf(const DateValue& form, WallTime wall)
{
    DateValue key = form;
    key.wall = wall;
    return key.text();
}

/// An event and the changes of its dates.
struct Item {
    const ItemTimes* event = nullptr;
    std::vector<const ItemTimes*> changes = {};
};

/// The items of a file. A change without its event is an item of its own, and so is a second event with the same UID.
std::vector<Item> itemsOf(const std::vector<ItemTimes>& events)
{
    std::vector<Item> items;
    std::map<std::string_view, std::size_t> byUid;
    for (const ItemTimes& event : events) {
        if (event.changed)
            continue;
        byUid.emplace(event.uid, items.size());
        items.push_back({.event = &event});
    }
    for (const ItemTimes& event : events) {
        if (!event.changed)
            continue;
        const auto found = byUid.find(event.uid);
        if (found != byUid.end()) {
            items[found->second].changes.push_back(&event);
        } else {
            items.push_back({.changes = {&event}});
        }
    }
    return items;
}

/// Nothing says that it is more than its DTSTART, or less.
bool isSingle(const Item& item)
{
    return !item.event->isRepeating() && item.changes.empty() && item.event->exceptions.empty()
        && item.event->exceptionDays.empty();
}

class Expansion {
public:
    Expansion(platform::TimeSpan span, std::size_t bound, RuleDates::Steps& steps)
        : span_{std::clamp(span.start, kFirstWallTime, kLastWallTime),
            std::clamp(span.end, kFirstWallTime, kLastWallTime)}
        , bound_(bound)
        , steps_(steps)
    {
    }

    void add(const Item& item)
    {
        if (item.event == nullptr) {
            for (const ItemTimes* change : item.changes)
                show(*change, change->start, std::nullopt, change->changed->text());
        } else if (isSingle(item)) {
            show(*item.event, item.event->start, std::nullopt, {});
        } else {
            expand(item);
        }
    }

    Occurrences take()
    {
        std::sort(found_.all.begin(), found_.all.end(), [](const Occurrence& a, const Occurrence& b) {
            return std::tie(a.start, a.component, a.key) < std::tie(b.start, b.component, b.key);
        });
        return std::move(found_);
    }

private:
    using FutureChanges = std::vector<std::pair<WallTime, const ItemTimes*>>; // by the date from which on they are
    using Dates = std::map<WallTime, std::optional<std::int64_t>>; // on the clock of the event; a period's own end

    bool overlaps(std::int64_t start, std::int64_t end) const
    {
        return start < span_.end && (end > span_.start || (start == end && start >= span_.start));
    }

    void show(const ItemTimes& says, const DateValue& start, std::optional<std::int64_t> ownEnd, std::string key)
    {
        const std::int64_t moment = start.moment();
        const std::int64_t end = std::max(moment, ownEnd ? *ownEnd : endOf(start, says.length));
        if (!overlaps(moment, end))
            return;
        if (found_.all.size() >= kMostOccurrences) {
            found_.isBounded = true;
            return;
        }
        found_.all.push_back({moment, end, start.isDate, std::move(key), says.component});
    }

    void expand(const Item& item)
    {
        const ItemTimes& event = *item.event;
        const std::map<WallTime, const ItemTimes*> changed = changesOf(item);
        FutureChanges forFuture;
        std::copy_if(changed.begin(), changed.end(), std::back_inserter(forFuture),
            [](const auto& change) { return change.second->isForFuture; });
        for (const auto& [wall, change] : changed)
            show(*change, change->start, std::nullopt, keyOf(event.start, wall));
        for (const auto& [wall, end] : datesOf(event, forFuture)) {
            if (event.isException(wall) || changed.count(wall) != 0)
                continue;
            const auto [says, start] = placed(event, wall, forFuture);
            show(
                *says, start, says == &event ? end : std::nullopt, event.isRepeating() ? keyOf(event.start, wall) : "");
        }
    }

    /// What a date of the event is: its own, or that of the last change for all that follow.
    static std::pair<const ItemTimes*, DateValue> placed(
        const ItemTimes& event, WallTime wall, const FutureChanges& forFuture)
    {
        const auto behind = std::upper_bound(forFuture.begin(), forFuture.end(), wall,
            [](WallTime searched, const auto& change) { return searched < change.first; });
        if (behind == forFuture.begin()) {
            DateValue start = event.start;
            start.wall = wall;
            return {&event, start};
        }
        const auto& [from, change] = *std::prev(behind);
        DateValue start = change->start;
        start.wall += wall - from;
        return {change, start};
    }

    /// By the date that they change, on the clock of the event. Of two for one date the later version.
    static std::map<WallTime, const ItemTimes*> changesOf(const Item& item)
    {
        std::map<WallTime, const ItemTimes*> changes;
        for (const ItemTimes* change : item.changes) {
            const WallTime wall = changedDate(*item.event, *change);
            const auto [known, isNew] = changes.emplace(wall, change);
            if (!isNew && change->sequence >= known->second->sequence)
                known->second = change;
        }
        return changes;
    }

    /// A date without a time means the occurrence of that day, which has the time of the event in nearly all rules.
    static WallTime changedDate(const ItemTimes& event, const ItemTimes& change)
    {
        const WallTime wall = onClockOf(*change.changed, event.start);
        return change.changed->isDate && !event.start.isDate ? wall + secondOfDay(event.start.wall) : wall;
    }

    /// What the event gives within the span, and as far around it as an occurrence can reach into it.
    Dates datesOf(const ItemTimes& event, const FutureChanges& forFuture)
    {
        std::int64_t before = secondsOf(event.length);
        std::int64_t shift = 0;
        for (const auto& [wall, change] : forFuture) {
            before = std::max(before, secondsOf(change->length));
            shift = std::max(shift, std::abs(change->start.wall - wall));
        }
        const WallTime from = std::max(kFirstWallTime, span_.start - before - shift - kClockSlack);
        const WallTime to = std::min(kLastWallTime, span_.end + shift + kClockSlack);
        Dates dates;
        for (const ItemRule& rule : event.rules)
            addRule(event, rule, from, to, forFuture, dates);
        if (event.rules.empty() && event.start.wall <= to)
            dates.emplace(event.start.wall, std::nullopt);
        for (const ItemDate& date : event.dates) // one more date of a set may have another length
            dates.insert_or_assign(date.wall, date.end);
        return dates;
    }

    /// Counts the dates that the span shows.
    void addRule(const ItemTimes& event, const ItemRule& rule, WallTime from, WallTime to,
        const FutureChanges& forFuture, Dates& dates)
    {
        RuleDates all(rule.rule, event.start.wall, event.start.isDate, steps_);
        all.skipTo(from);
        std::size_t shown = 0;
        while (const std::optional<WallTime> wall = all.next(std::min(to, rule.last))) {
            const auto [says, start] = placed(event, *wall, forFuture);
            if (!overlaps(start.moment(), endOf(start, says->length)))
                continue;
            if (++shown > bound_) {
                found_.isBounded = true;
                break;
            }
            dates.emplace(*wall, std::nullopt);
        }
        if (steps_.areUsedUp())
            found_.isBounded = true;
    }

    platform::TimeSpan span_;
    std::size_t bound_;
    RuleDates::Steps& steps_;
    Occurrences found_;
};

} // namespace

Occurrences occurrences(std::string_view text, platform::TimeSpan span, std::size_t bound)
{
    const ItemText read = readItemText(text);
    const FileZones zones(read.zones);
    const std::vector<ItemTimes> events = readEvents(read, zones);
    RuleDates::Steps steps;
    Expansion expansion(span, bound, steps);
    for (const Item& item : itemsOf(events))
        expansion.add(item);
    return expansion.take();
}

std::vector<Occurrence> firstOccurrences(std::string_view text)
{
    const ItemText read = readItemText(text);
    const FileZones zones(read.zones);
    const std::vector<ItemTimes> events = readEvents(read, zones);
    std::vector<Occurrence> first;
    RuleDates::Steps steps;
    for (const Item& item : itemsOf(events)) {
        // Any of the first dates may be an exception, or may have been moved behind the others.
        const std::size_t passed =
            item.event == nullptr ? 0 : item.event->exceptions.size() + item.event->exceptionDays.size();
        Expansion expansion(
            {kFirstWallTime, kLastWallTime}, std::min(kMostDates, passed + item.changes.size() + 1), steps);
        expansion.add(item);
        std::vector<Occurrence> all = expansion.take().all;
        if (item.event == nullptr) {
            first.insert(first.end(), all.begin(), all.end());
        } else if (!all.empty()) {
            first.push_back(all.front());
        }
    }
    return first;
}

} // namespace mervo::desk
