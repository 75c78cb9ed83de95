#pragma once

#include "platform/descriptor.h"
#include "platform/end_request.h"
#include "platform/process.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace mervo::platform {

/// What a program reads on standard input, and writes its output and errors to. Without a descriptor: the null device.
struct Streams {
    Descriptor input;
    Descriptor output;
};

/// Runs a program to its end, in a session of its own and without a time limit.
///  - When a request to end comes, its process group is asked to end (SIGTERM) and, what is left after `mercy`, killed.
///    `stopped` is set then.
///  - What it leaves in its process group when it ends goes the same way. Who wants to stay leads a session (setsid).
///  - It is killed when this process ends first, however that comes about.
///  - `started` is told its number, which is that of its session, as soon as there is one.
///  - Nothing of what it writes comes into this process: `output` and `error` stay empty, `command.input` is not used.
/// Throws NotStarted; also for a program or argument that holds a NUL character.
Outcome runAttended(const Command& command, const Streams& streams, EndRequest& request,
    std::chrono::milliseconds mercy, const std::function<void(std::int64_t)>& started = nullptr);

/// The longest single argument that a program can be given, in bytes.
std::size_t longestArgument() noexcept;

} // namespace mervo::platform
