#include "platform/desk/mail/MailDate.h"

#include "platform/ascii.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <fmt/format.h>

namespace mervo::desk {
namespace {

constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";

struct Zone {
    std::string_view name;
    int minutes;
};
constexpr Zone kZones[] = {{"est", -300}, {"edt", -240}, {"cst", -360}, {"cdt", -300}, {"mst", -420}, {"mdt", -360},
    {"pst", -480}, {"pdt", -420}};

/// Words and numbers of the field: letters, or digits with a sign; all else parts them. Comments are left out.
class Tokens {
public:
    explicit Tokens(std::string_view text)
        : text_(text)
    {
    }

    std::string_view next()
    {
        skipBlanksAndComments();
        std::size_t length = 0;
        while (length < text_.size() && isPart(text_[length], length))
            ++length;
        if (length == 0 && !text_.empty())
            length = 1;
        const std::string_view token = text_.substr(0, length);
        text_.remove_prefix(length);
        return token;
    }

private:
    bool isPart(char c, std::size_t at) const
    {
        const char first = text_[0];
        if (at == 0)
            return platform::ascii::isDigit(c) || platform::ascii::isLetter(c) || c == '+' || c == '-';
        return platform::ascii::isLetter(first) ? platform::ascii::isLetter(c) : platform::ascii::isDigit(c);
    }

    void skipBlanksAndComments()
    {
        int depth = 0;
        while (!text_.empty()) {
            const char c = text_[0];
            if (c == '(') {
                ++depth;
            } else if (c == ')' && depth > 0) {
                --depth;
            } else if (depth == 0 && c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != ',') {
                return;
            }
            text_.remove_prefix(1);
        }
    }

    std::string_view text_;
};

std::optional<int> number(std::string_view token, std::size_t longest)
{
    if (token.empty() || token.size() > longest)
        return std::nullopt;
    int value = 0;
    for (const char c : token) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

std::string lower(std::string_view token)
{
    std::string word(token);
    std::transform(word.begin(), word.end(), word.begin(), [](char c) { return static_cast<char>(c | 0x20); });
    return word;
}

std::optional<int> month(std::string_view token)
{
    if (token.size() < 3)
        return std::nullopt;
    const std::size_t at = kMonths.find(lower(token.substr(0, 3)));
    return at == std::string_view::npos || at % 3 != 0 ? std::nullopt : std::optional(static_cast<int>(at / 3));
}

int zoneMinutes(std::string_view token)
{
    if (token.size() == 5 && (token[0] == '+' || token[0] == '-')) {
        const int value = number(token.substr(1), 4).value_or(0);
        const int minutes = value / 100 * 60 + value % 100;
        return token[0] == '-' ? -minutes : minutes;
    }
    const std::string word = lower(token);
    for (const Zone& zone : kZones) {
        if (word == zone.name)
            return zone.minutes;
    }
    return 0;
}

int fullYear(int year, std::size_t digits)
{
    if (digits >= 4)
        return year;
    return digits == 2 && year < 50 ? 2000 + year : 1900 + year;
}

/// Days from 1970-01-01 to the first of a month, by the proleptic Gregorian calendar.
std::int64_t daysBefore(int year, int monthIndex)
{
    const std::int64_t y = monthIndex < 2 ? year - 1 : year; // the year begins in March
    const std::int64_t m = (monthIndex + 10) % 12;
    return 365 * y + y / 4 - y / 100 + y / 400 + (m * 306 + 5) / 10 - 719468;
}

/// "Thu, 15 Jan 2026", "15-Jan-26": days since 1970.
std::optional<std::int64_t> readDay(Tokens& tokens)
{
    std::string_view token = tokens.next();
    if (!token.empty() && !platform::ascii::isDigit(token[0]))
        token = tokens.next(); // the day of the week
    const int day = number(token, 2).value_or(0);
    token = tokens.next();
    if (token == "-")
        token = tokens.next();
    const int monthIndex = month(token).value_or(-1);
    token = tokens.next();
    if (token.starts_with('-'))
        token.remove_prefix(1);
    const int year = number(token, 4).value_or(-1);
    if (day < 1 || day > 31 || monthIndex < 0 || year < 0 || token.size() < 2)
        return std::nullopt;
    return daysBefore(fullYear(year, token.size()), monthIndex) + day - 1;
}

/// "10:00", "10:00:30" and the zone: seconds to add to the day.
std::optional<std::int64_t> readTime(Tokens& tokens)
{
    const int hour = number(tokens.next(), 2).value_or(99);
    if (tokens.next() != ":")
        return std::nullopt;
    const int minute = number(tokens.next(), 2).value_or(99);
    int second = 0;
    std::string_view zone = tokens.next();
    if (zone == ":") {
        second = number(tokens.next(), 2).value_or(99);
        zone = tokens.next();
    }
    if (hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    return hour * 3600 + (minute - zoneMinutes(zone)) * 60 + second;
}

} // namespace

std::optional<std::int64_t> parseMailDate(std::string_view text)
{
    Tokens tokens(text);
    const std::optional<std::int64_t> day = readDay(tokens);
    if (!day)
        return std::nullopt;
    const std::optional<std::int64_t> time = readTime(tokens);
    return time ? std::optional(*day * 86400 + *time) : std::nullopt;
}

std::string formatMailDate(std::int64_t seconds)
{
    static constexpr std::array kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array kNames = {
        "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t moment = seconds;
    std::tm local{};
    localtime_r(&moment, &local);
    const long minutes = local.tm_gmtoff / 60;
    return fmt::format("{}, {} {} {} {:02}:{:02}:{:02} {}{:02}{:02}", kDays[static_cast<std::size_t>(local.tm_wday)],
        local.tm_mday, kNames[static_cast<std::size_t>(local.tm_mon)], local.tm_year + 1900, local.tm_hour,
        local.tm_min, local.tm_sec, minutes < 0 ? '-' : '+', std::labs(minutes) / 60, std::labs(minutes) % 60);
}

} // namespace mervo::desk
