#include "core/tools/mail/MailTools.h"

#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/mail/MailArchiveService.h"
#include "core/tools/mail/MailCount.h"
#include "core/tools/mail/MailCriteria.h"
#include "core/tools/mail/MailScripts.h"
#include "core/tools/mail/MailSelector.h"

#include <algorithm>
#include <array>
#include <vector>

namespace mervo::Tools {

using namespace std::string_literals;

namespace {

/// A criteria script with the tool's own items behind the thirteen.
Invocation bulk(const Args& args, const std::string& script, const std::vector<std::string>& own = {})
{
    MailCriteria::requireFilter(args);
    MailSelector::requireMailbox(args);
    Invocation invocation{script, MailCriteria::argv(args)};
    invocation.argv.insert(invocation.argv.end(), own.begin(), own.end());
    return invocation;
}

Invocation buildDelete(const Args& args)
{
    return bulk(args, MailScripts::remove());
}

Invocation buildMove(const Args& args)
{
    const std::string destination = Arguments::required(args, "dest");
    return bulk(args, MailScripts::move(), {destination});
}

Invocation buildArchive(const Args& args)
{
    Arguments::required(args, "account");
    MailCriteria::requireFilter(args);
    return {};
}

std::optional<std::string> previewArchive(const Args& args)
{
    Args narrowed = args;
    narrowed.try_emplace("mailbox", "INBOX");
    return MailCount::preview(
        narrowed, " → " + MailArchiveService::destinationLabel(Arguments::optional(args, "account")));
}

std::optional<std::string> previewMove(const Args& args)
{
    return MailCount::preview(args, " → " + Arguments::optional(args, "dest", "?"));
}

struct Colour {
    std::string_view word;
    char index;
};

/// The colour when it is one that a flag can have.
const Colour* knownColour(const Args& args)
{
    static constexpr std::array<Colour, 8> kColours{{{"red", '0'}, {"orange", '1'}, {"yellow", '2'}, {"green", '3'},
        {"blue", '4'}, {"purple", '5'}, {"gray", '6'}, {"grey", '6'}}};
    const std::string wanted = Arguments::optional(args, "color");
    const auto found = std::find_if(kColours.begin(), kColours.end(),
        [&](const Colour& colour) { return Text::equalsIgnoringCase(wanted, colour.word); });
    return found == kColours.end() ? nullptr : &*found;
}

constexpr Format kColour = Formats::words(
    "red|orange|yellow|green|blue|purple|gray|grey", Formats::withoutEffect("the flag's colour stays as it is"));

std::vector<Remark> remarksOnFlag(const Args& args)
{
    std::vector<Remark> all = MailCriteria::remarks(args);
    if (Arguments::isPresent(args, "color") && !Arguments::isOn(args, "flag"))
        all.push_back(Remark::withoutEffect("color", "color has no effect where flag is false"));
    return all;
}

std::string asDigit(bool isOn)
{
    return isOn ? "1" : "0";
}

Invocation buildFlag(const Args& args)
{
    const Colour* colour = knownColour(args);
    return bulk(args, MailScripts::flag(),
        {asDigit(Arguments::isOn(args, "flag")), colour == nullptr ? std::string() : std::string(1, colour->index)});
}

Invocation buildJunk(const Args& args)
{
    return bulk(args, MailScripts::junk(), {asDigit(Arguments::isOn(args, "junk"))});
}

std::optional<std::string> previewFlag(const Args& args)
{
    const Colour* colour = knownColour(args);
    std::string suffix = Arguments::isOn(args, "flag") ? " → flag" : " → unflag";
    return MailCount::preview(args, colour == nullptr ? suffix : suffix + " " + std::string(colour->word));
}

std::optional<std::string> previewJunk(const Args& args)
{
    return MailCount::preview(args, Arguments::isOn(args, "junk") ? " → junk" : " → not junk");
}

} // namespace

const Tool& mailDelete()
{
    static const Tool tool = {
        .id = "mail.delete",
        .summary =
            "Move messages to Trash by criteria (account, mailbox, ≥1 of: "s + MailCriteria::kSentence + "). Approval.",
        .effect = Effect::destructive,
        .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox}),
        .build = buildDelete,
        .preview = [](const Args& args) { return MailCount::preview(args, ""); },
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

const Tool& mailMove()
{
    static const Tool tool = {
        .id = "mail.move",
        .summary = "Move matching messages to another folder (account, mailbox, dest, ≥1 of: "s
            + MailCriteria::kSentence + "). Reversible; Approval.",
        .effect = Effect::destructive,
        .arguments = MailCriteria::arguments(
            {MailSelector::kAccount, MailSelector::kMailbox, required("dest", "mailbox of the same account")}),
        .build = buildMove,
        .preview = previewMove,
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

const Tool& mailArchive()
{
    static const Tool tool = {
        .id = "mail.archive",
        .summary = "Archive matching messages out of a mailbox (account, [mailbox=INBOX], ≥1 of: "s
            + MailCriteria::kSentence
            + "). Gmail removes \\Inbox over IMAP (transparent); other accounts move to \"Archive\". Approval.",
        .effect = Effect::destructive,
        .arguments = MailCriteria::arguments(
            {MailSelector::kAccount, optional("mailbox", "name of the mailbox (INBOX)", {.emptyStands = true})},
            {optional("dest", "mailbox of an account without IMAP (Archive)")}),
        .build = buildArchive,
        .nativeRun = MailArchiveService::archive,
        .preview = previewArchive,
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

const Tool& mailFlag()
{
    static const Tool tool = {
        .id = "mail.flag",
        .summary = "Flag (or unflag) matching messages (account, mailbox, ≥1 of: "s + MailCriteria::kSentence
            + ", [flag=true|false], [color=red|orange|yellow|green|blue|purple|gray]). Reversible; Approval.",
        .effect = Effect::destructive,
        .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox},
            {optional("flag", "false takes the flag away (true)", Formats::onUnlessFalse),
                optional("color", "red, orange, yellow, green, blue, purple or gray", kColour)}),
        .build = buildFlag,
        .preview = previewFlag,
        .remarks = remarksOnFlag,
    };
    return tool;
}

const Tool& mailJunk()
{
    static const Tool tool = {
        .id = "mail.junk",
        .summary = "Mark (or unmark) matching messages as junk/spam (account, mailbox, ≥1 of: "s
            + MailCriteria::kSentence + ", [junk=true|false]). Reversible; Approval.",
        .effect = Effect::destructive,
        .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox},
            {optional("junk", "false takes the mark away (true)", Formats::onUnlessFalse)}),
        .build = buildJunk,
        .preview = previewJunk,
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::MailBulkTools {

std::span<const Tool* const> all()
{
    static const std::array tools{
        &Tools::mailDelete(), &Tools::mailMove(), &Tools::mailArchive(), &Tools::mailFlag(), &Tools::mailJunk()};
    return tools;
}

} // namespace mervo::MailBulkTools
