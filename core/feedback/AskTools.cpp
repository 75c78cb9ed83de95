#include "core/feedback/AskTools.h"

#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/MissingBridge.h"

#include <array>

namespace mervo::AskTools {

namespace {

constexpr Argument kAutomation = optional("automation", "name of the loop");
/// What a harvest says that found no reply.
constexpr std::string_view kNothingHarvested = "✅ 0 reply(ies) harvested";

constexpr Argument kExpires = optional("expiresHours", "gone after so many hours",
    Formats::whole(1, Formats::withoutEffect("it never expires"), {"it is gone at once"}));

std::string channelIds()
{
    return Text::join({"mail", "cockpit"}, "|");
}

} // namespace

std::span<const Tool* const> all()
{
    static const std::array tools{&ask(), &answer(), &answers(), &harvest(), &tell(), &remove()};
    return tools;
}

const Tool& ask()
{
    static const Tool tool = withoutBridge("Feedback",
        {
            .id = "ask",
            .summary = "Ask the OWNER a question and capture the answer (fire-and-forget). Args: text, [channel="
                + channelIds()
                + "), [automation=<loop name>] (defaults to the firing loop), [expiresHours=N]. The question is "
                  "pushed via the chosen channel; the owner's reply is harvested back and injected into this "
                  "loop's NEXT run - do NOT block waiting. effect=create (owner-only, low-stakes).",
            .effect = Effect::create,
            .arguments = {required("text", "the question"),
                optional(
                    "channel", "how it is asked: mail or cockpit", Formats::words("mail|cockpit", {"it goes by mail"})),
                kAutomation, kExpires},
            .build = Arguments::requiring({"text"}),
        });
    return tool;
}

const Tool& answer()
{
    static const Tool tool = withoutBridge("Feedback",
        {
            .id = "ask.answer",
            .summary = "Answer an open question yourself (id, text) - the human channel when you're already in /mervo "
                       "or the cockpit, instead of replying by mail. Writes the answer so the asking loop sees it next "
                       "run.",
            .effect = Effect::create,
            .arguments = {required("id", "id of the question"), required("text", "the answer")},
            .build = Arguments::requiring({"id", "text"}),
        });
    return tool;
}

const Tool& answers()
{
    static const Tool tool = withoutBridge("Feedback",
        {
            .id = "ask.answers",
            .summary =
                "Show the operator feedback feed: pending questions, answered questions, and standing directives "
                "([automation=<loop name>] to scope). Read-only inspection - does NOT consume; the loop's prompt "
                "is auto-injected with what it needs.",
            .effect = Effect::read,
            .arguments = {optional("automation", "only what concerns this loop")},
            .build = Arguments::acceptAll(),
        });
    return tool;
}

const Tool& harvest()
{
    static const Tool tool = withoutBridge("Feedback",
        {
            .id = "ask.harvest",
            .summary = "Poll the async channels (mail) for replies to open questions and record them. Idempotent. "
                       "Schedule as a `tool` automation (auto.add tool=ask.harvest every=5) so answers are ingested "
                       "without you in the loop. No args. (iMessage channel temporarily disabled - see AskChannel.)",
            .effect = Effect::create,
            .arguments = {},
            .build = Arguments::acceptAll(),
            .auditAutoRun = [](const std::string& output) { return output != kNothingHarvested; },
        });
    return tool;
}

const Tool& tell()
{
    static const Tool tool = withoutBridge("Feedback",
        {
            .id = "feedback.tell",
            .summary = "Give your loops a standing DIRECTIVE (human → automations): free-form guidance re-injected "
                       "every run until it expires. Args: text, [automation=<loop name>] (omit = all loops), "
                       "[expiresHours=N]. e.g. text=\"stop replying to recruiters\".",
            .effect = Effect::create,
            .arguments = {required("text", "the directive"), kAutomation, kExpires},
            .build = Arguments::requiring({"text"}),
        });
    return tool;
}

const Tool& remove()
{
    static const Tool tool = withoutBridge("Feedback",
        {
            .id = "feedback.rm",
            .summary = "Drop a feedback item by id (a stale directive, an obsolete question). Housekeeping; the "
                       "harvester also auto-prunes expired/old items. Args: id.",
            .effect = Effect::create,
            .arguments = {required("id", "id of the item")},
            .build = Arguments::requiring({"id"}),
        });
    return tool;
}

} // namespace mervo::AskTools
