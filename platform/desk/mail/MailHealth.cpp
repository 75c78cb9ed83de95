#include "platform/desk/mail/MailHealth.h"

#include "platform/desk/health/Findings.h"
#include "platform/desk/mail/MailFolders.h"
#include "platform/desk/mail/MailSettings.h"
#include "platform/desk/mail/MailStore.h"
#include "platform/desk/mail/Maildir.h"
#include "platform/desk/mail/SpecialMailbox.h"
#include "platform/desk/settings/Places.h"

#include <algorithm>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

std::string counted(std::size_t count, std::string_view one, std::string_view many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

struct MailCount {
    std::size_t mailboxes = 0, messages = 0;
    std::vector<std::string> unreadable; // mailboxes, by the sentence that says why
    std::vector<std::string> damaged; // message files
};

void countMailbox(const MailFolder& folder, WhenMissing whenMissing, MailCount& count)
{
    try {
        maildirStamp(folder.path, whenMissing);
        for (const MaildirEntry& entry : listMaildir(folder.path)) {
            ++count.messages;
            const fs::path file = messagePath(folder.path, entry);
            struct stat status { };
            if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0
                || access(file.c_str(), R_OK) != 0)
                count.damaged.push_back(file.string());
        }
        ++count.mailboxes;
    } catch (const MailError& error) {
        count.unreadable.emplace_back(error.what());
    }
}

bool isFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(path, error);
}

const char* layoutName(MailLayout layout)
{
    return layout == MailLayout::nested ? "nested" : "maildir++";
}

/// The Maildirs below an account's root that its layout makes nothing of, and how many of them the other one would.
struct Unseen {
    std::vector<fs::path> maildirs;
    std::size_t messages = 0, byOther = 0;
    MailLayout other = MailLayout::nested;
};

Unseen unseenBy(MailAccountSettings account, const std::vector<MailFolder>& folders)
{
    const auto isIn = [](const std::vector<MailFolder>& list, const fs::path& maildir) {
        return std::any_of(list.begin(), list.end(), [&](const MailFolder& folder) { return folder.path == maildir; });
    };
    Unseen unseen;
    unseen.other = account.layout == MailLayout::nested ? MailLayout::maildirPlusPlus : MailLayout::nested;
    account.layout = unseen.other;
    const std::vector<MailFolder> others = listMailFolders(account);
    for (const fs::path& maildir : maildirsBelow(account.root)) {
        if (isIn(folders, maildir))
            continue;
        unseen.maildirs.push_back(maildir);
        unseen.byOther += isIn(others, maildir) ? 1 : 0;
        MailCount count;
        countMailbox({"", maildir}, WhenMissing::isEmpty, count);
        unseen.messages += count.messages;
    }
    return unseen;
}

/// What to do about Maildirs that the layout does not see; empty when most of them are seen.
std::string layoutRemedy(const MailAccountSettings& account, std::size_t seen, const Unseen& unseen)
{
    if (unseen.byOther > seen) {
        return fmt::format("Set layout = \"{}\" for the account \"{}\" in {}.", layoutName(unseen.other), account.name,
            configurationFile().string());
    }
    if (seen == 0 && !unseen.maildirs.empty()) {
        return fmt::format(
            "Correct \"path\" of the account \"{}\" in {}, or let the program that fetches its mail keep "
            "mailboxes as plain folders (mbsync: SubFolders Verbatim).",
            account.name, configurationFile().string());
    }
    return "";
}

std::string unseenWords(const MailAccountSettings& account, const Unseen& unseen)
{
    if (unseen.maildirs.empty())
        return "";
    return fmt::format("; layout = \"{}\" does not see {} with {}, such as {}", layoutName(account.layout),
        counted(unseen.maildirs.size(), "mailbox", "mailboxes"), counted(unseen.messages, "message", "messages"),
        unseen.maildirs.front().string());
}

std::string draftsWords(const MailAccountSettings& account, const std::vector<MailFolder>& folders)
{
    const std::string drafts = specialMailbox(account, SpecialMailbox::drafts);
    const bool isThere =
        std::any_of(folders.begin(), folders.end(), [&](const MailFolder& folder) { return folder.name == drafts; });
    return fmt::format("drafts go to \"{}\"{}", drafts, isThere ? "" : ", which is made when it is first needed");
}

void examineAccount(const MailAccountSettings& account, std::vector<Finding>& findings)
{
    const std::string id = "desk.mail." + account.name;
    const std::string label = fmt::format("Mail account \"{}\"", account.name);
    if (!account.local && !isFolder(account.root)) {
        findings.push_back(makeFinding(id, label, fmt::format("its folder {} is not there", account.root.string()),
            fmt::format("Synchronise the account into {}, or correct \"path\" in {}.", account.root.string(),
                configurationFile().string())));
        return;
    }
    const std::vector<MailFolder> folders = listMailFolders(account);
    const auto isRoot = [&](const MailFolder& folder) { return folder.path == account.root; };
    MailCount count;
    for (const MailFolder& folder : folders)
        countMailbox(folder, isRoot(folder) || account.local ? WhenMissing::isEmpty : WhenMissing::fails, count);
    const Unseen unseen = unseenBy(account, folders);
    // The root is the inbox under both layouts.
    const auto seen = folders.size() - static_cast<std::size_t>(std::count_if(folders.begin(), folders.end(), isRoot));
    std::string remedy = layoutRemedy(account, seen, unseen);
    if (!count.unreadable.empty())
        remedy = "Make the folders named here readable for this user.";
    findings.push_back(makeFinding(id, label,
        fmt::format("{}: {}, {}{}; {}{}{}", account.root.string(), counted(count.mailboxes, "mailbox", "mailboxes"),
            counted(count.messages, "message", "messages"), unseenWords(account, unseen), draftsWords(account, folders),
            count.unreadable.empty() ? "" : ". ", fmt::join(count.unreadable, " ")),
        remedy));
    if (!count.damaged.empty()) {
        findings.push_back(makeFinding(id + ".damaged", label + ": damaged messages",
            fmt::format("{} empty or cannot be read, such as {}", counted(count.damaged.size(), "file is", "files are"),
                count.damaged.front()),
            "Fetch these messages again, or remove the files."));
    }
}

} // namespace

std::vector<Finding> examineMailSettings(const Configuration& configuration)
{
    std::vector<Finding> findings;
    for (const MailAccountSettings& account : mailAccounts(configuration)) {
        examineAccount(account, findings);
        findings.push_back(
            commandFinding("desk.sendmail." + account.name, fmt::format("Sending from \"{}\"", account.name),
                account.sendmail, "sendmail", "no sendmail command: only the desk's own addresses can be reached"));
    }
    return findings;
}

std::vector<Finding> examineMailData()
{
    const std::string id = "desk.mail-index", label = "Mail index";
    const fs::path file = MailStore::indexFile(cacheFolder());
    std::error_code error;
    const auto size = fs::file_size(file, error);
    if (error)
        return {makeFinding(id, label, "none yet: it is made when mail is first read")};
    const std::string state = askDatabase(file, "PRAGMA quick_check(1)");
    const std::string detail = fmt::format("{} ({} bytes)", file.string(), size);
    if (state == "ok")
        return {makeFinding(id, label, detail)};
    return {makeFinding(id, label, detail + ": " + state,
        "Nothing is lost: it is built anew when mail is next read, and the file may be deleted.")};
}

} // namespace mervo::desk
