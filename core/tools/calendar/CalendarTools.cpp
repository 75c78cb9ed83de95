#include "core/tools/calendar/CalendarTools.h"

#include "core/tools/Arguments.h"
#include "core/tools/MissingBridge.h"

#include <array>
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
    .outside = {"the event does not end after its start"},
    .emptyStands = true};

} // namespace

const Tool& calFind()
{
    static const Tool tool = withoutBridge("Calendar",
        {
            .id = "cal.find",
            .summary =
                "List events across ALL calendars incl. iCloud ([days=7] = next 7 days; NEGATIVE days looks into "
                "the PAST, e.g. days=-7 = last 7 days, [contains=text]). Read-only - native EventKit "
                "(AppleScript can't read iCloud).",
            .effect = Effect::read,
            .arguments = {optional("days", "the next so many days (7); negative looks back", kDays),
                optional("contains", "text that the title contains", Formats::needle)},
            .build = Arguments::acceptAll(),
        });
    return tool;
}

const Tool& calUpdate()
{
    static const Tool tool = withoutBridge("Calendar",
        {
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
        });
    return tool;
}

const Tool& calAdd()
{
    static const Tool tool = withoutBridge("Calendar",
        {
            .id = "cal.add",
            .summary =
                "Create an event (calendar, summary, [days=0], [hour] (0-23; omit ⇒ keeps the current "
                "time-of-day), [duration=60], [location], [notes], [url]). url is a free-form link back to a "
                "source - when created from an email pass url=\"message://%3C<Message-ID>%3E\" to link the event "
                "to the mail (also https://, file://...).",
            .effect = Effect::create,
            .arguments = {required("calendar", "name of the calendar"), required("summary", "title of the event"),
                optional("days", "so many days from today (0)", kScriptNumber),
                optional("hour", "0-23; without it the present time of day", kHour),
                optional("duration", "minutes (60)", kMinutes), optional("location", "where"),
                optional("notes", "notes"), optional("url", "a link back to a source (message://, https://, file://)")},
            .build = Arguments::requiring({"calendar", "summary"}),
        });
    return tool;
}

const Tool& calDelete()
{
    static const Tool tool = withoutBridge("Calendar",
        {
            .id = "cal.delete",
            .summary =
                "Delete the SINGLE event matching contains= within the next N days ([days=14]). Native EventKit; "
                "refuses on 0 or >1 match so a vague filter can't delete the wrong event. Irreversible -> "
                "approval.",
            .effect = Effect::destructive,
            .arguments = {required("contains", "text that the title of exactly one event contains", Formats::needle),
                optional("days", "within the next so many days (14)", kDays)},
            .build = Arguments::requiring({"contains"}),
        });
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
