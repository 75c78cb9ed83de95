#pragma once

#include "platform/descriptor.h"
#include "platform/process.h"

#include <array>
#include <sys/types.h>

namespace mervo::platform {

/// How a program is started: with three standard descriptors and no others, default signal actions, no blocked signal.
struct Start {
    /// What becomes its descriptors 0, 1 and 2: one of ours above 2, or one of the two below.
    std::array<int, 3> standard{};
    bool ownSession = false; ///< it leads a session without a terminal, and a process group of the same number
    bool diesWithUs = false; ///< it is killed when this thread ends, or this process by whatever signal

    static constexpr int kNull = -1; ///< the null device
    static constexpr int kOurs = -2; ///< the one of this process
};

/// The number of the process. Throws NotStarted. What the system does not let die with us: programs that get rights of
/// their own when they start (set-user-id, set-group-id).
pid_t spawn(const Command& command, const Start& start);

} // namespace mervo::platform
