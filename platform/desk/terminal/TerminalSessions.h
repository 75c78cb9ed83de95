#pragma once

#include "platform/desk/terminal/KnownTerminals.h"
#include "platform/desk/terminal/OwnerTerminal.h"
#include "platform/desk/terminal/SessionFiles.h"

#include <optional>
#include <string>

/// Windows of the owner's terminal, each with one session. An id leads to a window from any process of the owner's.
namespace mervo::desk {

struct NewSession {
    std::string id; ///< a fresh one (newSessionId)
    SessionRequest request;
    /// Where the window goes, from the upper left corner of the main screen. A window that cannot be placed opens where
    /// it likes.
    std::optional<Bounds> bounds = {};
};

/// Opens a window and returns when its session has begun; it outlives this process. Waits 15 s at most. Throws
/// TerminalError when no window comes; one that comes later does nothing.
void openSession(const OwnerTerminal& terminal, const NewSession& session);

/// Places the window of a living session. False when it cannot be placed: no X window is known of it.
bool placeSession(const std::string& id, const Bounds& bounds);

/// Ends what runs in the window, and the window with it: its processes are hung up (SIGHUP), those that go on after 2 s
/// are killed. Waits for that, 6 s at most. Nothing to do for a session that has ended. Throws TerminalError when it
/// goes on.
void closeSession(const std::string& id);

} // namespace mervo::desk
