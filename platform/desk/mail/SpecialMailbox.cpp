#include "platform/desk/mail/SpecialMailbox.h"

#include "platform/desk/mail/MailFolders.h"
#include "platform/unicode.h"

#include <array>
#include <string_view>
#include <vector>

namespace mervo::desk {
namespace {

struct UsualNames {
    const std::string MailAccountSettings::*configured;
    std::array<std::string_view, 4> names; // the first is the one that a new mailbox gets
};

UsualNames usualNames(SpecialMailbox which)
{
    switch (which) {
    case SpecialMailbox::inbox:
        break;
    case SpecialMailbox::drafts:
        return {&MailAccountSettings::drafts, {"Drafts", "Draft", "Brouillons", "[Gmail]/Drafts"}};
    case SpecialMailbox::sent:
        return {&MailAccountSettings::sent, {"Sent", "Sent Messages", "Sent Items", "[Gmail]/Sent Mail"}};
    case SpecialMailbox::trash:
        return {&MailAccountSettings::trash, {"Trash", "Deleted Messages", "Deleted Items", "[Gmail]/Trash"}};
    case SpecialMailbox::junk:
        return {&MailAccountSettings::junk, {"Junk", "Spam", "Junk E-mail", "[Gmail]/Spam"}};
    }
    return {nullptr, {"INBOX"}};
}

} // namespace

std::string specialMailbox(const MailAccountSettings& account, SpecialMailbox which)
{
    const UsualNames usual = usualNames(which);
    if (usual.configured == nullptr)
        return std::string(usual.names[0]);
    if (!(account.*usual.configured).empty())
        return account.*usual.configured;
    const std::vector<MailFolder> existing = listMailFolders(account);
    for (const std::string_view name : usual.names) {
        for (const MailFolder& folder : existing) {
            if (!name.empty() && platform::foldCase(folder.name) == platform::foldCase(name))
                return folder.name;
        }
    }
    return std::string(usual.names[0]);
}

} // namespace mervo::desk
