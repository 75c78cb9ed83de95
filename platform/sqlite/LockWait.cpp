#include "platform/sqlite/LockWait.h"

#include <thread>
#include <utility>

namespace mervo::sqlite {

namespace {

constexpr int kShortestPauseMicroseconds = 500;
constexpr int kLongestPauseMicroseconds = 1500;

thread_local OneWait* oneWait = nullptr; ///< the innermost of this thread

} // namespace

LockWait::LockWait(std::chrono::milliseconds longest)
    : longest_(longest)
{
}

bool LockWait::pause(int attempt, bool isInTransaction)
{
    const auto now = std::chrono::steady_clock::now();
    if (oneWait != nullptr && oneWait->isOver_)
        return false;
    if (attempt == 0)
        waitingSince_ = isInTransaction ? now : countedFrom_.value_or(now);
    if (now - waitingSince_ > longest_) {
        if (oneWait != nullptr)
            oneWait->isOver_ = true;
        return false;
    }
    std::uniform_int_distribution pause(kShortestPauseMicroseconds, kLongestPauseMicroseconds);
    std::this_thread::sleep_for(std::chrono::microseconds(pause(pauses_)));
    return true;
}

OneWait::OneWait() noexcept
    : outer_(std::exchange(oneWait, this))
{
}

OneWait::~OneWait()
{
    oneWait = outer_;
}

} // namespace mervo::sqlite
