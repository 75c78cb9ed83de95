#pragma once

#include "platform/held_file.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// The registry of terminal sessions: the folder `terminals` below the desk's data folder.
///
/// `<id>.request` is what a new window shall run. The program in the window, `terminal-session`, makes `<id>.session`,
/// which it holds (platform/held_file.h) for as long as the window's shell lives, and then takes the request by
/// removing it: from then on the session has begun. A request whose opener gave up is gone, so that a window that comes
/// late ends at once. A session file that nobody holds is what a killed process left; whoever looks next removes it.
namespace mervo::desk {

struct SessionRequest {
    std::string application; ///< the application that scripts opened it as: "iTerm2", "Terminal"
    std::string text; ///< what its shell runs; empty: the shell alone
};

struct SessionRecord {
    std::string id;
    std::string application;
    pid_t process = 0; ///< that of terminal-session
    std::string tty; ///< "/dev/pts/3"; empty: it has none
    std::uint32_t window = 0; ///< the X window that the terminal names (WINDOWID); 0: it names none
};

/// A fresh id, in the form of a UUID. Throws TerminalError.
std::string newSessionId();

/// Writes the request; the file's path. Throws TerminalError.
std::filesystem::path writeRequest(const std::string& id, const SessionRequest& request);
/// Takes the request away; false when somebody else has done so. Of several one gets true.
bool takeRequest(const std::filesystem::path& file) noexcept;
/// Whether somebody has.
bool isTaken(const std::filesystem::path& file) noexcept;
/// Nothing when it is gone or damaged.
std::optional<SessionRequest> readRequest(const std::filesystem::path& file);

/// Registers the session of a request's file, held by this process. Throws std::system_error.
platform::HeldFile holdSession(const std::filesystem::path& requestFile, const SessionRecord& record);

/// The session, while it lives. What a dead one has left is removed.
std::optional<SessionRecord> livingSession(const std::string& id);
/// All that live, the newest first; of one application unless `application` is empty. Removes what dead ones left.
std::vector<SessionRecord> livingSessions(std::string_view application);

} // namespace mervo::desk
