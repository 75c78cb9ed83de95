#include "core/tools/mail/MailTools.h"

#include "core/tools/Arguments.h"
#include "core/tools/mail/MailBody.h"
#include "core/tools/mail/MailCriteria.h"
#include "core/tools/mail/MailScripts.h"
#include "core/tools/mail/MailSelector.h"

#include <array>

namespace mervo::Tools {

using namespace std::string_literals;

using MailSelector::requireMailbox;

namespace {

Invocation buildAccounts(const Args&)
{
    return {MailScripts::accounts(), {}};
}

Invocation buildHeaders(const Args& args)
{
    requireMailbox(args);
    return {MailScripts::headers(),
        {Arguments::required(args, "account"), Arguments::required(args, "mailbox"),
            Arguments::optional(args, "limit", "0")}};
}

/// A criteria script with one more item behind the thirteen.
Invocation withLimit(
    const std::string& script, std::vector<std::string> items, const Args& args, std::string_view limit)
{
    items.push_back(Arguments::optional(args, "limit", limit));
    return {script, std::move(items)};
}

Invocation buildAudit(const Args& args)
{
    requireMailbox(args);
    return withLimit(MailScripts::audit(), MailCriteria::argv(args), args, "0");
}

Invocation buildSearch(const Args& args)
{
    MailCriteria::requireFilter(args);
    return withLimit(MailScripts::search(), MailCriteria::argv(args, "all", "all"), args, "50");
}

Invocation buildMessageId(const Args& args)
{
    MailCriteria::requireFilter(args);
    requireMailbox(args);
    return {MailScripts::messageId(), MailCriteria::argv(args)};
}

Invocation buildBody(const Args& args)
{
    return {MailScripts::body(), MailSelector::argv(args)};
}

Invocation buildOpen(const Args& args)
{
    return {MailScripts::open(), MailSelector::argv(args)};
}

} // namespace

const Tool& mailAccounts()
{
    static const Tool tool{
        .id = "mail.accounts",
        .summary = "List every Mail.app account and its mailboxes. Read-only - CALL THIS FIRST to learn the exact "
                   "account=/mailbox= names the other mail tools need (don't guess them).",
        .effect = Effect::read,
        .arguments = {},
        .build = buildAccounts,
    };
    return tool;
}

const Tool& mailHeaders()
{
    static const Tool tool{
        .id = "mail.headers",
        .summary = "List date|from|subject of a mailbox (account, mailbox, [limit=0 = ALL - pass a limit to avoid "
                   "dumping a huge mailbox]). Read-only.",
        .effect = Effect::read,
        .arguments = {MailSelector::kAccount, MailSelector::kMailbox,
            optional("limit", "at most so many; 0 means all (0)", Formats::scriptLimit(0))},
        .build = buildHeaders,
    };
    return tool;
}

const Tool& mailAudit()
{
    static const Tool tool{
        .id = "mail.audit",
        .summary = "Per-message size+sender of a mailbox (account, mailbox, [limit=0 = ALL], criteria optional + any "
                   "of: "s
            + MailCriteria::kSentence + "). Read-only - space audit / delete-move dry-run.",
        .effect = Effect::read,
        .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox,
            optional("limit", "at most so many; 0 means all (0)", Formats::scriptLimit(0))}),
        .build = buildAudit,
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

const Tool& mailSearch()
{
    static const Tool tool{
        .id = "mail.search",
        .summary = "Search mail WITHOUT naming each box: account=all|<name> (default all), mailbox=all|<name> (default "
                   "all), + ≥1 of: "s
            + MailCriteria::kSentence
            + ", [limit=50]. Read-only. One line per hit: account/mailbox || date || size || from || subject.",
        .effect = Effect::read,
        .arguments = MailCriteria::arguments({optional("account", "name of an account, or all (all)"),
                                                 optional("mailbox", "name of a mailbox, or all (all)")},
            {optional("limit", "at most so many; 0 means all (50)", Formats::scriptLimit(50))}),
        .build = buildSearch,
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

const Tool& mailBody()
{
    static const Tool tool{
        .id = "mail.body",
        .summary =
            "Read the cleaned body text of the newest matching message (account, mailbox, subject= exact OR "
            "subjectContains, [from]). On a recurring subject use exact subject= to pin one message. Read-only - "
            "for drafting replies.",
        .effect = Effect::read,
        .arguments = MailSelector::arguments(),
        .build = buildBody,
        .transform = MailBody::clean,
        .omissions = MailBody::omissions,
    };
    return tool;
}

const Tool& mailOpen()
{
    static const Tool tool{
        .id = "mail.open",
        .summary = "Open the newest matching message in Mail.app and bring it to the front (account, mailbox, "
                   "subject= exact OR subjectContains, [from]). On a recurring subject use exact subject= to pin "
                   "one message. Read-only - only displays the message (e.g. to view attachments a text body can't "
                   "show). Use after mail.search to surface a message for the human.",
        .effect = Effect::read,
        .arguments = MailSelector::arguments(),
        .build = buildOpen,
    };
    return tool;
}

const Tool& mailMessageId()
{
    static const Tool tool{
        .id = "mail.messageId",
        .summary = "Print the bare RFC Message-ID(s) of matching messages, one per line (account, mailbox, + ≥1 of: "s
            + MailCriteria::kSentence
            + "). Read-only. Wrap an id as url=\"message://%3C<id>%3E\" to link a calendar event "
              "(cal.add/cal.update) back to the source mail.",
        .effect = Effect::read,
        .arguments = MailCriteria::arguments({MailSelector::kAccount, MailSelector::kMailbox}),
        .build = buildMessageId,
        .remarks = MailCriteria::remarks,
    };
    return tool;
}

} // namespace mervo::Tools

namespace mervo::MailReadTools {

std::span<const Tool* const> all()
{
    static const std::array tools{&Tools::mailAccounts(), &Tools::mailHeaders(), &Tools::mailAudit(),
        &Tools::mailSearch(), &Tools::mailBody(), &Tools::mailOpen(), &Tools::mailMessageId()};
    return tools;
}

} // namespace mervo::MailReadTools
