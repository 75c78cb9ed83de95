#include "core/tools/calendar/CalendarTools.h"

#include "core/tools/Arguments.h"
#include "core/tools/calendar/CalendarScripts.h"
#include "core/tools/calendar/CalendarService.h"
#include "core/tools/calendar/UriSyntax.h"

#include <array>
#include <cstdint>
#include <ctime>
#include <limits>

namespace mervo::Tools {

namespace {

constexpr double kAnySign = -std::numeric_limits<double>::infinity();
constexpr Format kDays = Formats::whole(kAnySign, Formats::withoutEffect("it counts as not given"));
constexpr Format kScriptNumber{
    .kind = Format::Kind::whole, .malformed = {"the tool rounds it or fails"}, .emptyStands = true};
constexpr Format kHour{.kind = Format::Kind::whole,
    .least = 0,
    .most = 23,
    .malformed = {"the tool rounds it or fails"},
    .outside = {"the event lies on another day"}};
constexpr Format kMinutes{.kind = Format::Kind::whole,
    .least = 1,
    .malformed = {"the tool rounds it or fails"},
    .outside = {"the event has no length or the tool fails"},
    .emptyStands = true};

constexpr std::int64_t kDaysToFind = 7;
constexpr std::int64_t kDaysToMatch = 14;

CalendarService calendars()
{
    return {platform::openEventStore, std::time(nullptr)};
}

std::int64_t daysOf(const Args& args, std::int64_t fallback)
{
    return Arguments::wholeNumber(Arguments::optional(args, "days")).value_or(fallback);
}

std::string runFind(const Args& args)
{
    return calendars().find(daysOf(args, kDaysToFind), Arguments::optional(args, "contains"));
}

std::string runUpdate(const Args& args)
{
    return calendars().update(Arguments::required(args, "contains"), daysOf(args, kDaysToMatch),
        {.title = Arguments::optional(args, "title"),
            .location = Arguments::optional(args, "location"),
            .notes = Arguments::optional(args, "notes"),
            .url = Arguments::optional(args, "url")});
}

std::string runDelete(const Args& args)
{
    return calendars().remove(Arguments::required(args, "contains"), daysOf(args, kDaysToMatch));
}

/// Of the two tools that set an url.
std::vector<Remark> remarksOnUrl(const Args& args)
{
    if (!Arguments::isPresent(args, "url") || isUriReference(Arguments::required(args, "url")))
        return {};
    return {Remark::withoutEffect("url", "url is no URL (RFC 3986), so it is left out")};
}

Invocation buildAdd(const Args& args)
{
    const std::string url = Arguments::optional(args, "url");
    return {CalendarScripts::add(),
        {Arguments::required(args, "calendar"), Arguments::required(args, "summary"),
            Arguments::optional(args, "days", "0"), Arguments::optional(args, "hour"),
            Arguments::optional(args, "duration", "60"), Arguments::optional(args, "location"),
            Arguments::optional(args, "notes"), isUriReference(url) ? url : ""}};
}

} // namespace

const Tool& calFind()
{
    static const Tool tool{
        .id = "cal.find",
        .summary = "List events across ALL calendars incl. iCloud ([days=7] = next 7 days; NEGATIVE days looks into "
                   "the PAST, e.g. days=-7 = last 7 days, [contains=text]). Read-only - native EventKit "
                   "(AppleScript can't read iCloud).",
        .effect = Effect::read,
        .arguments = {optional("days", "the next so many days (7); negative looks back", kDays),
            optional("contains", "text that the title contains", Formats::needle)},
        .build = Arguments::acceptAll(),
        .nativeRun = runFind,
    };
    return tool;
}

const Tool& calUpdate()
{
    static const Tool tool{
        .id = "cal.update",
        .summary = "Update the SINGLE event matching contains= within the next N days ([days=14]) - set [title], "
                   "[location], [notes], [url]. url is a free-form link back to a source (mail: "
                   "\"message://%3C<Message-ID>%3E\", or any https://, file://...). Native EventKit; refuses on 0 "
                   "or >1 match.",
        .effect = Effect::create,
        .arguments = {required("contains", "text that the title of exactly one event contains", Formats::needle),
            optional("days", "within the next so many days (14)", kDays), optional("title", "new title"),
            optional("location", "new location"), optional("notes", "new notes"),
            optional("url", "a link back to a source (message://, https://, file://)")},
        .build = Arguments::requiring({"contains"}),
        .nativeRun = runUpdate,
        .remarks = remarksOnUrl,
    };
    return tool;
}

const Tool& calAdd()
{
    static const Tool tool{
        .id = "cal.add",
        .summary = "Create an event (calendar, summary, [days=0], [hour] (0-23; omit ⇒ keeps the current "
                   "time-of-day), [duration=60], [location], [notes], [url]). url is a free-form link back to a "
                   "source - when created from an email pass url=\"message://%3C<Message-ID>%3E\" to link the event "
                   "to the mail (also https://, file://...).",
        .effect = Effect::create,
        .arguments = {required("calendar", "name of the calendar"), required("summary", "title of the event"),
            optional("days", "so many days from today (0)", kScriptNumber),
            optional("hour", "0-23; without it the present time of day", kHour),
            optional("duration", "minutes (60)", kMinutes), optional("location", "where"), optional("notes", "notes"),
            optional("url", "a link back to a source (message://, https://, file://)")},
        .build = buildAdd,
        .remarks = remarksOnUrl,
    };
    return tool;
}

const Tool& calDelete()
{
    static const Tool tool{
        .id = "cal.delete",
        .summary = "Delete the SINGLE event matching contains= within the next N days ([days=14]). Native EventKit; "
                   "refuses on 0 or >1 match so a vague filter can't delete the wrong event. Irreversible -> "
                   "approval.",
        .effect = Effect::destructive,
        .arguments = {required("contains", "text that the title of exactly one event contains", Formats::needle),
            optional("days", "within the next so many days (14)", kDays)},
        .build = Arguments::requiring({"contains"}),
        .nativeRun = runDelete,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::CalendarTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::calFind(), &Tools::calUpdate(), &Tools::calAdd(), &Tools::calDelete()};
    return tools;
}

} // namespace mervo::CalendarTools
