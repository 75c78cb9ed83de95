#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <sys/types.h>

/// The owner's desktop session as the desk needs it: the session bus, the windows, the default programs.
namespace mervo::desk {

/// What a session offers. The functions wait for other programs, at most 10 s, for an X display 5 s. They throw
/// std::system_error when there is no thread for that, and nothing else.
class Session {
public:
    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    virtual ~Session() = default;

    /// Has the file manager show a file or folder in the folder that it lies in (org.freedesktop.FileManager1,
    /// ShowItems). `path` is absolute. Gives the reason when no file manager does, and an empty text when one has.
    virtual std::string showItem(const std::string& path) const = 0;

    /// The executable, a name or a path, of the program that the desktop's settings name for a content type or for an
    /// address ("x-scheme-handler/mailto"). Empty: none, or one that is no program for this very type (a browser, a
    /// text editor).
    virtual std::string defaultProgram(const std::string& contentType) const = 0;

    /// Asks the program that these processes are for its action "quit" (org.freedesktop.Application, at the names that
    /// they own). Gives the reason when it could not be asked ("it offers no action ..."), and an empty text when it
    /// was.
    virtual std::string askToQuit(std::span<const pid_t> processes) const = 0;

    /// Asks the window manager of an X display to close their windows, as a click would (_NET_CLOSE_WINDOW). Gives
    /// the reason when none was asked ("it has no window ..."), and an empty text when one was.
    virtual std::string closeWindows(std::span<const pid_t> processes) const = 0;

    /// Moves the top-level window that an X window belongs to, and sizes it with its frame, in pixels from the upper
    /// left corner of the display. Waits up to 1 s for the window manager to have taken a new window over, which may
    /// then do as it likes. False without a display that answers, or that window.
    virtual bool placeWindow(std::uint32_t window, int left, int top, int width, int height) const = 0;
};

/// The session of this process, in the module of the bundle that holds GIO. Throws std::runtime_error with a sentence
/// when the module cannot be loaded.
const Session& session();

} // namespace mervo::desk
