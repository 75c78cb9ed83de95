#include "platform/applescript/values/Limits.h"

#include "platform/applescript/values/ScriptError.h"

#include <limits>
#include <string>
#include <time.h>

namespace mervo::applescript {

namespace {

struct State {
    std::size_t bytes = 0;
    std::size_t byteLimit = Limits::kDefaultBytes;
    std::uint64_t untilLook = std::numeric_limits<std::uint64_t>::max(); // steps until a bound is looked at
    bool countsSteps = false;
    std::chrono::nanoseconds processorTime{};
    std::chrono::nanoseconds processorEnd{}; // on the thread's clock
    std::chrono::nanoseconds lastLook{}; // at the thread's clock, on the coarse one
    std::uintptr_t floor = 0;
};
constinit thread_local State state;

std::uintptr_t stackPointer() noexcept
{
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

constexpr std::uint64_t kStepsBetweenGlances = 256; // some microseconds
constexpr std::chrono::milliseconds kBetweenLooks{5}; // asking for the thread's time is a system call

std::chrono::nanoseconds now(clockid_t clock) noexcept
{
    timespec time{};
    clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::string seconds(std::chrono::nanoseconds time)
{
    return std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) + " s of processor time";
}

void lookAtTime()
{
    if (now(CLOCK_THREAD_CPUTIME_ID) >= state.processorEnd) {
        state.untilLook = 1; // thrown at the next step again
        throw ScriptError(ErrorNumber::timedOut, "The script was stopped after " + seconds(state.processorTime) + ".");
    }
    state.lastLook = now(CLOCK_MONOTONIC_COARSE);
}

std::uint64_t untilFirstLook(std::uint64_t steps, std::chrono::nanoseconds processorTime)
{
    if (steps != 0)
        return steps + 1;
    return processorTime.count() != 0 ? kStepsBetweenGlances : std::numeric_limits<std::uint64_t>::max();
}

} // namespace

void Limits::charge(std::size_t bytes)
{
    if (bytes > state.byteLimit || state.bytes > state.byteLimit - bytes)
        throw ScriptError::outOfMemory();
    state.bytes += bytes;
}

void Limits::discharge(std::size_t bytes) noexcept
{
    state.bytes -= bytes < state.bytes ? bytes : state.bytes;
}

void Limits::enter()
{
    if (stackPointer() < state.floor)
        throw ScriptError::stackOverflow();
}

void Limits::step()
{
    if (--state.untilLook > 0)
        return;
    state.untilLook = 1;
    if (state.countsSteps)
        throw ScriptError(ErrorNumber::timedOut, "The script took too many steps.");
    glance();
    state.untilLook = kStepsBetweenGlances;
}

void Limits::glance()
{
    if (state.processorTime.count() != 0 && now(CLOCK_MONOTONIC_COARSE) - state.lastLook >= kBetweenLooks)
        lookAtTime();
}

Limits::Scope::Scope(std::uint64_t steps, std::size_t bytes, std::chrono::nanoseconds processorTime)
    : saved_{state.byteLimit, state.untilLook, state.countsSteps, state.processorTime, state.processorEnd,
        state.lastLook, state.floor}
{
    const std::uintptr_t here = stackPointer();
    state.byteLimit = bytes;
    state.untilLook = untilFirstLook(steps, processorTime);
    state.countsSteps = steps != 0;
    state.processorTime = processorTime;
    state.processorEnd = now(CLOCK_THREAD_CPUTIME_ID) + processorTime;
    state.lastLook = now(CLOCK_MONOTONIC_COARSE);
    state.floor = here > kStackBytes ? here - kStackBytes : 0;
}

Limits::Scope::~Scope()
{
    state.byteLimit = saved_.byteLimit;
    state.untilLook = saved_.untilLook;
    state.countsSteps = saved_.countsSteps;
    state.processorTime = saved_.processorTime;
    state.processorEnd = saved_.processorEnd;
    state.lastLook = saved_.lastLook;
    state.floor = saved_.floor;
}

} // namespace mervo::applescript
