#include "platform/desk/recurrence/ItemText.h"

#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <optional>

namespace mervo::desk {
namespace {

constexpr std::size_t kDeepest = 64; // levels; deeper components belong to the one around them
constexpr std::array<std::string_view, 10> kTimes = {
    "UID", "DTSTART", "DTEND", "DUE", "DURATION", "RRULE", "RDATE", "EXDATE", "RECURRENCE-ID", "SEQUENCE"};
constexpr std::array<std::string_view, 7> kZoneLines = {
    "TZID", "DTSTART", "RRULE", "RDATE", "TZOFFSETFROM", "TZOFFSETTO", "TZNAME"};

std::string upper(std::string_view text)
{
    std::string folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(),
        [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return folded;
}

/// Where the name, or a parameter, ends: at a mark outside quotes.
std::size_t endOfPart(std::string_view line, std::size_t from)
{
    bool isQuoted = false;
    for (std::size_t at = from; at < line.size(); ++at) {
        if (line[at] == '"') {
            isQuoted = !isQuoted;
        } else if (!isQuoted && (line[at] == ';' || line[at] == ':')) {
            return at;
        }
    }
    return std::string_view::npos;
}

std::string withoutQuotes(std::string_view value)
{
    std::string plain(value);
    plain.erase(std::remove(plain.begin(), plain.end(), '"'), plain.end());
    return plain;
}

void readParameter(std::string_view parameter, ItemLine& line)
{
    const std::size_t equals = std::min(parameter.find('='), parameter.size());
    const std::string name = upper(parameter.substr(0, equals));
    const std::string_view value = parameter.substr(std::min(equals + 1, parameter.size()));
    if (name == "TZID") {
        line.tzid = withoutQuotes(value);
    } else if (name == "RANGE") {
        line.range = upper(withoutQuotes(value));
    }
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ')
        text.remove_prefix(1);
    return text;
}

std::optional<ItemLine> readLine(std::string raw)
{
    ItemLine line;
    const std::string_view whole = raw;
    std::size_t end = endOfPart(whole, 0);
    line.name = upper(whole.substr(0, end));
    while (end != std::string_view::npos && whole[end] == ';') {
        const std::size_t from = end + 1;
        end = endOfPart(whole, from);
        readParameter(whole.substr(from, end == std::string_view::npos ? end : end - from), line);
    }
    if (end == std::string_view::npos)
        return std::nullopt;
    line.value = trimmed(whole.substr(end + 1));
    line.raw = std::move(raw);
    return line;
}

/// The lines of a text, unfolded when they are asked for.
class Lines {
public:
    explicit Lines(std::string_view text)
        : rest_(text)
    {
    }

    bool next()
    {
        if (rest_.empty())
            return false;
        std::size_t end = 0;
        do {
            end = rest_.find('\n', end);
            end = end == std::string_view::npos ? rest_.size() : end + 1;
        } while (end < rest_.size() && (rest_[end] == ' ' || rest_[end] == '\t'));
        raw_ = rest_.substr(0, end);
        rest_.remove_prefix(end);
        const std::size_t nameEnd = raw_.find_first_of(";:\n");
        const bool isFoldInName = nameEnd < raw_.size() && raw_[nameEnd] == '\n' && nameEnd + 1 < raw_.size();
        if (isFoldInName) {
            whole_ = unfolded();
            raw_ = whole_;
        }
        return true;
    }
    std::string_view name() const { return raw_.substr(0, raw_.find_first_of(";:\n")); }
    std::string unfolded() const
    {
        std::string line;
        for (std::size_t at = 0; at < raw_.size();) {
            const std::size_t end = std::min(raw_.find('\n', at), raw_.size());
            std::string_view piece = raw_.substr(at, end - at);
            while (piece.ends_with('\r'))
                piece.remove_suffix(1);
            line += at == 0 ? piece : piece.substr(1);
            at = end + 1;
        }
        return line;
    }

private:
    std::string_view rest_;
    std::string_view raw_;
    std::string whole_; // raw_ points into it where a fold parts the name, which no program is known to write
};

bool isOneOf(std::string_view name, const auto& names)
{
    return std::any_of(names.begin(), names.end(),
        [&](std::string_view one) { return platform::ascii::equalsIgnoringCase(one, name); });
}

class Reader {
public:
    ItemText read(std::string_view text)
    {
        Lines lines(text);
        while (lines.next()) {
            const std::string_view name = lines.name();
            if (platform::ascii::equalsIgnoringCase(name, "BEGIN")) {
                if (std::optional<ItemLine> line = readLine(lines.unfolded()))
                    begin(upper(line->value));
            } else if (platform::ascii::equalsIgnoringCase(name, "END")) {
                if (std::optional<ItemLine> line = readLine(lines.unfolded()))
                    end(upper(line->value));
            } else if (std::vector<ItemLine>* into = wanted(name); into != nullptr) {
                if (std::optional<ItemLine> line = readLine(lines.unfolded()))
                    into->push_back(*std::move(line));
            }
        }
        nameZones();
        return std::move(found_);
    }

private:
    void begin(std::string name)
    {
        if (open_.size() >= kDeepest)
            return;
        const bool isInCalendar = open_.size() == 1 && open_.front() == "VCALENDAR";
        if (isInCalendar && name == "VEVENT") {
            found_.events.push_back({name, {}});
        } else if (isInCalendar && name == "VTODO") {
            found_.todos.push_back({name, {}});
        } else if (isInCalendar && name == "VTIMEZONE") {
            found_.zones.emplace_back();
            zoneLines_.emplace_back();
        } else if (isInZone() && (name == "STANDARD" || name == "DAYLIGHT")) {
            found_.zones.back().observances.push_back({name, {}});
        }
        open_.push_back(std::move(name));
    }

    void end(const std::string& name)
    {
        const auto opened = std::find(open_.rbegin(), open_.rend(), name);
        if (opened != open_.rend())
            open_.erase(std::prev(opened.base()), open_.end());
    }

    bool isInZone() const { return open_.size() == 2 && open_[0] == "VCALENDAR" && open_[1] == "VTIMEZONE"; }

    /// Where a line of this name goes; null: nowhere.
    std::vector<ItemLine>* wanted(std::string_view name)
    {
        if (open_.size() < 2 || open_.size() > 3 || open_[0] != "VCALENDAR")
            return nullptr;
        if (open_[1] == "VTIMEZONE") {
            if (!isOneOf(name, kZoneLines))
                return nullptr;
            if (open_.size() == 2)
                return &zoneLines_.back();
            const bool isObservance = open_[2] == "STANDARD" || open_[2] == "DAYLIGHT";
            return isObservance ? &found_.zones.back().observances.back().lines : nullptr;
        }
        if (open_.size() != 2 || (open_[1] != "VEVENT" && open_[1] != "VTODO") || !isOneOf(name, kTimes))
            return nullptr;
        return open_[1] == "VEVENT" ? &found_.events.back().lines : &found_.todos.back().lines;
    }

    void nameZones()
    {
        for (std::size_t i = 0; i < found_.zones.size(); ++i) {
            for (const ItemLine& line : zoneLines_[i]) {
                if (line.name == "TZID")
                    found_.zones[i].tzid = line.value;
            }
        }
    }

    ItemText found_;
    std::vector<std::vector<ItemLine>> zoneLines_; // the lines of each zone itself
    std::vector<std::string> open_;
};

} // namespace

ItemText readItemText(std::string_view text)
{
    return Reader().read(text);
}

} // namespace mervo::desk
