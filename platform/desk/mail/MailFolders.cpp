#include "platform/desk/mail/MailFolders.h"

#include "platform/desk/mail/MailError.h"
#include "platform/desk/mail/MailboxName.h"
#include "platform/desk/mail/Maildir.h"
#include "platform/desk/settings/Places.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fmt/format.h>
#include <memory>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kInbox = "INBOX";
constexpr int kDeepestNesting = 32;

bool isThere(const fs::path& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

bool isFolder(const fs::path& path)
{
    struct stat status { };
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// A folder counts as a mailbox as soon as anything in it says so, whole or damaged.
bool looksLikeMaildir(const fs::path& path)
{
    return isThere(path / "cur") || isThere(path / "new") || isThere(path / "maildirfolder");
}

std::vector<std::string> entries(const fs::path& folder)
{
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), closedir);
    while (stream) {
        const dirent* entry = readdir(stream.get());
        if (entry == nullptr)
            break;
        const std::string_view name = entry->d_name;
        const bool maybeFolder = entry->d_type == DT_DIR || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
        if (maybeFolder && name != "." && name != "..")
            names.emplace_back(name);
    }
    return names;
}

std::string joinDecoded(std::string_view dotted)
{
    std::string name;
    while (true) {
        const std::size_t dot = dotted.find('.');
        name += decodeMailboxComponent(dotted.substr(0, dot));
        if (dot == std::string_view::npos)
            return name;
        name += '/';
        dotted.remove_prefix(dot + 1);
    }
}

void listPlusPlus(const fs::path& root, std::vector<MailFolder>& found)
{
    for (const std::string& entry : entries(root)) {
        if (entry.size() > 1 && entry[0] == '.' && isFolder(root / entry) && looksLikeMaildir(root / entry))
            found.push_back({joinDecoded(std::string_view(entry).substr(1)), root / entry});
    }
}

using FolderIdentity = std::pair<dev_t, ino_t>; // a link may lead back up the tree

void listNested(const fs::path& folder, const std::string& prefix, int depth, std::set<FolderIdentity>& seen,
    std::vector<MailFolder>& found)
{
    struct stat status { };
    if (depth > kDeepestNesting || stat(folder.c_str(), &status) != 0
        || !seen.insert({status.st_dev, status.st_ino}).second)
        return;
    for (const std::string& entry : entries(folder)) {
        if (entry[0] == '.' || entry == "cur" || entry == "new" || entry == "tmp" || !isFolder(folder / entry))
            continue;
        const std::string name = prefix + decodeMailboxComponent(entry);
        if (looksLikeMaildir(folder / entry))
            found.push_back({name, folder / entry});
        listNested(folder / entry, name + "/", depth + 1, seen, found);
    }
}

void collectMaildirs(const fs::path& folder, int depth, std::set<FolderIdentity>& seen, std::vector<fs::path>& found)
{
    struct stat status { };
    if (depth > kDeepestNesting || stat(folder.c_str(), &status) != 0
        || !seen.insert({status.st_dev, status.st_ino}).second)
        return;
    if (looksLikeMaildir(folder))
        found.push_back(folder);
    for (const std::string& entry : entries(folder)) {
        if (entry != "cur" && entry != "new" && entry != "tmp")
            collectMaildirs(folder / entry, depth + 1, seen, found);
    }
}

/// "/" sorts before every other character, so that a parent's children follow it at once.
bool byPath(const MailFolder& left, const MailFolder& right)
{
    return std::lexicographical_compare(
        left.name.begin(), left.name.end(), right.name.begin(), right.name.end(), [](char a, char b) {
            const auto rank = [](char c) { return c == '/' ? 0 : 1 + static_cast<unsigned char>(c); };
            return rank(a) < rank(b);
        });
}

} // namespace

std::vector<MailFolder> listMailFolders(const MailAccountSettings& account)
{
    std::vector<MailFolder> found;
    if (account.layout == MailLayout::maildirPlusPlus) {
        listPlusPlus(account.root, found);
    } else {
        std::set<FolderIdentity> seen;
        listNested(account.root, "", 0, seen, found);
    }
    std::sort(found.begin(), found.end(), byPath);
    auto inbox = std::find_if(found.begin(), found.end(), [](const MailFolder& f) { return f.name == kInbox; });
    if (inbox == found.end() || looksLikeMaildir(account.root)) {
        found.insert(found.begin(), MailFolder{std::string(kInbox), account.root});
    } else {
        std::rotate(found.begin(), inbox, inbox + 1);
    }
    return found;
}

void requireMailRoot(const MailAccountSettings& account)
{
    if (account.local)
        return;
    struct stat status { };
    const bool isThere = stat(account.root.c_str(), &status) == 0;
    if (isThere && S_ISDIR(status.st_mode))
        return;
    throw MailError(
        fmt::format("The folder {} of the mail account “{}” {}. Synchronise the account into it, or correct "
                    "\"path\" in {}.",
            account.root.string(), account.name,
            isThere               ? "is a file"
                : errno == ENOENT ? "is not there"
                                  : fmt::format("cannot be opened ({})", std::strerror(errno)),
            configurationFile().string()));
}

std::vector<fs::path> maildirsBelow(const fs::path& root)
{
    std::set<FolderIdentity> seen;
    std::vector<fs::path> found;
    collectMaildirs(root, 0, seen, found);
    return found;
}

fs::path mailFolderPath(const MailAccountSettings& account, const std::string& name)
{
    for (const MailFolder& folder : listMailFolders(account)) {
        if (folder.name == name)
            return folder.path;
    }
    std::string onDisk;
    std::string_view rest = name;
    while (true) {
        const std::size_t slash = rest.find('/');
        onDisk += encodeMailboxComponent(rest.substr(0, slash));
        if (slash == std::string_view::npos)
            break;
        onDisk += account.layout == MailLayout::maildirPlusPlus ? '.' : '/';
        rest.remove_prefix(slash + 1);
    }
    return account.root / (account.layout == MailLayout::maildirPlusPlus ? "." + onDisk : onDisk);
}

void createMailFolder(const MailAccountSettings& account, const fs::path& maildir)
{
    const bool isPlain = account.layout == MailLayout::nested || maildir == account.root;
    createMaildir(maildir, isPlain ? MaildirKind::plain : MaildirKind::plusPlusFolder);
}

} // namespace mervo::desk
