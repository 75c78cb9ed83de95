#include "platform/desk/recurrence/ZoneFile.h"

#include "platform/ascii.h"

#include <utility>

namespace mervo::desk {
namespace {

constexpr std::size_t kHeader = 44;
constexpr std::size_t kMostChanges = 20000; // the largest zone has some 240

/// The numbers of a file, the highest byte first. Behind the end all are 0; the caller has checked the length.
class Bytes {
public:
    explicit Bytes(std::string_view bytes)
        : bytes_(bytes)
    {
    }

    std::int64_t number(std::size_t at, std::size_t length) const
    {
        std::uint64_t value = at < bytes_.size() && (bytes_[at] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
        for (std::size_t i = at; i < at + length; ++i)
            value = value << 8 | (i < bytes_.size() ? static_cast<unsigned char>(bytes_[i]) : 0);
        return static_cast<std::int64_t>(value);
    }
    std::size_t count(std::size_t at) const { return static_cast<std::size_t>(number(at, 4) & 0xffffffff); }
    unsigned char byte(std::size_t at) const { return static_cast<unsigned char>(number(at, 1) & 0xff); }

private:
    std::string_view bytes_;
};

/// Where the parts of one block begin (RFC 8536, 3.1).
struct Block {
    Block(std::string_view bytes, std::size_t sizeOfTime)
        : timeSize(sizeOfTime)
    {
        const Bytes numbers(bytes);
        isUtc = numbers.count(20);
        isStandard = numbers.count(24);
        leaps = numbers.count(28);
        times = numbers.count(32);
        types = numbers.count(36);
        names = numbers.count(40);
        indexes = kHeader + times * timeSize;
        typesAt = indexes + times;
        namesAt = typesAt + types * 6;
        end = namesAt + names + leaps * (timeSize + 4) + isStandard + isUtc;
    }
    bool fits(std::string_view bytes) const
    {
        return times <= kMostChanges && types > 0 && types <= 256 && names <= 4096 && leaps <= 4096 && isUtc <= 256
            && isStandard <= 256 && end <= bytes.size();
    }

    std::size_t timeSize;
    std::size_t isUtc, isStandard, leaps, times, types, names;
    std::size_t indexes, typesAt, namesAt, end;
};

bool isZoneFile(std::string_view bytes)
{
    return bytes.size() >= kHeader && bytes.starts_with("TZif");
}

std::vector<ZoneOffset> readOffsets(std::string_view bytes, const Block& block)
{
    const Bytes numbers(bytes);
    const std::string_view names = bytes.substr(block.namesAt, block.names);
    std::vector<ZoneOffset> offsets;
    for (std::size_t i = 0; i < block.types; ++i) {
        const std::size_t at = block.typesAt + i * 6;
        const std::string_view name = names.substr(std::min<std::size_t>(numbers.byte(at + 5), names.size()));
        offsets.push_back({.seconds = numbers.number(at, 4),
            .isDaylight = numbers.byte(at + 4) != 0,
            .name = std::string(name.substr(0, name.find('\0')))});
    }
    return offsets;
}

std::optional<Zone> readBlock(std::string_view bytes, const Block& block, std::string_view footer)
{
    const Bytes numbers(bytes);
    const std::vector<ZoneOffset> offsets = readOffsets(bytes, block);
    std::vector<Zone::Change> changes;
    for (std::size_t i = 0; i < block.times; ++i) {
        const std::size_t type = numbers.byte(block.indexes + i);
        const std::int64_t moment = numbers.number(kHeader + i * block.timeSize, block.timeSize);
        if (type >= offsets.size() || (!changes.empty() && moment <= changes.back().moment))
            return std::nullopt;
        changes.push_back({moment, offsets[type]});
    }
    return Zone(offsets.front(), std::move(changes), readZoneRule(footer));
}

/// The parts of a POSIX rule, taken from its front.
class RuleReader {
public:
    explicit RuleReader(std::string_view text)
        : text_(text)
    {
    }

    bool isAtEnd() const { return text_.empty(); }
    bool take(char c)
    {
        if (!text_.starts_with(c))
            return false;
        text_.remove_prefix(1);
        return true;
    }
    std::optional<std::string> name()
    {
        const bool isQuoted = take('<');
        std::size_t length = 0;
        while (length < text_.size() && (isQuoted ? text_[length] != '>' : platform::ascii::isLetter(text_[length])))
            ++length;
        std::string found(text_.substr(0, length));
        text_.remove_prefix(length);
        if (length < 3 || (isQuoted && !take('>')))
            return std::nullopt;
        return found;
    }
    std::optional<int> number(int most)
    {
        int value = 0;
        std::size_t length = 0;
        for (; length < text_.size() && length < 4 && platform::ascii::isDigit(text_[length]); ++length)
            value = value * 10 + (text_[length] - '0');
        text_.remove_prefix(length);
        return length == 0 || value > most ? std::nullopt : std::optional(value);
    }
    /// "-1", "3", "2:30:15": in seconds.
    std::optional<std::int64_t> time()
    {
        const bool isNegative = take('-');
        if (!isNegative)
            take('+');
        const std::optional<int> hours = number(167);
        std::optional<int> minutes = 0;
        std::optional<int> seconds = 0;
        if (hours && take(':')) {
            minutes = number(59);
            if (minutes && take(':'))
                seconds = number(59);
        }
        if (!hours || !minutes || !seconds)
            return std::nullopt;
        const std::int64_t value = *hours * 3600 + *minutes * 60 + *seconds;
        return isNegative ? -value : value;
    }
    std::optional<YearlyChange> change()
    {
        YearlyChange change;
        if (!take(',') || !day(change))
            return std::nullopt;
        if (take('/')) {
            const std::optional<std::int64_t> at = time();
            if (!at)
                return std::nullopt;
            change.second = *at;
        }
        return change;
    }

private:
    bool day(YearlyChange& change)
    {
        if (!take('M')) {
            change.kind = take('J') ? YearlyChange::Kind::dayOfYearWithoutLeapDay : YearlyChange::Kind::dayOfYear;
            const std::optional<int> day = number(365);
            change.day = day.value_or(0);
            return day && (change.kind == YearlyChange::Kind::dayOfYear || *day > 0);
        }
        const int month = number(12).value_or(0);
        const int week = take('.') ? number(5).value_or(0) : 0;
        const int weekday = take('.') ? number(6).value_or(-1) : -1; // from Sunday
        if (month < 1 || week < 1 || weekday < 0)
            return false;
        change.month = month;
        change.week = week;
        change.weekday = static_cast<Weekday>((weekday + 6) % 7);
        return true;
    }

    std::string_view text_;
};

} // namespace

std::optional<ZoneRule> readZoneRule(std::string_view text)
{
    RuleReader reader(text);
    ZoneRule rule;
    const std::optional<std::string> name = reader.name();
    const std::optional<std::int64_t> west = name ? reader.time() : std::nullopt;
    if (!west)
        return std::nullopt;
    rule.standard = {-*west, false, *name};
    if (reader.isAtEnd())
        return rule;
    const std::optional<std::string> daylightName = reader.name();
    if (!daylightName)
        return std::nullopt;
    ZoneRule::Daylight daylight{.offset = {3600 - *west, true, *daylightName}};
    if (std::optional<std::int64_t> daylightWest = reader.time())
        daylight.offset.seconds = -*daylightWest;
    const std::optional<YearlyChange> begins = reader.change();
    const std::optional<YearlyChange> ends = begins ? reader.change() : std::nullopt;
    if (!ends || !reader.isAtEnd())
        return std::nullopt;
    daylight.begins = *begins;
    daylight.ends = *ends;
    rule.daylight = daylight;
    return rule;
}

std::optional<Zone> readZoneFile(std::string_view bytes)
{
    if (!isZoneFile(bytes))
        return std::nullopt;
    const Block old(bytes, 4);
    if (!old.fits(bytes))
        return std::nullopt;
    if (bytes[4] < '2')
        return readBlock(bytes, old, {});
    bytes.remove_prefix(old.end); // the same again with longer numbers, and the rule
    if (!isZoneFile(bytes))
        return std::nullopt;
    const Block block(bytes, 8);
    if (!block.fits(bytes))
        return std::nullopt;
    std::string_view footer = bytes.substr(block.end);
    if (footer.starts_with('\n'))
        footer.remove_prefix(1);
    return readBlock(bytes, block, footer.substr(0, footer.find('\n')));
}

} // namespace mervo::desk
