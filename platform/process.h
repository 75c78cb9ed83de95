#pragma once

#include "platform/descriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// Runs other programs. Arguments are a list and never pass through a shell.
namespace mervo::platform {

struct Command {
    std::string program = {}; ///< path of the executable; no search through PATH
    std::vector<std::string> arguments = {}; ///< without the program's own name
    std::string input = {}; ///< what the program reads on standard input, to its end; nobody else can see it
    bool inheritStandardError = false; ///< true: the child writes to our standard error, and `error` stays empty
    /// Whether it leads a session and process group of its own. Otherwise it ends with our group.
    bool ownSession = true;
    std::string folder = {}; ///< its current directory; empty: ours
    /// All of its environment as "NAME=value"; nothing: ours.
    std::optional<std::vector<std::string>> environment = {};
};

struct Outcome {
    int status = -1; ///< exit status, -1 when a signal ended the program
    int signal = 0; ///< the signal that ended it, 0 for an exit
    bool stopped = false; ///< it was ended, or never started, because this process was asked to stop (platform/stop.h)
    std::string output; ///< standard output, as bytes
    std::string error; ///< standard error, as bytes
};

/// The program could not be started; what() is the system's own description ("No such file or directory").
class NotStarted final : public std::runtime_error {
public:
    enum class Step { pipe, spawn };
    explicit NotStarted(int errorNumber, Step step = Step::spawn);
    /// The system's error number (errno), and what failed: making the pipes or starting the program.
    int errorNumber() const noexcept { return errorNumber_; }
    Step step() const noexcept { return step_; }

private:
    int errorNumber_;
    Step step_;
};

/// Runs a program to its end and returns what it wrote.
///  - Both output streams are drained together, so a child that writes much is never blocked.
///  - A program that ran and exited non-zero, or died by a signal, is an Outcome and not an error.
///  - The child gets only its three standard descriptors; signals have their default actions.
///  - In its own session it has no terminal: a Ctrl-C at ours does not reach it, and it can ask nothing there.
///  - It is killed when this process ends first, however that comes about.
///  - There is no time limit: the caller waits as long as the program runs, or until this process is asked to stop: the
///    program's group is then asked to end (SIGTERM), and ended a moment later.
/// Throws NotStarted; also for a program or argument that holds a NUL character, which no program can receive. Any
/// thread may call it, also several at once.
Outcome run(const Command& command);

/// Starts a program in a session of its own, which outlives this process, and waits for it up to `patience`. Its
/// standard input is empty, its output is discarded, and `error` holds what it wrote to standard error. Nothing when it
/// still runs after that. Throws NotStarted.
std::optional<Outcome> runDetached(const Command& command, std::chrono::milliseconds patience);

/// A program that was started like that, for a caller who also waits for something else. Whoever drops it leaves it
/// running. Belongs to one thread.
class DetachedProgram {
public:
    /// Throws NotStarted.
    explicit DetachedProgram(const Command& command);

    /// How it ended, with what it had written to standard error; nothing while it runs. Does not wait.
    std::optional<Outcome> end();
    /// Kills it with its process group. Nothing to do once `end` has told of its end.
    void kill() noexcept;

private:
    Descriptor error_;
    std::int64_t id_;
};

/// What the system calls a signal ("Killed").
std::string signalName(int signal);

/// The environment of this process as "NAME=value", in the system's order.
std::vector<std::string> environment();

/// What the system tells of a process.
struct ProcessFacts {
    std::int64_t parent = 0; ///< 0 for the first of all, and for one whose parent cannot be seen
    std::int64_t session = 0; ///< the number of its session's leader
    bool isEnding = false; ///< it has ended, and only its number is left
    std::chrono::seconds age{}; ///< how long ago it was started, time asleep counted
    std::vector<std::string> words; ///< its command line; empty for one that is ending
};
/// Nothing when there is no such process.
std::optional<ProcessFacts> processFacts(std::int64_t processId);

/// Asks the processes of a session (setsid) to end, by the number of its leader, which may have ended before; what is
/// left after `mercy` is killed. False when there was none.
bool endSession(std::int64_t leader, std::chrono::milliseconds mercy);

/// The number of this process.
std::int64_t ownProcess() noexcept;

/// Whether a process with this number is there and ours to signal. False for 0 and below.
bool isRunning(std::int64_t processId) noexcept;

/// Asks a process to end (SIGTERM); false when it is not there or not ours. False for 0 and below.
bool requestEnd(std::int64_t processId) noexcept;

/// The number of the user whose process this is.
std::uint32_t userNumber() noexcept;

} // namespace mervo::platform
