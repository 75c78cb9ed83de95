#include "platform/desk/mail/MessageFile.h"

#include "platform/desk/mail/MessageHead.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <future>
#include <sched.h>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace mervo::desk {
namespace {

constexpr std::size_t kFirstRead = 4 * 1024; // holds nearly every head

constexpr std::size_t kWorthAThread = 250; // messages
constexpr std::size_t kMostThreads = 4;

// A message may be a link, never a device or a pipe: opening one of those must not wait.
constexpr int kOpenFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

/// Appends up to `most` bytes; false on a read error.
bool readSome(int descriptor, char* to, std::size_t most, std::size_t& got)
{
    while (true) {
        const ssize_t count = ::read(descriptor, to, most);
        if (count < 0 && errno == EINTR)
            continue;
        got = count < 0 ? 0 : static_cast<std::size_t>(count);
        return count >= 0;
    }
}

} // namespace

HeadReader::HeadReader(const std::filesystem::path& maildir)
    : cur_(open((maildir / "cur").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    , new_(open((maildir / "new").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    , buffer_(kFirstRead, '\0')
{
}

/// Reads until the head's end is seen, the file ends, or the head is longer than any sender's.
MessageHead HeadReader::readHead(int descriptor, std::size_t fileSize)
{
    std::size_t filled = 0, got = 0;
    while (true) {
        const std::size_t wanted = std::min(buffer_.size(), fileSize);
        while (
            filled < wanted && readSome(descriptor, buffer_.data() + filled, buffer_.size() - filled, got) && got > 0)
            filled += got;
        MessageHead head = readMessageHead(std::string_view(buffer_.data(), filled));
        if (head.isWhole || filled < wanted || filled >= fileSize || filled >= kLongestHead)
            return head;
        buffer_.resize(buffer_.size() * 2);
    }
}

std::optional<MessageHeader> HeadReader::read(const MaildirEntry& entry, TextStore& texts)
{
    const int folder = entry.isNew ? new_.get() : cur_.get();
    const platform::Descriptor file(openat(folder, entry.fileName.c_str(), kOpenFlags));
    struct stat status { };
    if (file.get() < 0) {
        // A file that is there but may not be read is still a message with a size and a date.
        if (errno == ENOENT || fstatat(folder, entry.fileName.c_str(), &status, 0) != 0)
            return std::nullopt;
    } else if (fstat(file.get(), &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode))
        return std::nullopt;
    MessageHead head = file.get() < 0 ? MessageHead() : readHead(file.get(), static_cast<std::size_t>(status.st_size));
    MessageHeader header;
    header.received = static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    header.sent = head.sent.value_or(status.st_mtim.tv_sec);
    header.size = static_cast<std::uint64_t>(status.st_size);
    header.attachments = head.isSinglePartText ? 0 : kAttachmentsUnknown;
    header.flags = maildirFlags(splitMaildirName(entry.fileName).info).bits();
    header.isNew = entry.isNew;
    header.fileName = texts.keep(std::string_view(entry.fileName));
    header.subject = texts.keep(std::string_view(head.subject));
    header.sender = texts.keep(std::string_view(head.sender));
    header.messageId = texts.keep(std::string_view(head.messageId));
    header.to = texts.keep(std::string_view(head.to));
    return header;
}

namespace {

/// What one thread reads.
struct Share {
    std::vector<MessageHeader> headers;
    TextStore texts;
};

Share readShare(const std::filesystem::path& maildir, std::span<const MaildirEntry* const> entries)
{
    Share share;
    share.headers.reserve(entries.size());
    HeadReader reader(maildir);
    for (const MaildirEntry* entry : entries) {
        if (const auto header = reader.read(*entry, share.texts))
            share.headers.push_back(*header);
    }
    return share;
}

/// The same on a thread of its own; where the system gives no thread, when the result is asked for.
std::future<Share> readShareBeside(const std::filesystem::path& maildir, std::span<const MaildirEntry* const> entries)
{
    try {
        return std::async(std::launch::async, [&maildir, entries] {
            unshare(CLONE_FILES); // a descriptor table of its own: threads that open thousands of files share no lock
            return readShare(maildir, entries);
        });
    } catch (const std::system_error&) {
        return std::async(std::launch::deferred, [&maildir, entries] { return readShare(maildir, entries); });
    }
}

} // namespace

std::vector<MessageHeader> readHeads(
    const std::filesystem::path& maildir, const std::vector<const MaildirEntry*>& entries, TextStore& texts)
{
    const std::size_t cores = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostThreads);
    const std::size_t shares = std::clamp<std::size_t>(entries.size() / kWorthAThread, 1, cores);
    const std::span<const MaildirEntry* const> all(entries);
    std::vector<std::future<Share>> others;
    for (std::size_t i = 1; i < shares; ++i) {
        const std::size_t start = all.size() * i / shares, end = all.size() * (i + 1) / shares;
        others.push_back(readShareBeside(maildir, all.subspan(start, end - start)));
    }
    Share read = readShare(maildir, all.first(all.size() / shares));
    for (std::future<Share>& other : others) {
        Share share = other.get();
        read.headers.insert(read.headers.end(), share.headers.begin(), share.headers.end());
        read.texts.take(std::move(share.texts));
    }
    texts.take(std::move(read.texts));
    std::sort(read.headers.begin(), read.headers.end(), [](const MessageHeader& a, const MessageHeader& b) {
        return a.received != b.received ? a.received < b.received : a.fileName < b.fileName;
    });
    return std::move(read.headers);
}

std::string readMessageFile(const std::filesystem::path& path)
{
    const platform::Descriptor file(open(path.c_str(), kOpenFlags));
    struct stat status { };
    if (file.get() < 0 || fstat(file.get(), &status) != 0) {
        if (errno == ENOENT)
            throw MessageGone(fmt::format("The message {} is not there any more.", path.filename().string()));
        throw MailError(fmt::format("The message {} cannot be read: {}.", path.string(), std::strerror(errno)));
    }
    if (!S_ISREG(status.st_mode))
        throw MailError(fmt::format("The message {} is not a file.", path.string()));
    std::string bytes(static_cast<std::size_t>(std::max<off_t>(status.st_size, 0)), '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        std::size_t got = 0;
        if (!readSome(file.get(), bytes.data() + filled, bytes.size() - filled, got))
            throw MailError(fmt::format("The message {} cannot be read: {}.", path.string(), std::strerror(errno)));
        if (got == 0)
            break;
        filled += got;
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace mervo::desk
