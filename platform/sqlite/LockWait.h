#pragma once

#include <chrono>
#include <optional>
#include <random>

namespace mervo::sqlite {

/// How a connection waits for the lock of another one: it asks again after 0.5 to 1.5 ms at random, up to a bound, so
/// that many writers at once each get their turn. SQLite's own timeout sleeps longer after each attempt, so a
/// waiting writer rarely wakes while the lock is free, and can starve.
class LockWait {
public:
    explicit LockWait(std::chrono::milliseconds longest);

    std::chrono::milliseconds longest() const noexcept { return longest_; }
    /// Waits count from this moment, which may have passed already; without one, from where each begins. Within a
    /// transaction (its commit) a wait always has the whole time.
    void countFrom(std::optional<std::chrono::steady_clock::time_point> moment) { countedFrom_ = moment; }

    /// Pauses once; false when the time is up. `attempt` counts from 0 within one wait.
    bool pause(int attempt, bool isInTransaction);

private:
    std::chrono::milliseconds longest_;
    std::optional<std::chrono::steady_clock::time_point> countedFrom_;
    std::chrono::steady_clock::time_point waitingSince_;
    std::minstd_rand pauses_{std::random_device{}()};
};

/// While it lives, its thread waits for a lock in vain once at most: after that whatever is locked fails at once,
/// through any connection.
class OneWait {
public:
    OneWait() noexcept;
    ~OneWait();
    OneWait(const OneWait&) = delete;
    OneWait& operator=(const OneWait&) = delete;

private:
    friend class LockWait;
    OneWait* outer_;
    bool isOver_ = false;
};

} // namespace mervo::sqlite
