#include "frontends/mcp/Server.h"

#include "frontends/mcp/Log.h"
#include "platform/stop.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace mervo::mcp {

namespace {

/// How long a running call may go on after a signal or after the client has closed its side, and how long it has from
/// then on to be ended and to write its row. Clients wait about two seconds between the signal to end and the one that
/// kills.
constexpr std::chrono::milliseconds kGrace{1200};
constexpr std::chrono::milliseconds kEnding{600};
constexpr auto kEnded = "ended with the server, whose client left,";

constexpr std::size_t kReadSize = 64 * 1024;

volatile std::sig_atomic_t caughtSignal = 0;
const Wakeup* signalWakeup = nullptr;

void onSignal(int signal)
{
    caughtSignal = signal;
    signalWakeup->notify();
}

void handleSignals(const Wakeup* wakeup)
{
    signalWakeup = wakeup;
    struct sigaction action = {};
    action.sa_handler = wakeup != nullptr ? onSignal : SIG_DFL;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGHUP, &action, nullptr);
    action.sa_handler = wakeup != nullptr ? SIG_IGN : SIG_DFL;
    ::sigaction(SIGPIPE, &action, nullptr);
}

} // namespace

Server::Server(const Options& options, std::string_view instructions)
    : output_(STDOUT_FILENO, [this] { wakeup_.notify(); })
    , pool_({.perform = answer,
          .send = [this](std::string line) { output_.send(std::move(line)); },
          .becameIdle =
              [this] {
                  if (ending_)
                      wakeup_.notify();
              }})
    , dispatcher_(options.naming, instructions,
          {.send = [this](std::string line) { output_.send(std::move(line)); },
              .submit = [this](ToolCall call) { return pool_.submit(std::move(call)); },
              .cancel = [this](std::string_view id) { return pool_.cancel(id); }})
    , lines_({.line = [this](std::string_view line) { dispatcher_.handleLine(line); },
          .tooLong = [this] { dispatcher_.handleTooLongLine(); }})
{
    handleSignals(&wakeup_);
}

Server::~Server()
{
    handleSignals(nullptr);
}

int Server::run()
{
    End end = serve();
    ending_ = true;
    if (end == End::input)
        end = waitUntil([this] { return pool_.idle() && output_.empty(); });
    if (end == End::none)
        return 0;
    pool_.dropWaiting();
    const auto done = [this] { return pool_.idle() && output_.empty(); };
    if (waitUntil(done, kGrace))
        return 0;
    platform::Stop::request(kEnded);
    leftWork_ = !waitUntil(done, kEnding);
    logLine("ended before every call was finished and answered");
    return 128 + (end == End::signal ? static_cast<int>(caughtSignal) : SIGPIPE);
}

Server::End Server::interruption() const
{
    if (caughtSignal != 0)
        return End::signal;
    return output_.broken() ? End::output : End::none;
}

/// Reads and dispatches until something ends the session.
Server::End Server::serve()
{
    while (true) {
        bool readable = false;
        const End end = waitForInput(readable);
        if (end != End::none)
            return end;
        if (readable && !readInput()) {
            lines_.finish();
            return End::input;
        }
    }
}

Server::End Server::waitForInput(bool& readable)
{
    // A client that sends much and reads nothing is not read from until it has caught up.
    const short wanted = output_.congested() ? 0 : POLLIN;
    std::array<pollfd, 3> states{
        {{wanted != 0 ? STDIN_FILENO : -1, wanted, 0}, {wakeup_.fd(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
    if (::poll(states.data(), states.size(), -1) < 0 && errno != EINTR)
        return End::input;
    if (states[1].revents != 0)
        wakeup_.clear();
    if (const End end = interruption(); end != End::none)
        return end;
    readable = states[0].revents != 0;
    // What the client sent before it left is still taken in: its end of input then ends the session in order.
    return !readable && (states[2].revents & (POLLERR | POLLHUP)) != 0 ? End::output : End::none;
}

/// False at the end of input.
bool Server::readInput()
{
    static std::array<char, kReadSize> buffer;
    const ssize_t length = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (length > 0) {
        lines_.feed({buffer.data(), static_cast<std::size_t>(length)});
        return true;
    }
    return length < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK);
}

/// Waits without limit; says what interrupted it, `none` when it is done.
Server::End Server::waitUntil(const std::function<bool()>& done)
{
    while (!done()) {
        if (const End end = interruption(); end != End::none)
            return end;
        std::array<pollfd, 2> states{{{wakeup_.fd(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
        ::poll(states.data(), states.size(), -1);
        if ((states[1].revents & (POLLERR | POLLHUP)) != 0)
            return End::output;
        wakeup_.clear();
    }
    return End::none;
}

/// Waits up to the limit, whatever else happens; false when it passed.
bool Server::waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        pollfd state{wakeup_.fd(), POLLIN, 0};
        ::poll(&state, 1, static_cast<int>(left.count()));
        wakeup_.clear();
    }
    return true;
}

} // namespace mervo::mcp
