#include "core/policy/Argument.h"

#include "core/foundation/Text.h"
#include "platform/ascii.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fmt/format.h>
#include <vector>

namespace mervo {

namespace {

std::optional<int> digits(std::string_view text, std::size_t from, std::size_t count)
{
    int number = 0;
    const std::string_view part = text.size() < from + count ? std::string_view() : text.substr(from, count);
    if (part.empty() || !std::ranges::all_of(part, platform::ascii::isDigit))
        return std::nullopt;
    std::from_chars(part.data(), part.data() + part.size(), number);
    return number;
}

bool isDay(std::string_view text)
{
    const auto year = digits(text, 0, 4);
    const auto month = digits(text, 5, 2);
    const auto day = digits(text, 8, 2);
    if (text.size() != 10 || text[4] != '-' || text[7] != '-' || !year || !month || !day)
        return false;
    using namespace std::chrono;
    return year_month_day(
        std::chrono::year(*year), std::chrono::month(unsigned(*month)), std::chrono::day(unsigned(*day)))
        .ok();
}

bool isTime(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon > 2 || text.size() - colon > 3)
        return false;
    const auto hour = digits(text, 0, colon);
    const auto minute = digits(text, colon + 1, text.size() - colon - 1);
    return hour && minute && *hour < 24 && *minute < 60;
}

bool isMoment(std::string_view text)
{
    return isDay(text)
        || (text.size() == 16 && text[10] == ' ' && isDay(text.substr(0, 10)) && isTime(text.substr(11)));
}

/// Whether every part between commas passes. Of any number of parts none is kept.
template <typename Test>
bool eachPart(std::string_view text, Test&& test)
{
    for (std::size_t comma = text.find(','); comma != std::string_view::npos; comma = text.find(',')) {
        if (!test(text.substr(0, comma)))
            return false;
        text.remove_prefix(comma + 1);
    }
    return test(text);
}

bool areHours(std::string_view text)
{
    return eachPart(text, [](std::string_view part) {
        const auto hour = part.size() > 2 ? std::nullopt : digits(part, 0, part.size());
        return hour && *hour < 24;
    });
}

bool areAbsolute(std::string_view text)
{
    return eachPart(text, [](std::string_view part) {
        const std::string_view path = Text::trimmed(part);
        return path.empty() || path.starts_with('/');
    });
}

/// The whole text as a number; nothing where it is none, or none that the type holds.
template <typename Number>
std::optional<double> readAs(std::string_view text)
{
    Number number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool reads = failure == std::errc() && end == text.data() + text.size();
    return reads ? std::optional(static_cast<double>(number)) : std::nullopt;
}

/// The number of a text; nothing where it has another form.
std::optional<double> numberOf(std::string_view text, Format::Kind kind)
{
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    if (kind == Format::Kind::whole)
        return readAs<std::int64_t>(text);
    if (text.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
        return std::nullopt;
    return readAs<double>(text);
}

bool isOneOf(std::string_view value, std::string_view words)
{
    constexpr std::size_t kLongestWord = 64;
    const auto list = Text::split(words, '|');
    return value.size() <= kLongestWord
        && std::ranges::any_of(list, [&](const std::string& word) { return Text::equalsIgnoringCase(word, value); });
}

bool hasForm(const Format& format, std::string_view value)
{
    using enum Format::Kind;
    switch (format.kind) {
    case text:
    case needle:
        return true;
    case words:
        return isOneOf(value, format.words);
    case day:
        return isDay(value);
    case moment:
        return isMoment(value);
    case time:
        return isTime(value);
    case whole:
    case number:
        return numberOf(value, format.kind).has_value();
    case hours:
        return areHours(value);
    case paths:
        return areAbsolute(value);
    }
    return true;
}

bool isNumeric(Format::Kind kind)
{
    return kind == Format::Kind::whole || kind == Format::Kind::number;
}

} // namespace

Format::Fault Format::fault(std::string_view value) const
{
    const bool anything = kind == Kind::text || kind == Kind::needle;
    if (value.empty() && !emptyStands)
        return Fault::empty;
    if (anything)
        return Text::trimmed(value).empty() ? Fault::blank : Fault::none;
    if (!hasForm(*this, value))
        return Fault::malformed;
    if (!isNumeric(kind))
        return Fault::none;
    const double number = numberOf(value, kind).value_or(0);
    return number < least || number > most ? Fault::outside : Fault::none;
}

std::string Format::inWords() const
{
    using enum Kind;
    const std::string noun = kind == Kind::number ? "a number" : "a whole number";
    switch (kind) {
    case text:
    case needle:
        return {};
    case words: {
        std::vector<std::string> list = Text::split(this->words, '|');
        const std::string last = list.back();
        list.pop_back();
        return list.empty() ? last : Text::join(list, ", ") + " or " + last;
    }
    case day:
        return "YYYY-MM-DD";
    case moment:
        return "YYYY-MM-DD or YYYY-MM-DD HH:MM";
    case time:
        return "HH:MM";
    case whole:
    case number:
        if (least > 0 && least < 1)
            return noun + " above 0";
        if (most < std::numeric_limits<double>::infinity())
            return fmt::format("{} from {} to {}", noun, least, most);
        return least > -std::numeric_limits<double>::infinity() ? fmt::format("{} from {}", noun, least) : noun;
    case hours:
        return "comma-separated hours, 0 to 23";
    case paths:
        return "absolute paths, comma-separated";
    }
    return {};
}

} // namespace mervo
