#include "platform/desk/mail/Maildir.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <memory>
#include <sys/random.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <unordered_set>
#include <utility>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failReading(const fs::path& folder, int error)
{
    throw MailError(fmt::format("The mail folder {} cannot be read: {}.", folder.string(), std::strerror(error)));
}

[[noreturn]] void failWriting(const fs::path& path, int error)
{
    throw MailError(fmt::format("{} cannot be written: {}.", path.string(), std::strerror(error)));
}

/// False when the folder is missing.
bool examine(const fs::path& folder, std::int64_t& changed, std::uint64_t& inode)
{
    struct stat status { };
    if (stat(folder.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return false;
        failReading(folder, errno);
    }
    if (!S_ISDIR(status.st_mode))
        failReading(folder, ENOTDIR);
    changed = static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    inode = status.st_ino;
    return true;
}

bool isThere(const fs::path& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0;
}

/// Adds the message files of one part of a Maildir, "new" or "cur".
void listPart(const fs::path& maildir, std::string_view part, std::vector<MaildirEntry>& entries)
{
    const fs::path folder = maildir / part;
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder.c_str()), closedir);
    if (!stream) {
        if (errno == ENOENT || (errno == ENOTDIR && !isThere(folder)))
            return;
        failReading(folder, errno);
    }
    while (true) {
        errno = 0;
        const dirent* entry = readdir(stream.get());
        if (entry == nullptr) {
            if (errno != 0)
                failReading(folder, errno);
            return;
        }
        const bool maybeFile = entry->d_type == DT_REG || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
        if (entry->d_name[0] != '.' && maybeFile)
            entries.push_back({.fileName = entry->d_name, .isNew = part == "new"});
    }
}

/// cur was read after new, so of a message that stands in both, cur has the newer truth.
void dropMessagesSeenTwice(std::vector<MaildirEntry>& entries, std::size_t inNew)
{
    if (inNew == 0 || inNew == entries.size())
        return;
    std::unordered_set<std::string_view> bases;
    for (std::size_t i = 0; i < inNew; ++i)
        bases.insert(splitMaildirName(entries[i].fileName).base);
    std::unordered_set<std::string> twice; // not views: entries move while some are erased
    for (std::size_t i = inNew; i < entries.size(); ++i) {
        const std::string_view base = splitMaildirName(entries[i].fileName).base;
        if (bases.contains(base))
            twice.emplace(base);
    }
    if (!twice.empty()) {
        std::erase_if(entries, [&twice](const MaildirEntry& entry) {
            return entry.isNew && twice.contains(std::string(splitMaildirName(entry.fileName).base));
        });
    }
}

void makeFolder(const fs::path& folder)
{
    std::error_code error;
    fs::create_directories(folder.parent_path(), error);
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        failWriting(folder, errno);
}

/// Without the characters that mean something in a file's name.
std::string hostName()
{
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    for (char* c = host; *c != 0; ++c) {
        if (*c == '/' || *c == ':' || *c == ',')
            *c = '_';
    }
    return host[0] != 0 ? host : "localhost";
}

std::uint32_t randomNumber()
{
    std::uint32_t random = 0;
    if (getrandom(&random, sizeof random, 0) < 0)
        random = static_cast<std::uint32_t>(getpid());
    return random;
}

void syncFolder(const fs::path& folder)
{
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

} // namespace

MaildirName splitMaildirName(std::string_view fileName) noexcept
{
    const std::size_t mark = fileName.rfind(":2,");
    if (mark == std::string_view::npos)
        return {fileName, {}};
    return {fileName.substr(0, mark), fileName.substr(mark + 3)};
}

MaildirStamp maildirStamp(const fs::path& maildir, WhenMissing whenMissing)
{
    MaildirStamp stamp;
    const bool hasNew = examine(maildir / "new", stamp.newChanged, stamp.newInode);
    const bool hasCur = examine(maildir / "cur", stamp.curChanged, stamp.curInode);
    if (!hasNew && !hasCur && whenMissing == WhenMissing::fails)
        failReading(maildir, ENOENT);
    return stamp;
}

std::vector<MaildirEntry> listMaildir(const fs::path& maildir)
{
    std::vector<MaildirEntry> entries;
    listPart(maildir, "new", entries);
    const std::size_t inNew = entries.size();
    listPart(maildir, "cur", entries);
    dropMessagesSeenTwice(entries, inNew);
    return entries;
}

fs::path messagePath(const fs::path& maildir, const MaildirEntry& entry)
{
    return maildir / (entry.isNew ? "new" : "cur") / entry.fileName;
}

fs::path findMessage(const fs::path& maildir, std::string_view base)
{
    for (const MaildirEntry& entry : listMaildir(maildir)) {
        if (splitMaildirName(entry.fileName).base == base)
            return messagePath(maildir, entry);
    }
    return {};
}

std::string newMaildirBase()
{
    static const std::uint32_t random = randomNumber();
    static const std::string host = hostName();
    static std::atomic<unsigned> count = 0;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return fmt::format("{}.M{:06}P{}Q{}R{:08x}.{}", now.tv_sec, now.tv_nsec / 1000, getpid(), ++count, random, host);
}

void createMaildir(const fs::path& maildir, MaildirKind kind)
{
    makeFolder(maildir);
    for (const char* part : {"tmp", "new", "cur"})
        makeFolder(maildir / part);
    if (kind == MaildirKind::plain)
        return;
    const fs::path marker = maildir / "maildirfolder";
    const int descriptor = open(marker.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        failWriting(marker, errno);
    close(descriptor);
}

MaildirDelivery::MaildirDelivery(const fs::path& maildir, const std::function<void(int descriptor)>& write)
    : maildir_(maildir)
    , file_(maildir / "tmp" / newMaildirBase())
{
    const int descriptor = open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0)
        failWriting(file_, errno);
    try {
        write(descriptor);
        if (fsync(descriptor) != 0)
            failWriting(file_, errno);
    } catch (...) {
        close(descriptor);
        unlink(file_.c_str());
        throw;
    }
    if (close(descriptor) != 0) {
        const int error = errno;
        unlink(file_.c_str());
        failWriting(file_, error);
    }
}

MaildirDelivery::MaildirDelivery(MaildirDelivery&& other) noexcept
    : maildir_(std::move(other.maildir_))
    , file_(std::exchange(other.file_, {}))
{
}

MaildirDelivery::~MaildirDelivery()
{
    if (!file_.empty())
        unlink(file_.c_str());
}

fs::path MaildirDelivery::commit(std::string_view flags)
{
    return renamed(maildir_ / "cur" / fmt::format("{}:2,{}", file_.filename().native(), flags));
}

fs::path MaildirDelivery::commitAsNew()
{
    return renamed(maildir_ / "new" / file_.filename());
}

fs::path MaildirDelivery::renamed(const fs::path& destination)
{
    if (rename(file_.c_str(), destination.c_str()) != 0)
        failWriting(destination, errno);
    file_.clear();
    syncFolder(destination.parent_path());
    return destination;
}

fs::path deliverToMaildir(
    const fs::path& maildir, std::string_view flags, const std::function<void(int descriptor)>& write)
{
    return MaildirDelivery(maildir, write).commit(flags);
}

} // namespace mervo::desk
