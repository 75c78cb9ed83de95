#include "platform/files.h"

#include "platform/descriptor.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mervo::platform {

namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kOwnerAndFolder = 0700;
constexpr int kMostLinks = 40;

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

std::error_code writeAll(const Descriptor& to, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(to.get(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return lastError();
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

std::error_code writeAndClose(Descriptor& to, std::string_view bytes, Keep keep)
{
    if (const auto error = writeAll(to, bytes))
        return error;
    if (keep == Keep::throughPowerCut && ::fsync(to.get()) != 0)
        return lastError();
    return to.close() == 0 ? std::error_code{} : lastError();
}

/// Where the links lead, also when nothing is there yet.
std::filesystem::path behindLinks(std::filesystem::path file, std::error_code& error)
{
    for (int links = 0; links < kMostLinks; ++links) {
        std::error_code noLink;
        const std::filesystem::path target = std::filesystem::read_symlink(file, noLink);
        if (noLink)
            return file;
        file = file.parent_path() / target;
    }
    error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    return file;
}

/// Makes the bytes outlive a power cut under the name that was given to them.
void keepNames(const std::filesystem::path& folder)
{
    const Descriptor entry(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (entry.open())
        ::fsync(entry.get()); // without it the old state would be back
}

/// Writes the bytes to a temporary file beside the target and calls `name`, which gives it the target's name.
template <typename Name>
std::error_code writeBeside(
    const std::filesystem::path& target, std::string_view bytes, Keep keep, mode_t permissions, const Name& name)
{
    std::string temporary = target.string() + ".XXXXXX";
    Descriptor descriptor(::mkostemp(temporary.data(), O_CLOEXEC)); // mode 0600
    if (!descriptor.open())
        return lastError();
    std::error_code error;
    if (permissions != kOwnerOnly && ::fchmod(descriptor.get(), permissions) != 0)
        error = lastError();
    if (!error)
        error = writeAndClose(descriptor, bytes, keep);
    if (!error)
        error = name(temporary);
    if (error) {
        ::unlink(temporary.c_str());
        return error;
    }
    if (keep == Keep::throughPowerCut)
        keepNames(target.parent_path());
    return {};
}

std::error_code renameOver(const std::string& temporary, const std::filesystem::path& target)
{
    return ::rename(temporary.c_str(), target.c_str()) == 0 ? std::error_code{} : lastError();
}

std::error_code renameBeside(const std::string& from, const std::filesystem::path& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    if (errno != EINVAL && errno != ENOSYS)
        return lastError();
    struct stat found { };
    if (::lstat(to.c_str(), &found) == 0)
        return std::make_error_code(std::errc::file_exists);
    return renameOver(from, to);
}

/// An error when there is more than `limit`, which a file may also become while it is read.
std::string readToEnd(const Descriptor& from, std::size_t expected, std::size_t limit, std::error_code& error)
{
    std::string bytes;
    bytes.reserve(expected + 1);
    std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t count = ::read(from.get(), buffer.data(), buffer.size());
        if (count == 0)
            return bytes;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            error = lastError();
            return bytes;
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (bytes.size() > limit) {
            error = std::make_error_code(std::errc::file_too_large);
            return bytes;
        }
    }
}

/// What keeps an open file from being read whole.
std::error_code refusal(const struct stat& status, std::size_t limit)
{
    if (S_ISDIR(status.st_mode))
        return std::make_error_code(std::errc::is_a_directory);
    if (!S_ISREG(status.st_mode))
        return std::make_error_code(std::errc::operation_not_supported);
    if (static_cast<std::size_t>(status.st_size) > limit)
        return std::make_error_code(std::errc::file_too_large);
    return {};
}

/// The standard library's own failures (memory, a path that cannot be formed) as an error code.
template <typename Work>
std::error_code guarded(Work&& work) noexcept
{
    try {
        return work();
    } catch (const std::system_error& error) {
        return error.code();
    } catch (...) {
        return std::make_error_code(std::errc::not_enough_memory);
    }
}

} // namespace

std::optional<std::string> readFile(
    const std::filesystem::path& file, std::size_t limit, std::error_code* why, FileStamp* stamp) noexcept
{
    std::optional<std::string> bytes;
    const std::error_code failed = guarded([&]() -> std::error_code {
        const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        struct stat status { };
        if (!descriptor.open() || ::fstat(descriptor.get(), &status) != 0)
            return lastError();
        if (stamp != nullptr)
            *stamp = fileStamp(status);
        std::error_code error = refusal(status, limit);
        if (!error)
            bytes = readToEnd(descriptor, static_cast<std::size_t>(status.st_size), limit, error);
        return error;
    });
    if (why != nullptr)
        *why = failed;
    if (failed)
        bytes.reset();
    return bytes;
}

FileStamp fileStamp(const struct ::stat& status) noexcept
{
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return {status.st_dev, status.st_ino, status.st_size,
        std::int64_t{status.st_ctim.tv_sec} * kNanoseconds + status.st_ctim.tv_nsec};
}

std::optional<FileStamp> fileStamp(const std::filesystem::path& file) noexcept
{
    struct stat found { };
    if (::stat(file.c_str(), &found) != 0)
        return std::nullopt;
    return fileStamp(found);
}

bool FileStamp::isSettled() const noexcept
{
    constexpr std::chrono::seconds kGrain(3);
    const auto settled = std::chrono::system_clock::now().time_since_epoch() - kGrain;
    return changed < std::chrono::duration_cast<std::chrono::nanoseconds>(settled).count();
}

std::error_code replaceFile(const std::filesystem::path& file, std::string_view bytes, Keep keep) noexcept
{
    return guarded([&]() -> std::error_code {
        std::error_code error;
        const std::filesystem::path target = behindLinks(file, error);
        if (error)
            return error;
        return writeBeside(target, bytes, keep, kOwnerOnly,
            [&](const std::string& temporary) { return renameOver(temporary, target); });
    });
}

std::error_code replaceUnchanged(
    const std::filesystem::path& file, std::string_view bytes, const FileStamp& expected) noexcept
{
    return guarded([&]() -> std::error_code {
        std::error_code error;
        const std::filesystem::path target = behindLinks(file, error);
        struct stat found { };
        if (error || ::stat(target.c_str(), &found) != 0)
            return error ? error : std::make_error_code(std::errc::operation_canceled);
        return writeBeside(
            target, bytes, Keep::throughPowerCut, found.st_mode & 07777, [&](const std::string& temporary) {
                return fileStamp(target) == expected ? renameOver(temporary, target)
                                                     : std::make_error_code(std::errc::operation_canceled);
            });
    });
}

std::error_code createFile(const std::filesystem::path& file, std::string_view bytes) noexcept
{
    return guarded([&] {
        return writeBeside(file, bytes, Keep::throughPowerCut, kOwnerOnly,
            [&](const std::string& temporary) { return renameBeside(temporary, file); });
    });
}

std::error_code renameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to) noexcept
{
    return guarded([&]() -> std::error_code {
        if (const auto error = renameBeside(from.string(), to))
            return error;
        keepNames(from.parent_path());
        keepNames(to.parent_path());
        return {};
    });
}

std::error_code writeInPlace(const std::filesystem::path& file, std::string_view bytes) noexcept
{
    return guarded([&]() -> std::error_code {
        Descriptor descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnerOnly));
        if (!descriptor.open())
            return lastError();
        const std::error_code error = writeAndClose(descriptor, bytes, Keep::throughPowerCut);
        if (error)
            ::unlink(file.c_str());
        return error;
    });
}

std::error_code makeFilePrivate(const std::filesystem::path& file) noexcept
{
    constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
    struct stat found { };
    if (::stat(file.c_str(), &found) == 0) {
        if ((found.st_mode & kOthers) != 0 && found.st_uid == ::geteuid())
            ::chmod(file.c_str(), found.st_mode & ~kOthers & 07777);
        return {};
    }
    // Not by opening it: to close a file gives up every lock that this process has on it by then.
    return ::mknod(file.c_str(), S_IFREG | kOwnerOnly, 0) == 0 || errno == EEXIST ? std::error_code{} : lastError();
}

std::error_code createPrivateFolder(const std::filesystem::path& folder) noexcept
{
    return guarded([&]() -> std::error_code {
        std::error_code error;
        if (std::filesystem::is_directory(folder, error))
            return {};
        if (folder.has_parent_path())
            std::filesystem::create_directories(folder.parent_path(), error);
        if (::mkdir(folder.c_str(), kOwnerAndFolder) == 0)
            return {};
        const std::error_code failed = lastError();
        return std::filesystem::is_directory(folder, error) ? std::error_code{} : failed;
    });
}

bool isOurs(const std::filesystem::path& path) noexcept
{
    struct stat found { };
    return ::stat(path.c_str(), &found) != 0 || found.st_uid == ::geteuid();
}

bool canWrite(const std::filesystem::path& path) noexcept
{
    return ::access(path.c_str(), W_OK) == 0;
}

} // namespace mervo::platform
