#pragma once

#include "platform/desk/mail/MailError.h"

#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// One Maildir: a folder with cur, new and tmp, each message a file. A file's name is "base:2,FLAGS"; base never
/// changes and is unique in its folder, flags are changed by renaming. Other programs change the folder at any time.
namespace mervo::desk {

struct MaildirName {
    std::string_view base;
    std::string_view info; ///< what stands after ":2,"
};

MaildirName splitMaildirName(std::string_view fileName) noexcept;

/// The state of cur and new; while it is the same, the folder need not be listed again.
struct MaildirStamp {
    std::int64_t curChanged = 0, newChanged = 0; ///< nanoseconds since 1970; 0: the folder is missing
    std::uint64_t curInode = 0, newInode = 0;
    auto operator<=>(const MaildirStamp&) const = default;
};

/// What a Maildir that is not there is taken for.
enum class WhenMissing { fails, isEmpty };

/// Throws MailError when cur or new cannot be examined.
MaildirStamp maildirStamp(const std::filesystem::path& maildir, WhenMissing whenMissing);

struct MaildirEntry {
    std::string fileName; ///< with flags
    bool isNew = false; ///< lies in new, not in cur
};

/// The message files of new and cur, unordered. A message that another program moves meanwhile is listed once. Hidden
/// files and folders are left out. Throws MailError when a folder cannot be read.
std::vector<MaildirEntry> listMaildir(const std::filesystem::path& maildir);

std::filesystem::path messagePath(const std::filesystem::path& maildir, const MaildirEntry& entry);

/// The file of the message with this base in new or cur; empty when there is none.
std::filesystem::path findMessage(const std::filesystem::path& maildir, std::string_view base);

/// A unique base for a new file, made as the format asks of time, process, count, random bits and host.
std::string newMaildirBase();

/// A sub-folder of a Maildir++ has a marker file beside cur.
enum class MaildirKind { plain, plusPlusFolder };

/// Makes the folder with its cur, new and tmp where they are missing. Throws MailError.
void createMaildir(const std::filesystem::path& maildir, MaildirKind kind = MaildirKind::plain);

/// A message being delivered: written to tmp by `write` (which gets the descriptor and may throw) and synced to disk.
/// Removed again unless committed. Throws MailError.
class MaildirDelivery {
public:
    MaildirDelivery(const std::filesystem::path& maildir, const std::function<void(int descriptor)>& write);
    MaildirDelivery(MaildirDelivery&& other) noexcept;
    MaildirDelivery(const MaildirDelivery&) = delete;
    MaildirDelivery& operator=(const MaildirDelivery&) = delete;
    MaildirDelivery& operator=(MaildirDelivery&&) = delete;
    ~MaildirDelivery();

    const std::filesystem::path& file() const noexcept { return file_; } ///< in tmp
    /// One rename, into cur with these flags, or into new.
    std::filesystem::path commit(std::string_view flags);
    std::filesystem::path commitAsNew();

private:
    std::filesystem::path renamed(const std::filesystem::path& destination);

    std::filesystem::path maildir_, file_; // file_ is empty once it is committed
};

/// Delivers one message: written to tmp by `write` (which gets the descriptor and may throw), synced to disk, then
/// renamed into cur with the flags. Returns its path. When it throws, nothing is left behind.
std::filesystem::path deliverToMaildir(
    const std::filesystem::path& maildir, std::string_view flags, const std::function<void(int descriptor)>& write);

} // namespace mervo::desk
