#include "platform/desk/vdir/Vdir.h"

#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <set>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace ascii = platform::ascii;

constexpr int kDeepest = 16;
constexpr std::size_t kLongestTitle = 4096; // bytes
constexpr std::int64_t kNanoseconds = 1'000'000'000;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

ItemStamp stampOf(const struct stat& status)
{
    return {status.st_ino, status.st_size, std::int64_t{status.st_mtim.tv_sec} * kNanoseconds + status.st_mtim.tv_nsec};
}

std::string trimmedLine(std::string text)
{
    text.resize(std::min(text.find_first_of("\r\n\0", 0, 3), text.size()));
    const std::size_t start = text.find_first_not_of(" \t");
    const std::size_t end = text.find_last_not_of(" \t");
    return start == std::string::npos ? std::string() : text.substr(start, end - start + 1);
}

std::string readLine(const std::filesystem::path& file)
{
    return platform::withValidUtf8(trimmedLine(platform::readFile(file, kLongestTitle).value_or("")));
}

/// What a folder names, and what the system says of it.
struct Entry {
    std::string name;
    bool isItem = false;
    mode_t mode = 0;
    int error = 0; ///< of the look; 0: none
    ItemStamp stamp = {};
};

void lookAt(int folder, std::span<Entry> entries)
{
    for (Entry& entry : entries) {
        struct stat status { };
        if (::fstatat(folder, entry.name.c_str(), &status, 0) != 0) {
            entry.error = errno;
            continue;
        }
        entry.mode = status.st_mode;
        entry.stamp = stampOf(status);
    }
}

/// The looks are most of the work on a folder that has not changed: a large one is shared between two threads.
void lookAtAll(int folder, std::span<Entry> entries)
{
    constexpr std::size_t kWorthAThread = 2000;
    if (entries.size() < kWorthAThread)
        return lookAt(folder, entries);
    const std::size_t half = entries.size() / 2;
    std::thread other(lookAt, folder, entries.first(half));
    lookAt(folder, entries.subspan(half));
    other.join();
}

class Lister {
public:
    Lister(std::filesystem::path root, const std::string& extension)
        : root_(std::move(root))
        , extension_(extension)
    {
    }

    VdirListing list()
    {
        visit(root_, 0);
        std::ranges::sort(listing_.collections, {}, &VdirCollection::id);
        return std::move(listing_);
    }

private:
    struct Contents {
        std::vector<VdirItem> items;
        std::vector<std::string> folders;
    };

    void visit(const std::filesystem::path& path, int depth)
    {
        const Folder folder(::opendir(path.c_str()));
        struct stat status { };
        if (!folder || ::fstat(::dirfd(folder.get()), &status) != 0) {
            const std::string why = std::generic_category().message(errno);
            const bool isAbsent = errno == ENOENT && !itemStamp(path); // no link either
            if (depth == 0 && !isAbsent)
                listing_.fault = why;
            if (depth > 0)
                skip(path, why);
            return;
        }
        if (!seen_.emplace(status.st_dev, status.st_ino).second)
            return;
        Contents contents = read(folder.get(), path);
        for (const std::string& name : contents.folders) {
            if (depth + 1 < kDeepest)
                visit(path / name, depth + 1);
        }
        if (!contents.items.empty() || (contents.folders.empty() && depth > 0))
            add(path, std::move(contents));
    }

    Contents read(DIR* folder, const std::filesystem::path& path)
    {
        std::vector<Entry> entries;
        while (const dirent* entry = ::readdir(folder)) {
            const std::string_view name = entry->d_name;
            if (name.starts_with('.'))
                continue;
            const bool isItem = name.size() > extension_.size()
                && ascii::equalsIgnoringCase(name.substr(name.size() - extension_.size()), extension_);
            if (isItem || entry->d_type == DT_DIR || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN)
                entries.push_back({std::string(name), isItem});
        }
        std::ranges::sort(entries, {}, &Entry::name);
        lookAtAll(::dirfd(folder), entries);
        Contents contents;
        contents.items.reserve(entries.size());
        for (Entry& entry : entries)
            take(path, entry, contents);
        return contents;
    }

    void take(const std::filesystem::path& path, Entry& entry, Contents& contents)
    {
        if (entry.error != 0) {
            if (entry.isItem && entry.error != ENOENT)
                skip(path / entry.name, std::generic_category().message(entry.error));
        } else if (entry.isItem && S_ISREG(entry.mode)) {
            contents.items.push_back({std::move(entry.name), entry.stamp});
        } else if (entry.isItem) {
            skip(path / entry.name, "no regular file");
        } else if (S_ISDIR(entry.mode)) {
            contents.folders.push_back(std::move(entry.name));
        }
    }

    void add(const std::filesystem::path& path, Contents contents)
    {
        VdirCollection made{.folder = path,
            .id = path == root_ ? "." : path.string().substr(root_.string().size() + 1),
            .title = readLine(path / "displayname"),
            .color = readColor(readLine(path / "color")),
            .isWritable = ::access(path.c_str(), W_OK | X_OK) == 0,
            .hasFolders = !contents.folders.empty(),
            .items = std::move(contents.items)};
        if (made.title.empty())
            made.title = platform::withValidUtf8(path.filename().string());
        listing_.collections.push_back(std::move(made));
    }

    void skip(const std::filesystem::path& file, std::string why)
    {
        listing_.skipped.push_back({file, std::move(why)});
    }

    std::filesystem::path root_;
    const std::string& extension_;
    VdirListing listing_;
    std::set<std::pair<dev_t, ino_t>> seen_;
};

} // namespace

VdirListing listVdir(const std::filesystem::path& root, const std::string& extension)
{
    std::string path = root.lexically_normal().string();
    if (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return Lister(path, extension).list();
}

std::string readColor(std::string text)
{
    text = ascii::lowered(text);
    const bool isColor = text.starts_with('#') && (text.size() == 7 || text.size() == 9)
        && text.find_first_not_of("0123456789abcdef", 1) == std::string::npos;
    return isColor ? text.substr(0, 7) : std::string();
}

} // namespace mervo::desk
