#include "platform/applescript/Limits.h"

#include "platform/applescript/ScriptError.h"

namespace mervo::applescript {

namespace {

struct State {
    std::size_t bytes = 0;
    std::size_t byteLimit = Limits::kDefaultBytes;
    std::uint64_t steps = 0;
    bool countsSteps = false;
    std::uintptr_t floor = 0;
};
constinit thread_local State state;

std::uintptr_t stackPointer() noexcept
{
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
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
    if (!state.countsSteps)
        return;
    if (state.steps == 0)
        throw ScriptError(ErrorNumber::timedOut, "The script took too many steps.");
    --state.steps;
}

Limits::Scope::Scope(std::uint64_t steps, std::size_t bytes)
    : saved_{state.byteLimit, state.steps, state.countsSteps, state.floor}
{
    const std::uintptr_t here = stackPointer();
    state.byteLimit = bytes;
    state.steps = steps;
    state.countsSteps = steps != 0;
    state.floor = here > kStackBytes ? here - kStackBytes : 0;
}

Limits::Scope::~Scope()
{
    state.byteLimit = saved_.byteLimit;
    state.steps = saved_.steps;
    state.countsSteps = saved_.countsSteps;
    state.floor = saved_.floor;
}

} // namespace mervo::applescript
