#include "core/policy/Remarks.h"

#include "core/foundation/Nearest.h"
#include "core/foundation/Text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fmt/format.h>

namespace mervo::Remarks {

namespace {

using Fault = Format::Fault;
using Kind = Format::Kind;

constexpr std::size_t kShown = 60; ///< bytes of a caller's text in a sentence

/// On one line, and safe to show.
std::string shortened(std::string_view text)
{
    if (text.size() <= kShown)
        return Text::visibleLine(text);
    std::size_t end = kShown;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    return Text::visibleLine(text.substr(0, end)) + "...";
}

std::string assignment(const Argument& argument, std::string_view value)
{
    return fmt::format("{}=\"{}\"", argument.name, shortened(value));
}

/// The day that scripts make of a text: they read three numbers at fixed places, and let months and days overflow.
std::optional<std::string> dayReadByScripts(std::string_view text)
{
    if (text.size() < 10)
        return std::nullopt;
    int parts[3]{};
    constexpr std::pair<std::size_t, std::size_t> kPlaces[3]{{0, 4}, {5, 2}, {8, 2}};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string_view part = text.substr(kPlaces[i].first, kPlaces[i].second);
        if (std::from_chars(part.data(), part.data() + part.size(), parts[i]).ptr != part.data() + part.size()
            || parts[i] < 0)
            return std::nullopt;
    }
    using namespace std::chrono;
    const year_month first = year(parts[0]) / January + months(parts[1] - 1);
    const year_month_day read(sys_days(first / 1) + days(parts[2] - 1));
    return fmt::format("{:04}-{:02}-{:02}", int(read.year()), unsigned(read.month()), unsigned(read.day()));
}

std::string badDay(const Argument& argument, std::string_view value)
{
    const auto read = dayReadByScripts(value);
    if (!read) {
        return fmt::format(
            "{} is no day in the form YYYY-MM-DD; the tool fails or reads another day", assignment(argument, value));
    }
    return fmt::format("{} is no day in the form YYYY-MM-DD; it is read as {}", assignment(argument, value), *read);
}

std::string malformed(const Argument& argument, std::string_view value)
{
    const Format& format = argument.format;
    if (format.kind == Kind::day)
        return badDay(argument, value);
    if (format.kind == Kind::paths)
        return assignment(argument, value) + " is no absolute path";
    return fmt::format("{} is not {}, so {}", assignment(argument, value), format.inWords(), format.malformed.text);
}

std::string outside(const Argument& argument, std::string_view value)
{
    const Format& format = argument.format;
    return fmt::format("{} is not {}, so {}", assignment(argument, value), format.inWords(), format.outside.text);
}

std::string blank(const Argument& argument)
{
    const bool matches = argument.format.kind == Kind::needle;
    return std::string(argument.name) + (matches ? " is blank, and most texts contain a blank" : " is blank");
}

/// What there is to say of a value; an empty sentence when nothing is.
Remark ofValue(const Argument& argument, std::string_view value)
{
    const Format& format = argument.format;
    const std::string name(argument.name);
    switch (format.fault(value)) {
    case Fault::none:
        return {};
    case Fault::empty:
        return Remark::withoutEffect(name, argument.required ? "" : name + " is empty, which counts as not given");
    case Fault::blank:
        return {name, value.empty() ? name + " is empty" : blank(argument)};
    case Fault::malformed: {
        const bool said = !format.malformed.text.empty() || format.kind == Kind::day || format.kind == Kind::paths;
        return {name, said ? malformed(argument, value) : "", format.malformed.noEffect};
    }
    case Fault::outside:
        return {name, format.outside.text.empty() ? "" : outside(argument, value), format.outside.noEffect};
    }
    return {};
}

bool knows(const Tool& tool, std::string_view key)
{
    return std::ranges::find(tool.arguments, key, &Argument::name) != tool.arguments.end();
}

std::string unknown(const Tool& tool, const std::string& key)
{
    std::vector<std::string_view> names;
    for (const Argument& argument : tool.arguments)
        names.push_back(argument.name);
    return fmt::format("{} ignores {}{}", tool.id, shortened(key), didYouMean(nearest(key, names, 1)));
}

std::vector<Remark> ofTheToolItself(const Tool& tool, const Args& args)
{
    try {
        return tool.remarks ? tool.remarks(args) : std::vector<Remark>();
    } catch (const std::exception&) {
        return {}; // a call without a remark is still a call
    }
}

/// How many lines a listing has: none for an empty text or a phrase in parentheses.
std::int64_t countLines(std::string_view output)
{
    const std::string_view text = Text::trimmed(output);
    const auto breaks = std::ranges::count(text, '\n');
    return text.empty() || (breaks == 0 && text.front() == '(' && text.back() == ')') ? 0 : breaks + 1;
}

/// The limit that bounded an answer; 0 for none, and where it is not known what a script made of the value.
std::int64_t limitOf(const Argument& argument, const Args& args)
{
    const Format& format = argument.format;
    const auto given = args.find(argument.name);
    const Fault fault = given == args.end() ? Fault::empty : format.fault(given->second);
    if (fault == Fault::empty || fault == Fault::malformed)
        return format.emptyStands && given != args.end() ? 0 : format.limit.value_or(0);
    const std::size_t sign = given->second.starts_with('+') ? 1 : 0;
    std::int64_t limit = 0;
    std::from_chars(given->second.data() + sign, given->second.data() + given->second.size(), limit);
    return limit;
}

/// Whether a script failed at making something of a value or at reaching into it.
bool isAboutValue(std::string_view error)
{
    return error.find("(-1700)") != std::string_view::npos || error.find("(-1728)") != std::string_view::npos;
}

std::string wantedForm(const Format& format)
{
    const bool isDay = format.kind == Kind::day || format.kind == Kind::moment;
    return (isDay ? "a date as " : format.kind == Kind::time ? "a time as " : "") + format.inWords();
}

} // namespace

std::vector<Remark> of(const Tool& tool, const Args& args)
{
    const std::vector<Remark> own = ofTheToolItself(tool, args);
    const auto isSaid = [&](std::string_view name) {
        return std::ranges::find(own, name, &Remark::argument) != own.end();
    };
    std::vector<Remark> all;
    for (const auto& [key, value] : args) {
        if (!knows(tool, key) && !isSaid(key))
            all.push_back(Remark::withoutEffect(key, unknown(tool, key)));
    }
    for (const Argument& argument : tool.arguments) {
        const auto given = args.find(argument.name);
        if (given == args.end() || isSaid(argument.name))
            continue;
        Remark remark = ofValue(argument, given->second);
        if (!remark.sentence.empty())
            all.push_back(std::move(remark));
    }
    all.insert(all.end(), own.begin(), own.end());
    return all;
}

std::vector<std::string> after(const Tool& tool, const Args& args, const std::string& output)
{
    std::vector<std::string> sentences;
    for (const Argument& argument : tool.arguments) {
        const std::int64_t limit = argument.format.limit ? limitOf(argument, args) : 0;
        if (limit > 0 && countLines(output) >= limit)
            sentences.push_back(fmt::format("the limit of {} was reached; there may be more", limit));
    }
    try {
        if (tool.omissions)
            std::ranges::move(tool.omissions(output), std::back_inserter(sentences));
    } catch (const std::exception&) {
        sentences.emplace_back("what the answer leaves out could not be found out");
    }
    return sentences;
}

std::string explained(const std::string& error, const Tool& tool, const Args& args)
{
    std::string line = error;
    for (const Argument& argument : tool.arguments) {
        const auto given = args.find(argument.name);
        const bool mayFail = !argument.format.malformed.noEffect && argument.format.kind != Kind::words;
        if (given != args.end() && mayFail && argument.format.fault(given->second) == Fault::malformed
            && isAboutValue(error)) {
            line += fmt::format(
                " - {} wants {}, not \"{}\"", argument.name, wantedForm(argument.format), shortened(given->second));
        }
    }
    return line;
}

} // namespace mervo::Remarks
