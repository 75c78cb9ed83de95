#include "core/tools/mail/MailCriteria.h"

#include "core/tools/Arguments.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ctime>

namespace mervo::MailCriteria {

namespace {

/// What is less than a byte counts as no bound.
constexpr Format kMegabytes =
    Formats::number(1.0 / 1048576, {"the tool reads it as bytes or fails"}, Formats::withoutEffect("it sets no bound"));

constexpr std::array kCriteria{
    optional("from", "text that the sender contains", Formats::needle),
    optional("to", "text that the address of a recipient contains", Formats::needle),
    optional("before", "received before this day, YYYY-MM-DD", Formats::day),
    optional("after", "received after the start of this day, YYYY-MM-DD", Formats::day),
    optional("olderThan", "received more than so many days ago; takes the place of before",
        Formats::whole(1, {"the tool rounds it or fails"}, Formats::withoutEffect("it leaves no message out"))),
    optional("minSize", "at least so many megabytes; fractions allowed", kMegabytes),
    optional("maxSize", "at most so many megabytes; fractions allowed", kMegabytes),
    optional("subject", "the whole subject"),
    optional("subjectContains", "text that the subject contains", Formats::needle),
    optional("status", "unread or read", Formats::words("unread|read", Formats::withoutEffect("it filters nothing"))),
    optional("hasAttachment", "any value: only messages with an attachment",
        Formats::words("true", {"it counts as true: only messages with an attachment match"})),
};

/// A day of the calendar after today's, by the local clock.
bool liesAhead(const Args& args, std::string_view key)
{
    const std::string day = Arguments::optional(args, key);
    if (Formats::day.fault(day) != Format::Fault::none)
        return false;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char today[sizeof "2026-03-01"]{};
    return std::strftime(today, sizeof today, "%F", &local) > 0 && day > today;
}

} // namespace

void requireFilter(const Args& args)
{
    for (const auto& criterion : kCriteria) {
        if (Arguments::isPresent(args, criterion.name))
            return;
    }
    throw ToolError::missingArg("at least one filter: " + std::string(kSentence));
}

std::string bytesOfMegabytes(const std::string& megabytes)
{
    constexpr double kBytes = 1048576;
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (megabytes.find_first_not_of("0123456789.eE+-") != std::string::npos)
        return megabytes;
    const char* first = megabytes.data() + (megabytes.starts_with('+') && !megabytes.starts_with("+-") ? 1 : 0);
    const char* last = megabytes.data() + megabytes.size();
    double number = 0;
    const auto [end, failure] = std::from_chars(first, last, number);
    if (failure != std::errc() || end != last || std::abs(number * kBytes) >= kLimit)
        return megabytes;
    return std::to_string(static_cast<std::int64_t>(number * kBytes));
}

std::vector<std::string> argv(const Args& args, std::string_view accountFallback, std::string_view mailboxFallback)
{
    std::vector<std::string> items{
        Arguments::optional(args, "account", accountFallback), Arguments::optional(args, "mailbox", mailboxFallback)};
    for (const auto& criterion : kCriteria) {
        const std::string value = Arguments::optional(args, criterion.name);
        const bool isSize = criterion.name == "minSize" || criterion.name == "maxSize";
        items.push_back(isSize ? bytesOfMegabytes(value) : value);
    }
    return items;
}

std::vector<Remark> remarks(const Args& args)
{
    std::vector<Remark> all;
    if (liesAhead(args, "before"))
        all.push_back(Remark::withoutEffect("before", "before lies ahead, so it leaves no message out"));
    if (liesAhead(args, "after"))
        all.push_back({"after", "after lies ahead, so no message matches"});
    if (Arguments::isPresent(args, "before") && Arguments::isPresent(args, "olderThan"))
        all.push_back(Remark::withoutEffect("before", "before has no effect beside olderThan"));
    return all;
}

std::vector<Argument> arguments(std::vector<Argument> first, std::vector<Argument> last)
{
    first.insert(first.end(), kCriteria.begin(), kCriteria.end());
    first.insert(first.end(), last.begin(), last.end());
    return first;
}

} // namespace mervo::MailCriteria
