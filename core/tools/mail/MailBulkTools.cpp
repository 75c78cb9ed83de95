#include "core/tools/mail/MailTools.h"

#include "core/foundation/Text.h"
#include "core/tools/Arguments.h"
#include "core/tools/MissingBridge.h"
#include "core/tools/mail/MailCount.h"
#include "core/tools/mail/MailCriteria.h"
#include "core/tools/mail/MailSelector.h"

#include <array>

namespace mervo::Tools {

using namespace std::string_literals;

namespace {

Invocation buildBulk(const Args& args)
{
    MailCriteria::requireFilter(args);
    MailSelector::requireMailbox(args);
    return {};
}

Invocation buildMove(const Args& args)
{
    Arguments::required(args, "dest");
    return buildBulk(args);
}

Invocation buildArchive(const Args& args)
{
    Arguments::required(args, "account");
    MailCriteria::requireFilter(args);
    return {};
}

std::optional<std::string> previewMove(const Args& args)
{
    return MailCount::preview(args, " → " + Arguments::optional(args, "dest", "?"));
}

/// The colour's word when it is one that a flag can have, with a blank before it; else nothing.
std::string knownColour(const Args& args)
{
    constexpr std::array<std::string_view, 8> kColours{
        "red", "orange", "yellow", "green", "blue", "purple", "gray", "grey"};
    const std::string wanted = Arguments::optional(args, "color");
    for (const auto colour : kColours)
        if (Text::equalsIgnoringCase(wanted, colour))
            return " " + std::string(colour);
    return {};
}

std::optional<std::string> previewFlag(const Args& args)
{
    return MailCount::preview(args, (Arguments::isOn(args, "flag") ? " → flag" : " → unflag") + knownColour(args));
}

std::optional<std::string> previewJunk(const Args& args)
{
    return MailCount::preview(args, Arguments::isOn(args, "junk") ? " → junk" : " → not junk");
}

} // namespace

const Tool& mailDelete()
{
    static const Tool tool = withoutBridge("Mail",
        {
            .id = "mail.delete",
            .summary = "Move messages to Trash by criteria (account, mailbox, ≥1 of: "s + MailCriteria::kSentence
                + "). Approval.",
            .effect = Effect::destructive,
            .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox}),
            .build = buildBulk,
            .preview = [](const Args& args) { return MailCount::preview(args, ""); },
        });
    return tool;
}

const Tool& mailMove()
{
    static const Tool tool = withoutBridge("Mail",
        {
            .id = "mail.move",
            .summary = "Move matching messages to another folder (account, mailbox, dest, ≥1 of: "s
                + MailCriteria::kSentence + "). Reversible; Approval.",
            .effect = Effect::destructive,
            .arguments = MailCriteria::arguments(
                {MailSelector::kAccount, MailSelector::kMailbox, {"dest", true, "mailbox of the same account"}}),
            .build = buildMove,
            .preview = previewMove,
        });
    return tool;
}

const Tool& mailArchive()
{
    static const Tool tool = withoutBridge("Mail",
        {
            .id = "mail.archive",
            .summary = "Archive matching messages out of a mailbox (account, [mailbox=INBOX], ≥1 of: "s
                + MailCriteria::kSentence
                + "). Gmail removes \\Inbox over IMAP (transparent); other accounts move to \"Archive\". Approval.",
            .effect = Effect::destructive,
            .arguments =
                MailCriteria::arguments({MailSelector::kAccount, {"mailbox", false, "name of the mailbox (INBOX)"}}),
            .build = buildArchive,
        });
    return tool;
}

const Tool& mailFlag()
{
    static const Tool tool = withoutBridge("Mail",
        {
            .id = "mail.flag",
            .summary = "Flag (or unflag) matching messages (account, mailbox, ≥1 of: "s + MailCriteria::kSentence
                + ", [flag=true|false], [color=red|orange|yellow|green|blue|purple|gray]). Reversible; Approval.",
            .effect = Effect::destructive,
            .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox},
                {{"flag", false, "false takes the flag away (true)"},
                    {"color", false, "red, orange, yellow, green, blue, purple or gray"}}),
            .build = buildBulk,
            .preview = previewFlag,
        });
    return tool;
}

const Tool& mailJunk()
{
    static const Tool tool = withoutBridge("Mail",
        {
            .id = "mail.junk",
            .summary = "Mark (or unmark) matching messages as junk/spam (account, mailbox, ≥1 of: "s
                + MailCriteria::kSentence + ", [junk=true|false]). Reversible; Approval.",
            .effect = Effect::destructive,
            .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox},
                {{"junk", false, "false takes the mark away (true)"}}),
            .build = buildBulk,
            .preview = previewJunk,
        });
    return tool;
}

} // namespace mervo::Tools
