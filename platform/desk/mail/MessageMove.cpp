#include "platform/desk/mail/MessageMove.h"

#include "platform/desk/mail/MessageFile.h"
#include "platform/unicode.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr int kMostBases = 8; // that are tried, though the first one is new

[[noreturn]] void fail(const char* what, const fs::path& where, int error)
{
    throw MailError(fmt::format(
        "The message cannot be {} {}: {}.", what, platform::withValidUtf8(where.native()), std::strerror(error)));
}

bool isThere(const fs::path& path)
{
    struct stat status { };
    return lstat(path.c_str(), &status) == 0;
}

/// 0, or the error. Overwrites nothing; a file system that cannot promise that is asked first.
int renameTo(const fs::path& from, const fs::path& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    if (isThere(to))
        return EEXIST;
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

void writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw MailError(fmt::format("The message cannot be copied: {}.", std::strerror(errno)));
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// To another file system. The source goes last, and only under the name that was copied: where another program has
/// renamed it meanwhile, the copy goes away again.
std::optional<MaildirEntry> copyAcross(const fs::path& source, const fs::path& destination, std::string_view info)
{
    struct stat status { };
    std::string bytes;
    try {
        bytes = readMessageFile(source);
    } catch (const MessageGone&) {
        return std::nullopt;
    }
    if (stat(source.c_str(), &status) != 0)
        return std::nullopt;
    const fs::path copy = deliverToMaildir(destination, info, [&](int descriptor) {
        writeAll(descriptor, bytes);
        const timespec times[] = {status.st_atim, status.st_mtim};
        futimens(descriptor, times);
    });
    if (unlink(source.c_str()) != 0) {
        const int error = errno;
        unlink(copy.c_str());
        if (error == ENOENT)
            return std::nullopt;
        fail("taken out of", source.parent_path(), error);
    }
    return MaildirEntry{.fileName = copy.filename().native()};
}

/// Whether a rename that found something missing missed the message itself. The folder is asked, since the message may
/// be back under its old name by now.
bool isMessageMissing(const fs::path& destination)
{
    return isThere(destination / "cur");
}

/// Makes what a Maildir that is there lacks. False when it is not there at all.
bool mend(const fs::path& maildir)
{
    std::error_code error;
    if (!fs::is_directory(maildir, error))
        return false;
    createMaildir(maildir);
    return true;
}

} // namespace

std::optional<MaildirEntry> renameMessage(const fs::path& maildir, const MaildirEntry& message, std::string_view info)
{
    MaildirEntry changed{.fileName = fmt::format("{}:2,{}", splitMaildirName(message.fileName).base, info)};
    const fs::path source = messagePath(maildir, message);
    const int error = renameTo(source, messagePath(maildir, changed));
    if (error == 0)
        return changed;
    if (error == ENOENT && isMessageMissing(maildir))
        return std::nullopt;
    fail("changed in", maildir, error);
}

std::optional<MaildirEntry> moveMessage(
    const fs::path& maildir, const MaildirEntry& message, const fs::path& destination, std::string_view info)
{
    const fs::path source = messagePath(maildir, message);
    int error = 0;
    for (int tries = 0; tries < kMostBases; ++tries) {
        MaildirEntry moved{.fileName = fmt::format("{}:2,{}", newMaildirBase(), info)};
        error = renameTo(source, messagePath(destination, moved));
        if (error == 0)
            return moved;
        if (error == EXDEV)
            return copyAcross(source, destination, info);
        if (error == ENOENT && isMessageMissing(destination))
            return std::nullopt;
        const bool isWorthAnother = error == EEXIST || (error == ENOENT && mend(destination));
        if (!isWorthAnother)
            break;
    }
    fail("moved to", destination, error);
}

bool removeMessage(const fs::path& maildir, const MaildirEntry& message)
{
    if (unlink(messagePath(maildir, message).c_str()) == 0)
        return true;
    if (errno == ENOENT)
        return false;
    fail("removed from", maildir, errno);
}

} // namespace mervo::desk
