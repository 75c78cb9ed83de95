#include "platform/desk/mail/MailSettings.h"

#include "platform/desk/settings/Places.h"
#include "platform/folders.h"
#include "platform/unicode.h"

#include <fmt/format.h>
#include <pwd.h>
#include <set>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace mervo::desk {
namespace {

bool looksLikeAddress(std::string_view text)
{
    const std::size_t at = text.rfind('@');
    return at != std::string_view::npos && at > 0 && at + 1 < text.size()
        && text.find_first_of(" ,;<>()[]\"\\") == std::string_view::npos && text.find('@') == at;
}

MailLayout readLayout(const Table& table)
{
    const std::string word = table.text("layout");
    if (word.empty() || word == "maildir++")
        return MailLayout::maildirPlusPlus;
    if (word == "nested")
        return MailLayout::nested;
    table.fail("layout", fmt::format("\"layout\" must be \"maildir++\" or \"nested\", not \"{}\".", word));
}

std::string readMailboxName(const Table& table, const char* key)
{
    std::string name = table.text(key);
    if (name.starts_with('/') || name.ends_with('/') || name.find("//") != std::string::npos)
        table.fail(key, fmt::format("\"{}\" has an empty part between its \"/\".", key));
    return name;
}

MailAccountSettings readAccount(const Table& table)
{
    table.refuseUnknownKeys(
        {"name", "email", "path", "layout", "server", "sendmail", "drafts", "sent", "trash", "junk"},
        "of a mail account");
    for (const char* key : {"name", "email", "path"}) {
        if (!table.contains(key))
            table.fail(fmt::format("this mail account has no \"{}\".", key));
    }
    MailAccountSettings account;
    account.name = table.text("name");
    if (account.name.find('/') != std::string::npos)
        table.fail("name", "\"name\" holds a \"/\", which an account's name must not.");
    account.addresses = table.texts("email");
    if (account.addresses.empty())
        table.fail("email", "\"email\" needs at least one address.");
    for (const std::string& address : account.addresses) {
        if (!looksLikeAddress(address))
            table.fail("email", fmt::format("\"email\" holds \"{}\", which is no address.", address));
    }
    account.root = platform::expandTilde(table.text("path"));
    if (!account.root.is_absolute())
        table.fail("path", "\"path\" must start with \"/\" or \"~/\".");
    account.layout = readLayout(table);
    account.server = table.text("server");
    account.sendmail = table.texts("sendmail");
    account.drafts = readMailboxName(table, "drafts");
    account.sent = readMailboxName(table, "sent");
    account.trash = readMailboxName(table, "trash");
    account.junk = readMailboxName(table, "junk");
    return account;
}

std::vector<MailAccountSettings> readAccounts(const Table& mail)
{
    mail.refuseUnknownKeys({"account"}, "of \"mail\"");
    std::vector<MailAccountSettings> accounts;
    std::set<std::string> names;
    mail.eachTable("account", "[[mail.account]]", [&](const Table& table) {
        MailAccountSettings account = readAccount(table);
        if (!names.insert(platform::foldCase(account.name)).second)
            table.fail("name", fmt::format("\"name\": there are two mail accounts named \"{}\".", account.name));
        accounts.push_back(std::move(account));
    });
    return accounts;
}

MailAccountSettings localAccount()
{
    const passwd* entry = getpwuid(getuid());
    MailAccountSettings account;
    account.name = "Local";
    account.addresses = {fmt::format("{}@localhost", entry != nullptr ? entry->pw_name : "user")};
    account.root = dataFolder() / "mail" / "Local";
    account.local = true;
    return account;
}

} // namespace

void checkMailSection(const Table& mail)
{
    readAccounts(mail);
}

std::vector<MailAccountSettings> mailAccounts(const Configuration& configuration)
{
    std::vector<MailAccountSettings> accounts;
    if (const auto mail = configuration.section(kMailSection))
        accounts = readAccounts(*mail);
    if (accounts.empty())
        accounts.push_back(localAccount());
    return accounts;
}

} // namespace mervo::desk
