#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace mervo::mcp {

/// The only output to the client: whole lines, one after the other, from any thread.
///
/// `send` never waits for the client. A short line is written at once where the client has room for it; what has to
/// wait is written by a thread of the queue's own. A client that does not read makes the queue grow: the
/// producer stops at `congested`.
class OutputQueue {
public:
    static constexpr std::size_t kCongestion = std::size_t{16} * 1024 * 1024;

    /// `changed` is told when congestion ends, when the queue becomes empty, and when writing has failed for good.
    OutputQueue(int fd, std::function<void()> changed);
    /// Waits for a write that is under way; what still waits is dropped.
    ~OutputQueue();
    OutputQueue(const OutputQueue&) = delete;
    OutputQueue& operator=(const OutputQueue&) = delete;

    void send(std::string line);

    bool congested() const;
    bool empty() const;
    bool broken() const; ///< the client has closed its end; lines are dropped

private:
    bool writeNow(const std::string& line) noexcept;
    void work();

    const int fd_;
    const std::function<void()> changed_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::string waiting_;
    std::size_t inWriting_ = 0; ///< bytes that the thread is writing
    bool broken_ = false;
    bool closing_ = false;
    std::thread thread_; ///< started by the first line that has to wait
};

} // namespace mervo::mcp
