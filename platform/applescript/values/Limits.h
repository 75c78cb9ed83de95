#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace mervo::applescript {

/// What one script may use on the current thread: memory of its values, depth of the stack, processor time and, for
/// tests, steps.
///
/// Exceeding a bound throws ScriptError (-108 for memory, -2706 for depth, -1712 for time and steps). Once time or
/// steps have run out, every further step throws, so that no `try` goes on for long. Time spent waiting does not count.
/// Without a Scope nothing but the default bound of memory applies.
class Limits {
public:
    static constexpr std::size_t kDefaultBytes = std::size_t(1) << 30;
    /// Deep enough for some thousand nested handler calls, well below the usual stack of 8 MiB.
    static constexpr std::size_t kStackBytes = std::size_t(5) << 20;

    /// Some hundred times what a search of 100,000 messages takes.
    static constexpr std::chrono::seconds kProcessorTime{30};
    static constexpr std::size_t kLongText = 4096;

    /// Memory that values hold; `discharge` what was charged.
    static void charge(std::size_t bytes);
    static void discharge(std::size_t bytes) noexcept;
    /// Called by whatever recurses along a script or a value.
    static void enter();
    /// Called once for each statement, round of a loop and part of a value that is walked through.
    static void step();
    /// Called where one step may take long, such as a question to an application: checks the processor time if some
    /// milliseconds of real time have passed since the last check.
    static void glance();
    /// Called with the length of a text that was scanned in one step: glances after a long one.
    static void passed(std::size_t bytes)
    {
        if (bytes >= kLongText)
            glance();
    }

    /// Sets the bounds for its lifetime; the stack is measured from where it stands.
    class Scope {
    public:
        /// No steps, or no time: unlimited. Steps go before time.
        explicit Scope(std::uint64_t steps = 0, std::size_t bytes = kDefaultBytes,
            std::chrono::nanoseconds processorTime = std::chrono::nanoseconds::zero());
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope();

    private:
        struct Saved {
            std::size_t byteLimit;
            std::uint64_t untilLook;
            bool countsSteps;
            std::chrono::nanoseconds processorTime;
            std::chrono::nanoseconds processorEnd;
            std::chrono::nanoseconds lastLook;
            std::uintptr_t floor;
        } saved_;
    };
};

} // namespace mervo::applescript
