#include "frontends/mcp/OutputQueue.h"

#include <cerrno>
#include <climits>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace mervo::mcp {

namespace {

bool hasRoom(int fd)
{
    pollfd state{fd, POLLOUT, 0};
    return ::poll(&state, 1, 0) == 1 && (state.revents & POLLOUT) != 0;
}

bool waitForRoom(int fd)
{
    pollfd state{fd, POLLOUT, 0};
    return ::poll(&state, 1, -1) >= 0 || errno == EINTR;
}

/// False when nothing can be written any more.
bool writeAll(int fd, const char* bytes, std::size_t length)
{
    while (length > 0) {
        const ssize_t written = ::write(fd, bytes, length);
        if (written >= 0) {
            bytes += written;
            length -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) { // the client made its end of a socket non-blocking
            if (!waitForRoom(fd))
                return false;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

OutputQueue::OutputQueue(int fd, std::function<void()> changed)
    : fd_(fd)
    , changed_(std::move(changed))
{
}

OutputQueue::~OutputQueue()
{
    {
        std::scoped_lock guard(mutex_);
        closing_ = true;
    }
    wake_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

/// A pipe with room takes PIPE_BUF bytes without blocking, and takes them whole.
bool OutputQueue::writeNow(const std::string& line) noexcept
{
    if (line.size() > PIPE_BUF || !waiting_.empty() || inWriting_ > 0 || !hasRoom(fd_))
        return false;
    broken_ = !writeAll(fd_, line.data(), line.size());
    return true;
}

void OutputQueue::send(std::string line)
{
    std::unique_lock lock(mutex_);
    if (broken_)
        return;
    if (writeNow(line)) {
        const bool failed = broken_;
        lock.unlock();
        if (failed)
            changed_();
        return;
    }
    if (waiting_.empty()) {
        waiting_ = std::move(line);
    } else {
        waiting_ += line;
    }
    if (!thread_.joinable()) {
        try {
            thread_ = std::thread([this] { work(); });
        } catch (const std::system_error&) { // without a thread the caller waits instead
            broken_ = !writeAll(fd_, waiting_.data(), waiting_.size());
            waiting_ = {};
        }
    }
    lock.unlock();
    wake_.notify_one();
}

bool OutputQueue::congested() const
{
    std::scoped_lock guard(mutex_);
    return waiting_.size() + inWriting_ > kCongestion;
}

bool OutputQueue::empty() const
{
    std::scoped_lock guard(mutex_);
    return waiting_.empty() && inWriting_ == 0;
}

bool OutputQueue::broken() const
{
    std::scoped_lock guard(mutex_);
    return broken_;
}

void OutputQueue::work()
{
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return closing_ || !waiting_.empty(); });
        if (closing_ || broken_)
            return;
        const std::string bytes = std::exchange(waiting_, {});
        inWriting_ = bytes.size();
        lock.unlock();
        const bool written = writeAll(fd_, bytes.data(), bytes.size());
        lock.lock();
        inWriting_ = 0;
        broken_ = broken_ || !written;
        if (broken_)
            waiting_ = {};
        if (waiting_.size() <= kCongestion) {
            lock.unlock();
            changed_();
            lock.lock();
        }
    }
}

} // namespace mervo::mcp
