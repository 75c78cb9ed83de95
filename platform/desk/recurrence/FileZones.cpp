#include "platform/desk/recurrence/FileZones.h"

#include "platform/desk/recurrence/DateValue.h"
#include "platform/desk/recurrence/RuleDates.h"

#include "platform/ascii.h"

#include <algorithm>

namespace mervo::desk {
namespace {

constexpr std::size_t kMostChanges = 20000; // of a zone; the longest one of the system has some 240
constexpr std::size_t kMostNames = 1000; // remembered for a file
constexpr std::size_t kMostZones = 200; // looked at in a file
constexpr int kMostParts = 3; // of an Olson name: "America/Argentina/Buenos_Aires"

/// "+0100", "-033020": in seconds.
std::optional<std::int64_t> readOffset(std::string_view text)
{
    if ((text.size() != 5 && text.size() != 7) || (text[0] != '+' && text[0] != '-')
        || !std::all_of(text.begin() + 1, text.end(), platform::ascii::isDigit))
        return std::nullopt;
    const auto two = [&](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    const std::int64_t seconds = two(1) * 3600 + two(3) * 60 + (text.size() == 7 ? two(5) : 0);
    if (seconds >= kDay)
        return std::nullopt;
    return text[0] == '-' ? -seconds : seconds;
}

/// One STANDARD or DAYLIGHT. Its times stand on the clock before the change.
class Observance {
public:
    explicit Observance(const ItemComponent& component)
        : component_(component)
    {
        offset.isDaylight = component.name == "DAYLIGHT";
        for (const ItemLine& line : component.lines) {
            if (line.name == "TZOFFSETFROM") {
                from = readOffset(line.value);
            } else if (line.name == "TZOFFSETTO") {
                to_ = readOffset(line.value);
            } else if (line.name == "DTSTART") {
                start_ = readDateValue(line.value, nullptr, Zone::utc());
            } else if (line.name == "TZNAME") {
                offset.name = line.value;
            }
        }
        offset.seconds = to_.value_or(0);
    }

    bool isUsable() const { return from && to_ && start_; }
    void addChanges(std::vector<Zone::Change>& changes, RuleDates::Steps& steps) const
    {
        add(start_->wall, changes);
        for (const ItemLine& line : component_.lines) {
            if (line.name == "RDATE") {
                addDates(line.value, changes);
            } else if (line.name == "RRULE") {
                addRule(line.value, changes, steps);
            }
        }
    }

    ZoneOffset offset;
    std::optional<std::int64_t> from;

private:
    void add(WallTime wall, std::vector<Zone::Change>& changes) const
    {
        if (changes.size() < kMostChanges)
            changes.push_back({wall - *from, offset});
    }
    void addDates(std::string_view list, std::vector<Zone::Change>& changes) const
    {
        while (!list.empty()) {
            const std::size_t end = std::min(list.find(','), list.size());
            if (const auto date = readDateValue(std::string(list.substr(0, end)), nullptr, Zone::utc()))
                add(date->wall, changes);
            list.remove_prefix(std::min(end + 1, list.size()));
        }
    }
    void addRule(const std::string& text, std::vector<Zone::Change>& changes, RuleDates::Steps& steps) const
    {
        const std::optional<Rule> rule = readRule(text);
        if (!rule)
            return;
        WallTime last = wallTime({2100, 1, 1});
        const std::optional<DateValue> until = readDateValue(std::string(untilOf(text)), nullptr, Zone::utc());
        if (until)
            last = std::min(last, until->wall + (until->clock == DateValue::Clock::utc ? *from : 0));
        RuleDates dates(*rule, start_->wall, false, steps);
        while (std::optional<WallTime> date = dates.next(last)) {
            if (changes.size() >= kMostChanges)
                return;
            add(*date, changes);
        }
    }

    const ItemComponent& component_;
    std::optional<std::int64_t> to_;
    std::optional<DateValue> start_;
};

} // namespace

std::shared_ptr<const Zone> readFileZone(const ItemZone& zone, RuleDates::Steps& steps)
{
    std::vector<Zone::Change> changes;
    std::optional<std::pair<std::int64_t, std::int64_t>> earliest; // the moment, and the offset before it
    for (const ItemComponent& component : zone.observances) {
        const Observance observance(component);
        if (!observance.isUsable())
            continue;
        const std::size_t known = changes.size();
        observance.addChanges(changes, steps);
        for (std::size_t i = known; i < changes.size(); ++i) {
            if (!earliest || changes[i].moment < earliest->first)
                earliest = {changes[i].moment, *observance.from};
        }
    }
    if (!earliest)
        return nullptr;
    std::stable_sort(changes.begin(), changes.end(), [](const auto& a, const auto& b) { return a.moment < b.moment; });
    const auto last =
        std::unique(changes.begin(), changes.end(), [](const auto& a, const auto& b) { return a.moment == b.moment; });
    changes.erase(last, changes.end());
    return std::make_shared<const Zone>(ZoneOffset{earliest->second, false, {}}, std::move(changes), std::nullopt);
}

FileZones::FileZones(const std::vector<ItemZone>& zones)
    : zones_(zones)
    , local_(Zone::local())
{
}

std::shared_ptr<const Zone> FileZones::find(const std::string& tzid) const
{
    if (tzid.empty())
        return nullptr;
    const auto known = found_.find(tzid);
    if (known != found_.end())
        return known->second;
    std::shared_ptr<const Zone> zone = search(tzid);
    if (found_.size() < kMostNames)
        found_.emplace(tzid, zone);
    return zone;
}

std::shared_ptr<const Zone> FileZones::search(const std::string& tzid) const
{
    if (std::shared_ptr<const Zone> zone = Zone::find(tzid))
        return zone;
    for (std::size_t i = 0; i < std::min(zones_.size(), kMostZones); ++i) {
        if (zones_[i].tzid == tzid)
            return readFileZone(zones_[i], steps_);
    }
    std::shared_ptr<const Zone> found;
    std::size_t at = tzid.rfind('/');
    for (int parts = 1; parts <= kMostParts && at != std::string::npos; ++parts) {
        if (std::shared_ptr<const Zone> zone = Zone::find(tzid.substr(at + 1)))
            found = std::move(zone);
        at = at == 0 ? std::string::npos : tzid.rfind('/', at - 1);
    }
    return found;
}

} // namespace mervo::desk
