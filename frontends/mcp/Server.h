#pragma once

#include "frontends/mcp/CallPool.h"
#include "frontends/mcp/Dispatcher.h"
#include "frontends/mcp/LineReader.h"
#include "frontends/mcp/Options.h"
#include "frontends/mcp/OutputQueue.h"
#include "frontends/mcp/Wakeup.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <string_view>

namespace mervo::mcp {

/// The server on standard input and output, from its first line to its end.
///
/// The end of input lets the calls already received finish and be answered. A signal to end, or a client that has
/// closed its side, drops the calls that wait and gives those that run a short time to finish; what is not finished by
/// then is ended, and its row says so. One server for a process, since it takes the process's signals.
class Server {
public:
    Server(const Options& options, std::string_view instructions);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    /// Serves to the end and gives the exit status: 0, or 128 and the signal when a running call had to be ended.
    /// Where `leftWork` says so the caller must end the process without waiting for other threads.
    int run();

    /// Whether `run` left a call behind that still runs, since it did not end in time.
    bool leftWork() const { return leftWork_; }

private:
    enum class End { none, input, signal, output };

    End serve();
    End waitForInput(bool& readable);
    bool readInput();
    End waitUntil(const std::function<bool()>& done);
    bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);
    End interruption() const;

    Wakeup wakeup_;
    std::atomic<bool> ending_ = false; ///< from when on the idle pool is waited for
    OutputQueue output_;
    CallPool pool_;
    Dispatcher dispatcher_;
    LineReader lines_;
    bool leftWork_ = false;
};

} // namespace mervo::mcp
