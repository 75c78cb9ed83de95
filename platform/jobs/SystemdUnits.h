#pragma once

#include "platform/jobs/Job.h"

#include <optional>
#include <stdexcept>
#include <string>

/// A job as units of systemd (systemd.service(5), systemd.timer(5), systemd.exec(5)).
namespace mervo::jobs {

/// The texts of <label>.service and <label>.timer. Without times there is no timer: such a job is started by hand.
struct Units {
    std::string service;
    std::optional<std::string> timer;
};

/// A value that a unit file has no way to write. what() is a sentence.
class NotWritable final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// `job` is to have an absolute program. Both texts begin with a line that names the property list, from which
/// `propertyListOf` reads it. systemd leaves out a time that a change of the clock skips; the timer therefore names the
/// moments of its runs behind such gaps, by the rules of this process's time zone as they are known `now`, for ten
/// years. Throws NotWritable.
Units unitsOf(const Job& job, WallTime now);

/// The property list that a unit was made from; nothing when it is somebody else's unit.
std::optional<std::string> propertyListOf(std::string_view unit);

} // namespace mervo::jobs
