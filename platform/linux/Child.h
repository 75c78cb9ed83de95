#pragma once

#include "platform/descriptor.h"
#include "platform/process.h"

#include <optional>
#include <sys/types.h>

namespace mervo::platform {

/// A started program. One that is dropped before its end (memory ran out while reading) is ended and reaped.
class Child {
public:
    Child(pid_t id, bool leadsGroup);
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    /// Readable when it has ended; closed on a system that cannot tell.
    const Descriptor& end() const { return end_; }

    /// To the program and, where it leads one, its whole group. Before `wait`, while the number is still its own.
    void signal(int number) const noexcept;

    /// The wait status; nothing when the process has asked not to be told of its children.
    std::optional<int> wait() noexcept;

private:
    pid_t id_;
    bool leadsGroup_;
    Descriptor end_;
};

/// Fills in exit status or signal from a wait status.
void setStatus(Outcome& outcome, int status);

/// A descriptor above the standard three, so that placing one in the child never overwrites another. Throws NotStarted.
Descriptor aboveStandard(Descriptor descriptor);

} // namespace mervo::platform
