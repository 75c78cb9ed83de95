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
    std::string_view name;
    bool isItem = false;
    mode_t mode = 0;
    int error = 0; ///< of the look; 0: none
    ItemStamp stamp = {};
    platform::FileStamp status = {};
};

void lookAt(int folder, std::span<Entry> entries)
{
    for (Entry& entry : entries) {
        struct stat status { };
        if (::fstatat(folder, entry.name.data(), &status, 0) != 0) {
            entry.error = errno;
            continue;
        }
        entry.mode = status.st_mode;
        entry.stamp = stampOf(status);
        entry.status = platform::fileStamp(status);
    }
}

/// The looks are most of the work on a folder that has not changed: those at a large one are shared between threads.
void lookAtAll(int folder, std::span<Entry> entries)
{
    constexpr std::size_t kWorthAThread = 1000, kMostThreads = 8;
    const std::size_t threads = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostThreads);
    const std::size_t parts = std::clamp<std::size_t>(entries.size() / kWorthAThread, 1, threads);
    const auto part = [&](std::size_t i) {
        const std::size_t from = entries.size() * i / parts;
        return entries.subspan(from, entries.size() * (i + 1) / parts - from);
    };
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < parts; ++i) {
        try {
            others.emplace_back(lookAt, folder, part(i));
        } catch (const std::system_error&) { // no more threads
            lookAt(folder, part(i));
        }
    }
    lookAt(folder, part(0));
}

class Lister {
public:
    Lister(std::filesystem::path root, const std::string& extension, const RecallNames& recall)
        : root_(std::move(root))
        , extension_(extension)
        , recall_(recall)
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
        bool hasOthers = false; ///< what may become an item or a folder, or cease to be one
        std::optional<platform::FileStamp> stamp;
    };
    struct Names { // views of strings that end with NUL
        std::vector<std::string> own;
        std::vector<Entry> entries;
    };

    void visit(const std::filesystem::path& path, int depth)
    {
        const auto stamp = platform::fileStamp(path);
        const Folder folder(stamp ? ::opendir(path.c_str()) : nullptr);
        if (!folder) {
            const std::string why = std::generic_category().message(errno);
            const bool isAbsent = errno == ENOENT && !itemStamp(path); // no link either
            if (depth == 0 && !isAbsent)
                listing_.fault = why;
            if (depth > 0)
                skip(path, why);
            return;
        }
        if (!seen_.emplace(stamp->device, stamp->number).second)
            return;
        Contents contents = read(folder.get(), path, *stamp);
        for (const std::string& name : contents.folders) {
            if (depth + 1 < kDeepest)
                visit(path / name, depth + 1);
        }
        if (!contents.items.empty() || (contents.folders.empty() && depth > 0))
            add(path, std::move(contents));
    }

    Contents read(DIR* folder, const std::filesystem::path& path, const platform::FileStamp& stamp)
    {
        Names names = recalled(path, stamp);
        if (names.entries.empty())
            names = listed(folder);
        lookAtAll(::dirfd(folder), names.entries);
        Contents contents;
        contents.items.reserve(names.entries.size());
        for (const Entry& entry : names.entries)
            take(path, entry, contents);
        if (stamp.isSettled() && contents.folders.empty() && !contents.hasOthers)
            contents.stamp = stamp;
        return contents;
    }

    Names recalled(const std::filesystem::path& path, const platform::FileStamp& stamp) const
    {
        Names names;
        const auto known = recall_ ? recall_(path, stamp) : std::nullopt;
        if (!known)
            return names;
        names.entries.reserve(known->size());
        for (const std::string_view name : *known)
            names.entries.push_back({name, true});
        return names;
    }

    Names listed(DIR* folder) const
    {
        Names names;
        while (const dirent* entry = ::readdir(folder)) {
            const std::string_view name = entry->d_name;
            if (name.starts_with('.'))
                continue;
            if (isItem(name) || entry->d_type == DT_DIR || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN)
                names.own.emplace_back(name);
        }
        std::ranges::sort(names.own);
        names.entries.reserve(names.own.size());
        for (const std::string& name : names.own)
            names.entries.push_back({name, isItem(name)});
        return names;
    }

    bool isItem(std::string_view name) const
    {
        return name.size() > extension_.size()
            && ascii::equalsIgnoringCase(name.substr(name.size() - extension_.size()), extension_);
    }

    void take(const std::filesystem::path& path, const Entry& entry, Contents& contents)
    {
        if (entry.error != 0) {
            contents.hasOthers = true;
            if (entry.isItem && entry.error != ENOENT)
                skip(path / entry.name, std::generic_category().message(entry.error));
        } else if (entry.isItem && S_ISREG(entry.mode)) {
            contents.items.push_back({std::string(entry.name), entry.stamp, entry.status});
        } else if (entry.isItem) {
            contents.hasOthers = true;
            skip(path / entry.name, "no regular file");
        } else if (S_ISDIR(entry.mode)) {
            contents.folders.emplace_back(entry.name);
        } else {
            contents.hasOthers = true; // a link that may lead to a folder another time
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
            .items = std::move(contents.items),
            .stamp = contents.stamp};
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
    const RecallNames& recall_;
    VdirListing listing_;
    std::set<std::pair<dev_t, ino_t>> seen_;
};

} // namespace

VdirListing listVdir(const std::filesystem::path& root, const std::string& extension, const RecallNames& recall)
{
    std::string path = root.lexically_normal().string();
    if (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return Lister(path, extension, recall).list();
}

std::string readColor(std::string text)
{
    text = ascii::lowered(text);
    const bool isColor = text.starts_with('#') && (text.size() == 7 || text.size() == 9)
        && text.find_first_not_of("0123456789abcdef", 1) == std::string::npos;
    return isColor ? text.substr(0, 7) : std::string();
}

} // namespace mervo::desk
