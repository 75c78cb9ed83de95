#pragma once

#include <string>
#include <string_view>

/// Names of mailboxes as people read them and as they stand on disk. On disk they are in IMAP's modified UTF-7, where
/// "&" starts a run of base64; names that other programs wrote as plain UTF-8 are accepted as well.
namespace mervo::desk {

/// One component of a folder's name, for people. A component that is not well-formed modified UTF-7, or whose decoded
/// form would hold a "/" or a control character, stands for itself; bytes that are not UTF-8 become U+FFFD.
std::string decodeMailboxComponent(std::string_view onDisk);

/// The opposite, for folders that the desk makes. "." and "/" are encoded too, since they part components on disk.
std::string encodeMailboxComponent(std::string_view name);

} // namespace mervo::desk
