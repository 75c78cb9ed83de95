#include "platform/desk/recurrence/Zone.h"

#include "platform/desk/recurrence/ZoneFile.h"

#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <utility>

namespace mervo::desk {
namespace {

constexpr std::string_view kZoneFiles = "/usr/share/zoneinfo/";
constexpr std::size_t kLongestFile = 256 << 10;

/// A name that cannot lead out of the folder of zones.
bool isZoneName(std::string_view name)
{
    if (name.empty() || name.size() > 128 || name.starts_with('/') || name.find("..") != std::string_view::npos)
        return false;
    return std::all_of(name.begin(), name.end(), [](char c) {
        return platform::ascii::isLetter(c) || platform::ascii::isDigit(c) || c == '/' || c == '_' || c == '-'
            || c == '+';
    });
}

std::string contentOf(const std::string& path)
{
    std::error_code none;
    if (!std::filesystem::is_regular_file(path, none) || std::filesystem::file_size(path, none) > kLongestFile)
        return {};
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

std::shared_ptr<const Zone> readNamed(const std::string& name)
{
    if (!isZoneName(name))
        return nullptr;
    std::optional<Zone> zone = readZoneFile(contentOf(std::string(kZoneFiles) + name));
    return zone ? std::make_shared<const Zone>(*std::move(zone)) : nullptr;
}

/// Behind the folder of zones; a link may lead there by a way of its own.
std::string nameInPath(const std::string& path)
{
    constexpr std::string_view kFolder = "/zoneinfo/";
    const std::size_t at = path.rfind(kFolder);
    return at == std::string::npos ? std::string() : path.substr(at + kFolder.size());
}

std::string linkedZone()
{
    std::error_code none;
    const std::filesystem::path target = std::filesystem::read_symlink("/etc/localtime", none);
    return none ? std::string() : nameInPath(target.string());
}

std::string writtenZone()
{
    const std::string content = contentOf("/etc/timezone");
    return content.substr(0, content.find_first_of(" \t\r\n"));
}

std::string zoneVariable()
{
    const char* value = std::getenv("TZ");
    std::string text = value == nullptr ? std::string() : value;
    if (text.starts_with(':'))
        text.erase(0, 1);
    return text.starts_with('/') ? nameInPath(text) : text;
}

} // namespace

Zone::Zone(ZoneOffset first, std::vector<Change> changes, std::optional<ZoneRule> rule)
    : first_(std::move(first))
    , changes_(std::move(changes))
    , rule_(std::move(rule))
{
    while (isLastChangeByRule())
        changes_.pop_back();
}

/// Many zone files spell their rule out up to the year 2037.
bool Zone::isLastChangeByRule() const
{
    if (!rule_ || !rule_->daylight || changes_.size() < 2)
        return false;
    const Change& before = changes_[changes_.size() - 2];
    const Change& last = changes_.back();
    if (last.moment - before.moment > 366 * kDay || ruleOffsetAt(before.moment) != before.offset)
        return false;
    const std::vector<Change> byRule = ruleChangesBetween(before.moment, last.moment + 1);
    return byRule.size() == 1 && byRule[0].moment == last.moment && byRule[0].offset == last.offset;
}

std::shared_ptr<const Zone> Zone::find(const std::string& name)
{
    static std::mutex guard;
    static std::map<std::string, std::shared_ptr<const Zone>> known; // only zones that there are: some 600 at most
    const std::lock_guard held(guard);
    const auto found = known.find(name);
    if (found != known.end())
        return found->second;
    std::shared_ptr<const Zone> zone = readNamed(name);
    if (zone)
        known.emplace(name, zone);
    return zone;
}

std::shared_ptr<const Zone> Zone::utc()
{
    static const std::shared_ptr<const Zone> zone =
        std::make_shared<const Zone>(ZoneOffset{0, false, "UTC"}, std::vector<Change>{}, std::nullopt);
    return zone;
}

std::shared_ptr<const Zone> Zone::local()
{
    if (std::shared_ptr<const Zone> zone = find(localZoneName()))
        return zone;
    if (std::optional<ZoneRule> rule = readZoneRule(zoneVariable()))
        return std::make_shared<const Zone>(rule->standard, std::vector<Change>{}, rule);
    std::optional<Zone> zone = readZoneFile(contentOf("/etc/localtime"));
    return zone ? std::make_shared<const Zone>(*std::move(zone)) : utc();
}

std::string localZoneName()
{
    if (const char* value = std::getenv("TZ"); value != nullptr && *value != '\0')
        return Zone::find(zoneVariable()) ? zoneVariable() : std::string();
    std::string name = linkedZone();
    if (!Zone::find(name))
        name = writtenZone();
    return Zone::find(name) ? name : std::string();
}

const ZoneOffset& Zone::offsetAt(std::int64_t moment) const
{
    if (rule_ && (changes_.empty() || moment >= changes_.back().moment))
        return ruleOffsetAt(moment);
    const auto behind = std::upper_bound(changes_.begin(), changes_.end(), moment,
        [](std::int64_t searched, const Change& change) { return searched < change.moment; });
    return behind == changes_.begin() ? first_ : std::prev(behind)->offset;
}

const ZoneOffset& Zone::ruleOffsetAt(std::int64_t moment) const
{
    if (!rule_->daylight)
        return rule_->standard;
    const ZoneRule::Daylight& daylight = *rule_->daylight;
    const int year = civilDate(dayOf(moment + rule_->standard.seconds)).year;
    const std::int64_t begins = changeInYear(daylight.begins, year) - rule_->standard.seconds;
    const std::int64_t ends = changeInYear(daylight.ends, year) - daylight.offset.seconds;
    const bool isDaylight = begins < ends ? moment >= begins && moment < ends : moment >= begins || moment < ends;
    return isDaylight ? daylight.offset : rule_->standard;
}

std::int64_t Zone::momentOf(WallTime time) const
{
    const std::int64_t before = offsetAt(time - kDay).seconds;
    if (offsetAt(time - before).seconds == before)
        return time - before;
    const std::int64_t after = offsetAt(time + kDay).seconds;
    return offsetAt(time - after).seconds == after ? time - after : time - before;
}

std::vector<Zone::Change> Zone::ruleChangesBetween(std::int64_t since, std::int64_t until) const
{
    std::vector<Change> between;
    const int lastYear = civilDate(dayOf(until)).year + 1;
    for (int year = civilDate(dayOf(since)).year - 1; year <= lastYear; ++year) {
        std::array<Change, 2> both = {
            Change{changeInYear(rule_->daylight->begins, year) - rule_->standard.seconds, rule_->daylight->offset},
            Change{changeInYear(rule_->daylight->ends, year) - rule_->daylight->offset.seconds, rule_->standard}};
        if (both[1].moment < both[0].moment)
            std::swap(both[0], both[1]);
        std::copy_if(both.begin(), both.end(), std::back_inserter(between),
            [&](const Change& change) { return change.moment > since && change.moment < until; });
    }
    return between;
}

std::vector<Zone::Change> Zone::changesBetween(std::int64_t since, std::int64_t until) const
{
    std::vector<Change> between;
    std::copy_if(changes_.begin(), changes_.end(), std::back_inserter(between),
        [&](const Change& change) { return change.moment > since && change.moment < until; });
    if (!rule_ || !rule_->daylight)
        return between;
    for (Change& change : ruleChangesBetween(std::max(since, lastChange().value_or(since)), until))
        between.push_back(std::move(change));
    return between;
}

std::optional<std::int64_t> Zone::lastChange() const
{
    return changes_.empty() ? std::nullopt : std::optional(changes_.back().moment);
}

WallTime changeInYear(const YearlyChange& change, int year)
{
    const std::int64_t first = dayNumber({year, 1, 1});
    switch (change.kind) {
    case YearlyChange::Kind::dayOfYear:
        return (first + change.day) * kDay + change.second;
    case YearlyChange::Kind::dayOfYearWithoutLeapDay:
        return (first + change.day - 1 + (isLeap(year) && change.day >= 60 ? 1 : 0)) * kDay + change.second;
    case YearlyChange::Kind::weekdayOfMonth:
        break;
    }
    const std::int64_t month = dayNumber({year, change.month, 1});
    const int ahead = (static_cast<int>(change.weekday) - static_cast<int>(weekdayOf(month)) + 7) % 7;
    int day = ahead + (change.week - 1) * 7;
    if (day >= daysInMonth(year, change.month))
        day -= 7;
    return (month + day) * kDay + change.second;
}

} // namespace mervo::desk
