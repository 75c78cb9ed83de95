#include "platform/desk/terminal/TerminalSessions.h"

#include "platform/desk/session/Session.h"
#include "platform/desk/settings/CommandWords.h"
#include "platform/desk/terminal/TerminalError.h"
#include "platform/process.h"
#include "platform/programs.h"
#include "platform/screens.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <poll.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace mervo::desk {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
namespace fs = std::filesystem;

constexpr milliseconds kPatience{15'000}; // a first window may start a server and read fonts
constexpr milliseconds kPause{20};
constexpr int kHangUp = 5'000; // milliseconds: terminal-session gives its processes 2 s
constexpr int kKill = 1'000;

/// From the display's upper left corner.
Bounds onDisplay(const Bounds& bounds)
{
    const auto screens = platform::screens();
    const auto main = std::ranges::find(screens, true, &platform::Screen::isMain);
    if (main == screens.end())
        return bounds;
    return {bounds.left + main->left, bounds.top + main->top, bounds.right + main->left, bounds.bottom + main->top};
}

std::string nameOf(const OwnerTerminal& terminal)
{
    return fs::path(terminal.program).filename().string();
}

/// Until the session has begun. A terminal that ends without an error may have left the window to its server.
void awaitBeginning(const fs::path& request, platform::DetachedProgram& program, const OwnerTerminal& terminal)
{
    const auto end = Clock::now() + kPatience;
    while (!isTaken(request)) {
        if (const auto outcome = program.end(); outcome && outcome->status != 0)
            throw TerminalError(fmt::format("No terminal opens: {}", howItEnded(nameOf(terminal), *outcome)));
        if (Clock::now() > end)
            throw TerminalError(fmt::format("The terminal {} has opened no window within {} s.", nameOf(terminal),
                std::chrono::duration_cast<std::chrono::seconds>(kPatience).count()));
        std::this_thread::sleep_for(kPause);
    }
}

/// True when the process has ended.
bool ends(const platform::Descriptor& process, int patience)
{
    pollfd watched{process.get(), POLLIN, 0};
    int count = 0;
    while ((count = poll(&watched, 1, patience)) < 0 && errno == EINTR) { }
    return count > 0;
}

void send(const platform::Descriptor& process, int signal)
{
    ::syscall(SYS_pidfd_send_signal, process.get(), signal, nullptr, 0);
}

} // namespace

void openSession(const OwnerTerminal& terminal, const NewSession& session)
{
    requireDisplay();
    const auto bounds = session.bounds ? std::optional(onDisplay(*session.bounds)) : std::nullopt;
    const fs::path request = writeRequest(session.id, session.request);
    const std::string inside[] = {platform::platformProgram("terminal-session"), request};
    try {
        platform::DetachedProgram program({.program = terminal.program,
            .arguments = terminalArguments(terminal.kind, terminal.words, bounds, inside)});
        try {
            awaitBeginning(request, program, terminal);
        } catch (const TerminalError&) {
            if (takeRequest(request)) { // else it has begun at the last moment
                program.kill();
                throw;
            }
        }
    } catch (const platform::NotStarted& error) {
        takeRequest(request);
        throw TerminalError(fmt::format("The terminal {} cannot be started: {}.", terminal.program, error.what()));
    }
    if (session.bounds)
        placeSession(session.id, *session.bounds);
}

bool placeSession(const std::string& id, const Bounds& bounds)
{
    const auto record = livingSession(id);
    if (!record || record->window == 0)
        return false;
    const Bounds place = onDisplay(bounds);
    try {
        return session().placeWindow(record->window, place.left, place.top, place.width(), place.height());
    } catch (const std::runtime_error&) { // without the module windows open where they like
        return false;
    }
}

void closeSession(const std::string& id)
{
    const auto record = livingSession(id);
    if (!record)
        return;
    // The number may belong to another process by now; the handle stays with one, so the second look decides.
    const platform::Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, record->process, 0)));
    if (!process.open() || !livingSession(id))
        return;
    send(process, SIGHUP);
    send(process, SIGCONT);
    if (ends(process, kHangUp))
        return;
    send(process, SIGKILL); // the system hangs up what it leaves in the foreground
    if (!ends(process, kKill))
        throw TerminalError(fmt::format("The session {} does not end.", id));
    livingSession(id);
}

} // namespace mervo::desk
