#include "platform/desk/Health.h"

#include "platform/desk/mail/MailFolders.h"
#include "platform/desk/mail/Maildir.h"
#include "platform/desk/mail/SpecialMailbox.h"
#include "platform/desk/settings/Configuration.h"
#include "platform/desk/settings/Places.h"
#include "platform/folders.h"
#include "platform/programs.h"

#include <algorithm>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kIndexName = "mail-index.sqlite";

Finding configurationFinding(const Configuration& configuration)
{
    return {"desk.configuration", "Desk configuration", true,
        configuration.file.empty()
            ? fmt::format("none: the local account is used ({} is not there)", configurationFile().string())
            : configuration.file.string(),
        ""};
}

std::string counted(std::size_t count, std::string_view one, std::string_view many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

struct MailCount {
    std::size_t mailboxes = 0, messages = 0;
    std::vector<std::string> unreadable; // mailboxes, by the sentence that says why
    std::vector<std::string> damaged; // message files
};

void countMailbox(const MailFolder& folder, bool mayBeMissing, MailCount& count)
{
    try {
        maildirStamp(folder.path, mayBeMissing);
        for (const MaildirEntry& entry : listMaildir(folder.path)) {
            ++count.messages;
            const fs::path file = messagePath(folder.path, entry.fileName, entry.isNew);
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
        countMailbox({"", maildir}, true, count);
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
        findings.push_back({id, label, false, fmt::format("its folder {} is not there", account.root.string()),
            fmt::format("Synchronise the account into {}, or correct \"path\" in {}.", account.root.string(),
                configurationFile().string())});
        return;
    }
    const std::vector<MailFolder> folders = listMailFolders(account);
    MailCount count;
    for (const MailFolder& folder : folders)
        countMailbox(folder, account.local || folder.path == account.root, count);
    const Unseen unseen = unseenBy(account, folders);
    const auto seen = std::count_if( // the root is the inbox under both layouts
        folders.begin(), folders.end(), [&](const MailFolder& folder) { return folder.path != account.root; });
    std::string remedy = layoutRemedy(account, static_cast<std::size_t>(seen), unseen);
    if (!count.unreadable.empty())
        remedy = "Make the folders named here readable for this user.";
    findings.push_back({id, label, remedy.empty(),
        fmt::format("{}: {}, {}{}; {}{}{}", account.root.string(), counted(count.mailboxes, "mailbox", "mailboxes"),
            counted(count.messages, "message", "messages"), unseenWords(account, unseen), draftsWords(account, folders),
            count.unreadable.empty() ? "" : ". ", fmt::join(count.unreadable, " ")),
        remedy});
    if (!count.damaged.empty()) {
        findings.push_back({id + ".damaged", label + ": damaged messages", false,
            fmt::format("{} empty or cannot be read, such as {}", counted(count.damaged.size(), "file is", "files are"),
                count.damaged.front()),
            "Fetch these messages again, or remove the files."});
    }
}

void examineSending(const MailAccountSettings& account, std::vector<Finding>& findings)
{
    const std::string id = "desk.sendmail." + account.name;
    const std::string label = fmt::format("Sending from \"{}\"", account.name);
    if (account.sendmail.empty()) {
        findings.push_back({id, label, true, "no sendmail command: only the desk's own addresses can be reached", ""});
        return;
    }
    const bool found = !platform::findProgram(account.sendmail.front()).empty();
    findings.push_back({id, label, found,
        fmt::format(fmt::runtime(found ? "through {}" : "the program {} is not found"), account.sendmail.front()),
        found ? ""
              : fmt::format("Install {}, or correct \"sendmail\" in {}.", account.sendmail.front(),
                  configurationFile().string())});
}

/// The answer of the database's own check; "ok" when it is whole.
std::string checkDatabase(const fs::path& file, const char* sql)
{
    sqlite3* database = nullptr;
    std::string answer;
    if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        const auto keep = [](void* to, int columns, char** values, char**) {
            if (columns > 0 && values[0] != nullptr)
                *static_cast<std::string*>(to) = values[0];
            return 0;
        };
        sqlite3_busy_timeout(database, 2000);
        if (sqlite3_exec(database, sql, keep, &answer, nullptr) != SQLITE_OK)
            answer = sqlite3_errmsg(database);
    } else {
        answer = database == nullptr ? "no memory" : sqlite3_errmsg(database);
    }
    sqlite3_close_v2(database);
    return answer;
}

Finding indexFinding()
{
    const fs::path file = cacheFolder() / kIndexName;
    std::error_code error;
    const auto size = fs::file_size(file, error);
    if (error)
        return {"desk.mail-index", "Mail index", true, "none yet: it is made when mail is first read", ""};
    const std::string state = checkDatabase(file, "PRAGMA quick_check(1)");
    const bool ok = state == "ok";
    return {"desk.mail-index", "Mail index", ok,
        fmt::format("{} ({} bytes){}", file.string(), size, ok ? "" : ": " + state),
        ok ? "" : "Nothing is lost: it is built anew when mail is next read, and the file may be deleted."};
}

Finding messagesFinding()
{
    const fs::path file = platform::userHome() / "Library" / "Messages" / "chat.db";
    struct stat status { };
    if (stat(file.c_str(), &status) != 0) {
        return {"desk.messages", "Messages database", true,
            fmt::format("none at {}: there are no conversations yet", file.string()), ""};
    }
    const std::string state = checkDatabase(file, "SELECT count(*) FROM sqlite_master");
    const bool ok = !state.empty() && state.find_first_not_of("0123456789") == std::string::npos;
    return {"desk.messages", "Messages database", ok, ok ? file.string() : fmt::format("{}: {}", file.string(), state),
        ok ? "" : "Make the file readable for this user, or put a sound copy in its place."};
}

Finding messageSendingFinding(const Configuration& configuration)
{
    const std::string id = "desk.messages.send", label = "Sending messages";
    if (configuration.messagesSend.empty())
        return {id, label, true, "no command: messages cannot be sent (\"send\" in [messages] names one)", ""};
    const std::string& program = configuration.messagesSend.front();
    if (!platform::findProgram(program).empty())
        return {id, label, true, "through " + program, ""};
    return {id, label, false, fmt::format("the program {} is not found", program),
        fmt::format("Install {}, or correct \"send\" in {}.", program, configurationFile().string())};
}

} // namespace

std::vector<Finding> examineDesk()
{
    std::vector<Finding> findings;
    try {
        const Configuration configuration = loadConfiguration();
        findings.push_back(configurationFinding(configuration));
        for (const MailAccountSettings& account : configuration.mailAccounts) {
            examineAccount(account, findings);
            examineSending(account, findings);
        }
        findings.push_back(messageSendingFinding(configuration));
    } catch (const ConfigurationError& error) {
        findings.push_back({"desk.configuration", "Desk configuration", false, error.what(),
            "Correct the file; until then every tool that needs it fails."});
    }
    findings.push_back(indexFinding());
    findings.push_back(messagesFinding());
    return findings;
}

} // namespace mervo::desk
