#pragma once

#include "frontends/mcp/ToolCall.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace mervo::mcp {

/// Runs calls concurrently, each on a thread of its own, up to a bound; further ones are queued.
///
/// A call that is cancelled while it waits never runs. One that is cancelled while it runs finishes its work, since
/// half a change is worse than an unwanted one, and is not answered. Any thread may use it.
class CallPool {
public:
    struct Outlets {
        std::function<std::string(const ToolCall&)> perform; ///< on a thread of the pool
        std::function<void(std::string)> send; ///< the answer, from the same thread
        std::function<void()> becameIdle; ///< nothing waits or runs any more; from a thread of the pool
    };
    enum class Submission { accepted, duplicate, full };

    static constexpr std::size_t kMostRunning = 32;
    static constexpr std::size_t kMostWaiting = 1000;
    static constexpr std::size_t kMostWaitingBytes = std::size_t{64} * 1024 * 1024;

    explicit CallPool(Outlets outlets);
    /// Waits for the calls that run; those that wait are dropped.
    ~CallPool();
    CallPool(const CallPool&) = delete;
    CallPool& operator=(const CallPool&) = delete;

    /// `duplicate`: a call with this id is under way. `full`: too much waits already.
    Submission submit(ToolCall call);
    /// True when a call with this id was under way.
    bool cancel(std::string_view id);
    void dropWaiting();
    bool idle() const;

private:
    struct Entry {
        ToolCall call;
        std::size_t bytes = 0;
        bool cancelled = false;
    };

    void work();
    bool startWorkerIfNeeded();

    Outlets outlets_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::list<Entry> waiting_;
    std::list<Entry> running_;
    std::size_t waitingBytes_ = 0;
    std::vector<std::thread> workers_;
    std::size_t idleWorkers_ = 0;
    bool closing_ = false;
};

} // namespace mervo::mcp
