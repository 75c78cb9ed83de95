#include "frontends/mcp/CallPool.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace mervo::mcp {

namespace {

std::size_t sizeOf(const ToolCall& call)
{
    std::size_t bytes = call.id.size() + call.actor.size();
    for (const auto& [name, value] : call.args)
        bytes += name.size() + value.size();
    return bytes;
}

} // namespace

CallPool::CallPool(Outlets outlets)
    : outlets_(std::move(outlets))
{
}

CallPool::~CallPool()
{
    {
        std::scoped_lock guard(mutex_);
        closing_ = true;
        waiting_.clear();
    }
    wake_.notify_all();
    for (std::thread& worker : workers_)
        worker.join();
}

CallPool::Submission CallPool::submit(ToolCall call)
{
    const std::size_t bytes = sizeOf(call);
    {
        std::scoped_lock guard(mutex_);
        const auto hasId = [&](const Entry& entry) { return !entry.cancelled && entry.call.id == call.id; };
        if (std::any_of(waiting_.begin(), waiting_.end(), hasId)
            || std::any_of(running_.begin(), running_.end(), hasId))
            return Submission::duplicate;
        if (waiting_.size() >= kMostWaiting || waitingBytes_ + bytes > kMostWaitingBytes)
            return Submission::full;
        waiting_.push_back({.call = std::move(call), .bytes = bytes});
        waitingBytes_ += bytes;
        if (!startWorkerIfNeeded()) {
            waiting_.pop_back();
            waitingBytes_ -= bytes;
            return Submission::full;
        }
    }
    wake_.notify_one();
    return Submission::accepted;
}

/// False when there is no thread at all and none can be started.
bool CallPool::startWorkerIfNeeded()
{
    if (idleWorkers_ >= waiting_.size() || workers_.size() >= kMostRunning)
        return true;
    try {
        workers_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        return !workers_.empty();
    }
    return true;
}

bool CallPool::cancel(std::string_view id)
{
    std::scoped_lock guard(mutex_);
    const auto hasId = [&](const Entry& entry) { return !entry.cancelled && entry.call.id == id; };
    const auto waits = std::find_if(waiting_.begin(), waiting_.end(), hasId);
    if (waits != waiting_.end()) {
        waitingBytes_ -= waits->bytes;
        waiting_.erase(waits);
        return true;
    }
    const auto runs = std::find_if(running_.begin(), running_.end(), hasId);
    if (runs == running_.end())
        return false;
    runs->cancelled = true;
    return true;
}

void CallPool::dropWaiting()
{
    std::scoped_lock guard(mutex_);
    waiting_.clear();
    waitingBytes_ = 0;
}

bool CallPool::idle() const
{
    std::scoped_lock guard(mutex_);
    return waiting_.empty() && running_.empty();
}

void CallPool::work()
{
    std::unique_lock lock(mutex_);
    while (true) {
        ++idleWorkers_;
        wake_.wait(lock, [this] { return closing_ || !waiting_.empty(); });
        --idleWorkers_;
        if (closing_)
            return;
        const auto entry = waiting_.begin();
        waitingBytes_ -= entry->bytes;
        running_.splice(running_.end(), waiting_, entry);
        lock.unlock();
        std::string line = outlets_.perform(entry->call);
        lock.lock();
        // The answer leaves before the call counts as finished, so that an idle pool has sent all it had to.
        if (!entry->cancelled) {
            entry->cancelled = true; // a cancellation from here on comes too late
            lock.unlock();
            outlets_.send(std::move(line));
            lock.lock();
        }
        running_.erase(entry);
        if (running_.empty() && waiting_.empty())
            outlets_.becameIdle();
    }
}

} // namespace mervo::mcp
