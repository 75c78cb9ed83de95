#include "core/feedback/AskTools.h"

#include "core/feedback/AskService.h"
#include "core/feedback/channels/AskChannels.h"
#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"

#include <array>
#include <fmt/format.h>

namespace mervo::AskTools {

namespace {

constexpr const char* kSource = "conversation";

constexpr Argument kAutomation = optional("automation", "name of the loop");
constexpr Argument kExpires = optional("expiresHours", "gone after so many hours",
    Formats::whole(1, Formats::withoutEffect("it never expires"), {"it is gone at once"}));

std::string channelIds()
{
    std::vector<std::string> ids;
    for (const AskChannel* channel : AskChannels::all())
        ids.emplace_back(channel->id);
    return Text::join(ids, "|");
}

std::optional<std::string> given(const Args& args, std::string_view key)
{
    return Arguments::isPresent(args, key) ? std::optional(Arguments::optional(args, key)) : std::nullopt;
}

std::optional<std::int64_t> expiresHours(const Args& args)
{
    return Arguments::wholeNumber(Arguments::optional(args, "expiresHours"));
}

std::string harvested(std::int64_t count)
{
    return fmt::format("✅ {} reply(ies) harvested", count);
}

std::string runAsk(const Args& args)
{
    return AskService::shared().ask(Arguments::required(args, "text"), given(args, "channel"),
        given(args, "automation"), expiresHours(args), kSource);
}

/// Whoever approves it runs it in another process.
Args withAutomation(Args args)
{
    const auto automation = AskService::runningAutomation();
    if (automation && !Arguments::isPresent(args, "automation"))
        args.insert_or_assign("automation", *automation);
    return args;
}

std::string runAnswer(const Args& args)
{
    const std::string& id = Arguments::required(args, "id");
    return AskService::shared().answer(id, Arguments::required(args, "text"))
        ? fmt::format("✅ answer recorded for #{}", id)
        : fmt::format("⚠️ #{} unknown or already answered", id);
}

std::string runTell(const Args& args)
{
    return AskService::shared().directive(
        Arguments::required(args, "text"), given(args, "automation"), expiresHours(args), kSource);
}

std::string runRemove(const Args& args)
{
    const std::string& id = Arguments::required(args, "id");
    AskService::shared().remove(id);
    return id + " removed";
}

} // namespace

std::span<const Tool* const> all()
{
    static const std::array tools{&ask(), &answer(), &answers(), &harvest(), &tell(), &remove()};
    return tools;
}

const Tool& ask()
{
    static const Tool tool = {
        .id = "ask",
        .summary =
            "Ask the OWNER a question and capture the answer (fire-and-forget). Args: text, [channel=" + channelIds()
            + "), [automation=<loop name>] (defaults to the firing loop), [expiresHours=N]. The question is "
              "pushed via the chosen channel; the owner's reply is harvested back and injected into this "
              "loop's NEXT run - do NOT block waiting. effect=create (owner-only, low-stakes).",
        .effect = Effect::create,
        .arguments = {required("text", "the question"),
            optional(
                "channel", "how it is asked: mail or cockpit", Formats::words("mail|cockpit", {"it goes by mail"})),
            kAutomation, kExpires},
        .build = Arguments::requiring({"text"}),
        .nativeRun = runAsk,
        .whileItWaits = withAutomation,
    };
    return tool;
}

const Tool& answer()
{
    static const Tool tool = {
        .id = "ask.answer",
        .summary = "Answer an open question yourself (id, text) - the human channel when you're already in /mervo "
                   "or the cockpit, instead of replying by mail. Writes the answer so the asking loop sees it next "
                   "run.",
        .effect = Effect::create,
        .arguments = {required("id", "id of the question"), required("text", "the answer")},
        .build = Arguments::requiring({"id", "text"}),
        .nativeRun = runAnswer,
    };
    return tool;
}

const Tool& answers()
{
    static const Tool tool = {
        .id = "ask.answers",
        .summary = "Show the operator feedback feed: pending questions, answered questions, and standing directives "
                   "([automation=<loop name>] to scope). Read-only inspection - does NOT consume; the loop's prompt "
                   "is auto-injected with what it needs.",
        .effect = Effect::read,
        .arguments = {optional("automation", "only what concerns this loop")},
        .build = Arguments::acceptAll(),
        .nativeRun = [](const Args& args) { return AskService::shared().summary(given(args, "automation")); },
    };
    return tool;
}

const Tool& harvest()
{
    static const Tool tool = {
        .id = "ask.harvest",
        .summary = "Poll the async channels (mail) for replies to open questions and record them. Idempotent. "
                   "Schedule as a `tool` automation (auto.add tool=ask.harvest every=5) so answers are ingested "
                   "without you in the loop. No args. (iMessage channel temporarily disabled - see AskChannel.)",
        .effect = Effect::create,
        .arguments = {},
        .build = Arguments::acceptAll(),
        .nativeRun = [](const Args&) { return harvested(AskService::shared().harvestAll()); },
        .auditAutoRun = [](const std::string& output) { return output != harvested(0); },
    };
    return tool;
}

const Tool& tell()
{
    static const Tool tool = {
        .id = "feedback.tell",
        .summary = "Give your loops a standing DIRECTIVE (human → automations): free-form guidance re-injected "
                   "every run until it expires. Args: text, [automation=<loop name>] (omit = all loops), "
                   "[expiresHours=N]. e.g. text=\"stop replying to recruiters\".",
        .effect = Effect::create,
        .arguments = {required("text", "the directive"), kAutomation, kExpires},
        .build = Arguments::requiring({"text"}),
        .nativeRun = runTell,
    };
    return tool;
}

const Tool& remove()
{
    static const Tool tool = {
        .id = "feedback.rm",
        .summary = "Drop a feedback item by id (a stale directive, an obsolete question). Housekeeping; the "
                   "harvester also auto-prunes expired/old items. Args: id.",
        .effect = Effect::create,
        .arguments = {required("id", "id of the item")},
        .build = Arguments::requiring({"id"}),
        .nativeRun = runRemove,
    };
    return tool;
}

} // namespace mervo::AskTools
