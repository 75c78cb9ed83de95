#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

struct stat;

/// Reads and writes whole files safely. Nothing here throws; a failure is the system's error code, whose
/// message() is its description. New files are the owner's alone (mode 0600).
namespace mervo::platform {

/// The longest file that is read whole where the caller names no other limit, in bytes.
constexpr std::size_t kLongestFile = 16 * 1024 * 1024;

/// What changes when a file does: another file under its name, another length, another time.
struct FileStamp {
    std::uint64_t device = 0, number = 0; ///< which file it is
    std::int64_t bytes = 0;
    std::int64_t changed = 0; ///< the inode's change time (nanoseconds since 1970), which nobody can set back

    bool operator==(const FileStamp&) const = default;
    /// True when no later writing can leave this stamp. A file's time has the resolution of the system's tick or, on
    /// other file systems, of up to two seconds: a file written again within it may look as before.
    bool isSettled() const noexcept;
    bool isSameFile(const FileStamp& other) const { return device == other.device && number == other.number; }
};
/// Nothing when there is no such file. Links are followed.
std::optional<FileStamp> fileStamp(const std::filesystem::path& file) noexcept;
/// Of what the system has told already.
FileStamp fileStamp(const struct ::stat& status) noexcept;

/// The bytes of a regular file; nothing when it cannot be read, is longer than `limit` bytes, or is a device, a pipe or
/// a folder. Neither waits nor takes memory for what it refuses. `why` receives the reason, `stamp` the file's from
/// before it was read.
std::optional<std::string> readFile(const std::filesystem::path& file, std::size_t limit = kLongestFile,
    std::error_code* why = nullptr, FileStamp* stamp = nullptr) noexcept;

/// Whether the bytes must survive a power failure. A temporary file need not, and is written much faster.
enum class Keep { throughPowerCut, whileRunning };

/// Replaces or creates the file in one step: a reader sees the old bytes or the new ones, also after a crash
/// or on a full disk. A symbolic link stays, and the file that it leads to is replaced.
std::error_code replaceFile(
    const std::filesystem::path& file, std::string_view bytes, Keep keep = Keep::throughPowerCut) noexcept;

/// The same for a file that must still be as it was when it was read: `expected` is its stamp from before. Keeps its
/// permissions. Gives errc::operation_canceled, and changes nothing, when it has changed or is gone.
std::error_code replaceUnchanged(
    const std::filesystem::path& file, std::string_view bytes, const FileStamp& expected) noexcept;

/// Creates a file with these bytes in one step. Gives errc::file_exists when there is something of this name, which
/// stays as it is.
std::error_code createFile(const std::filesystem::path& file, std::string_view bytes) noexcept;

/// Renames a file or folder. Gives errc::file_exists when there is something of the new name, which stays as it is.
/// A file system that cannot promise that is asked first. No copy is made across file systems
/// (errc::cross_device_link).
std::error_code renameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to) noexcept;

/// Writes the file itself, without a temporary one, down to the disk. What could not be written whole is removed.
std::error_code writeInPlace(const std::filesystem::path& file, std::string_view bytes) noexcept;

/// Creates an empty file where there is none; removes the permissions of group and others from one that is ours. Gives
/// the error when it is not there and cannot be created; the permissions of somebody else's file stay as they are.
std::error_code makeFilePrivate(const std::filesystem::path& file) noexcept;

/// Creates a folder for the owner alone (mode 0700), with what is above it. A folder that is there is left as it is.
std::error_code createPrivateFolder(const std::filesystem::path& folder) noexcept;

/// True when the path belongs to the user of this process, or is not there.
bool isOurs(const std::filesystem::path& path) noexcept;

/// True when this process may create files in a folder, or write a file.
bool canWrite(const std::filesystem::path& path) noexcept;

} // namespace mervo::platform
