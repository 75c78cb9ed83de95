#pragma once

#include "platform/descriptor.h"
#include "platform/jobs/Timetable.h"

#include <optional>

namespace mervo::jobs {

/// The system's clocks, and a timer on the one on the wall: the only place that asks for the time.
class WakeTimer {
public:
    /// Throws std::system_error.
    WakeTimer();

    static Moment now();
    /// Readable when the time has come, and when the clock was set or the machine has slept.
    int descriptor() const { return descriptor_.get(); }
    /// Without a time it waits for a change of the clock alone. Takes back what made it readable. False when the clock
    /// was set since the last time: `time` may stem from before that, and must be worked out anew.
    [[nodiscard]] bool set(std::optional<WallTime> time);

private:
    platform::Descriptor descriptor_;
};

} // namespace mervo::jobs
