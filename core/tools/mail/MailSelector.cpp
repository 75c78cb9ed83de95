#include "core/tools/mail/MailSelector.h"

#include "core/tools/Arguments.h"

namespace mervo::MailSelector {

std::vector<Argument> arguments(std::vector<Argument> last)
{
    std::vector<Argument> all{kAccount, kMailbox, optional("subject", "the whole subject"),
        optional("subjectContains", "text that the subject contains", Formats::needle),
        optional("from", "text that the sender contains", Formats::needle)};
    all.insert(all.end(), last.begin(), last.end());
    return all;
}

void requireMailbox(const Args& args)
{
    Arguments::required(args, "account");
    Arguments::required(args, "mailbox");
}

void require(const Args& args)
{
    Arguments::requireOneOf(args, {"subject", "subjectContains"}, "subject or subjectContains");
    requireMailbox(args);
}

std::vector<std::string> argv(const Args& args)
{
    require(args);
    std::vector<std::string> items;
    for (const auto* key : {"account", "mailbox", "subject", "subjectContains", "from"})
        items.push_back(Arguments::optional(args, key));
    return items;
}

} // namespace mervo::MailSelector
