#include "platform/desk/notebook/NoteTree.h"

#include "platform/ascii.h"
#include "platform/desk/notebook/NoteError.h"
#include "platform/unicode.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fmt/format.h>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 64; // folders within each other
constexpr std::size_t kMostFolders = 20'000;

struct Closer {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, Closer>;

/// Calls `see` with the open folder and every visible entry. False with errno when the folder cannot be opened.
template <typename See>
bool eachEntry(const fs::path& folder, const See& see)
{
    const OpenFolder open(::opendir(folder.c_str()));
    if (!open)
        return false;
    while (const dirent* entry = ::readdir(open.get())) {
        if (entry->d_name[0] != '.')
            see(::dirfd(open.get()), *entry);
    }
    return true;
}

[[noreturn]] void failToRead(const fs::path& folder)
{
    throw NoteError(
        fmt::format("The folder of notes {} cannot be read: {}.", onOneLine(folder.native()), std::strerror(errno)));
}

struct Entries {
    std::vector<std::string> folders, links; ///< links: to folders
    bool hasNotes = false, isEmpty = true;
};

Entries entriesOf(const fs::path& folder)
{
    Entries found;
    eachEntry(folder, [&](int in, const dirent& entry) {
        found.isEmpty = false;
        const bool isUnclear = entry.d_type == DT_UNKNOWN || entry.d_type == DT_LNK;
        struct stat status { };
        if (isUnclear && ::fstatat(in, entry.d_name, &status, 0) != 0)
            return;
        if (entry.d_type == DT_DIR || (isUnclear && S_ISDIR(status.st_mode))) {
            (entry.d_type == DT_LNK ? found.links : found.folders).emplace_back(entry.d_name);
        } else if (entry.d_type == DT_REG || (isUnclear && S_ISREG(status.st_mode))) {
            found.hasNotes = found.hasNotes || noteKind(entry.d_name).has_value();
        }
    });
    return found;
}

/// A folder with those in it that are shown.
struct Node {
    fs::path path;
    bool holdsNotes = false; // itself
    bool isEmpty = false;
    std::vector<Node> children = {};

    bool isShown() const { return holdsNotes || isEmpty || !children.empty(); }
    std::string name() const { return onOneLine(path.filename().native()); }
};

/// Whether `path` is `folder` or lies below it.
bool isBelow(const fs::path& path, const fs::path& folder)
{
    const auto end = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first;
    return end == folder.end();
}

class Scan {
public:
    explicit Scan(const fs::path& root)
    {
        std::error_code error;
        root_ = fs::canonical(root, error);
        if (error)
            root_ = root;
    }

    Node node(const fs::path& folder, int depth)
    {
        Entries entries = entriesOf(folder);
        Node node{.path = folder, .holdsNotes = entries.hasNotes, .isEmpty = entries.isEmpty};
        if (depth == kDeepest || (depth > 0 && isTrashName(node.name())))
            return node;
        for (const std::string& name : entries.folders)
            add(node, folder / name, depth);
        std::ranges::sort(entries.links); // of several that lead to one place, always the same is followed
        for (const std::string& name : entries.links) {
            if (leadsElsewhere(folder / name))
                add(node, folder / name, depth);
        }
        std::ranges::sort(node.children, {}, [](const Node& child) {
            std::string name = child.name();
            return std::pair(platform::foldCase(name), std::move(name));
        });
        return node;
    }

private:
    void add(Node& node, const fs::path& path, int depth)
    {
        if (++folders_ > kMostFolders)
            return;
        Node child = this->node(path, depth + 1);
        if (child.isShown())
            node.children.push_back(std::move(child));
    }

    /// What lies in the root is seen under its own name, and what holds the root would show it again.
    bool leadsElsewhere(const fs::path& link)
    {
        std::error_code error;
        const fs::path target = fs::canonical(link, error);
        if (error || isBelow(target, root_) || isBelow(root_, target))
            return false;
        const auto isAround = [&](const fs::path& seen) { return isBelow(target, seen) || isBelow(seen, target); };
        if (std::ranges::any_of(followed_, isAround))
            return false;
        followed_.push_back(target);
        return true;
    }

    fs::path root_;
    std::vector<fs::path> followed_;
    std::size_t folders_ = 0;
};

void addFolder(NoteAccount& account, const Node& node, const fs::path& parent, const fs::path& trash)
{
    const std::string name = node.name();
    account.folders.push_back(
        {.path = node.path, .name = name, .parent = parent, .trash = trash, .isTrash = isTrashName(name)});
    for (const Node& child : node.children)
        addFolder(account, child, node.path, trash);
}

bool isNamed(const NoteFolder& folder, std::string_view name)
{
    return platform::foldCase(folder.name) == platform::foldCase(name);
}

/// The default folder: the root where notes lie in it, else the one that is called so.
void setDefault(NoteAccount& account, const fs::path& top, const fs::path& root)
{
    const auto isDefault = [&](const NoteFolder& folder) {
        return folder.parent.empty() && (folder.path == root || isNamed(folder, kDefaultFolder));
    };
    const auto found = std::ranges::find_if(account.folders, isDefault);
    account.newFolder = found == account.folders.end() ? top / kDefaultFolder : found->path;
}

bool isAccount(const Node& node)
{
    return !node.holdsNotes && !node.children.empty() && !isTrashName(node.name());
}

Node readRoot(const fs::path& root)
{
    errno = 0;
    if (!eachEntry(root, [](int, const dirent&) {}) && errno != ENOENT)
        failToRead(root);
    return Scan(root).node(root, 0);
}

} // namespace

std::optional<NoteKind> noteKind(std::string_view fileName) noexcept
{
    constexpr std::array<std::pair<std::string_view, NoteKind>, 3> kKinds{
        {{".html", NoteKind::html}, {".md", NoteKind::markdown}, {".txt", NoteKind::text}}};
    for (const auto& [suffix, kind] : kKinds) {
        if (fileName.size() > suffix.size() && !fileName.starts_with('.')
            && platform::ascii::equalsIgnoringCase(fileName.substr(fileName.size() - suffix.size()), suffix))
            return kind;
    }
    return std::nullopt;
}

bool isTrashName(std::string_view folderName)
{
    static const std::set<std::string> names = [] {
        std::set<std::string> folded;
        for (const char* name : {kTrashName, "Supprimées récemment", "Suppressions récentes",
                 "Eliminadas recientemente", "Zuletzt gelöscht", "Eliminati di recente", "Eliminate di recente",
                 "Onlangs verwijderd", "Recentemente eliminadas", "Apagados recentemente"})
            folded.insert(platform::foldCase(name));
        return folded;
    }();
    return names.contains(platform::foldCase(folderName));
}

std::vector<NoteAccount> noteAccounts(const fs::path& root)
{
    const Node tree = readRoot(root);
    std::vector<NoteAccount> accounts{{.name = kLocalAccount}};
    if (tree.holdsNotes)
        addFolder(accounts[0], {.path = root, .holdsNotes = true}, {}, root / kTrashName);
    for (const Node& node : tree.children) {
        if (!isAccount(node)) {
            addFolder(accounts[0], node, {}, root / kTrashName);
            continue;
        }
        const bool isLocal = node.name() == kLocalAccount;
        NoteAccount& account = isLocal ? accounts[0] : accounts.emplace_back(NoteAccount{.name = node.name()});
        for (const Node& folder : node.children)
            addFolder(account, folder, {}, node.path / kTrashName);
        if (!isLocal)
            setDefault(account, node.path, root);
    }
    setDefault(accounts[0], root, root);
    if (accounts[0].folders.empty() && accounts.size() > 1) {
        accounts.erase(accounts.begin());
    } else if (accounts[0].folders.empty()) {
        accounts[0].folders.push_back(
            {.path = accounts[0].newFolder, .name = kDefaultFolder, .trash = root / kTrashName});
    }
    return accounts;
}

std::vector<NoteFile> notesIn(const fs::path& folder)
{
    std::vector<NoteFile> notes;
    const bool isRead = eachEntry(folder, [&](int in, const dirent& entry) {
        const auto kind = noteKind(entry.d_name);
        struct stat status { };
        if (!kind || entry.d_type == DT_DIR || ::fstatat(in, entry.d_name, &status, 0) != 0 || !S_ISREG(status.st_mode))
            return;
        const std::int64_t modified = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
        notes.push_back({entry.d_name, *kind, modified, platform::fileStamp(status)});
    });
    if (!isRead && errno != ENOENT)
        failToRead(folder);
    std::ranges::sort(notes, [](const NoteFile& one, const NoteFile& other) {
        return one.modified != other.modified ? one.modified > other.modified : one.name < other.name;
    });
    return notes;
}

std::size_t countNotes(const fs::path& folder)
{
    return notesIn(folder).size();
}

std::string onOneLine(std::string_view text)
{
    std::string line = platform::withValidUtf8(text);
    std::ranges::replace_if(
        line, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return line;
}

} // namespace mervo::desk
