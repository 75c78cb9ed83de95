#pragma once

#include "platform/descriptor.h"
#include "platform/files.h"

#include <optional>
#include <string>
#include <vector>

namespace mervo::jobs {

/// Tells what changes in the folders between launchctl and the runner, and when the machine's time zone does.
class FolderWatch {
public:
    enum class Place {
        loaded, ///< a job came, went or was replaced
        requests, ///< a job shall start
        timeZone,
        everything ///< more than the system kept: all must be looked at
    };
    struct Change {
        Place place;
        std::string name; ///< the job's; empty for the last two places
    };

    /// The folders must be there. Throws std::system_error.
    FolderWatch();

    /// Whether the folder of the loaded jobs is still the one under its name.
    bool isCurrent() const;
    int descriptor() const { return descriptor_.get(); }
    /// What has happened since the last time, in order. Does not wait.
    std::vector<Change> take();

private:
    platform::Descriptor descriptor_;
    std::optional<platform::FileStamp> folder_;
    int loaded_ = -1, requests_ = -1, zone_ = -1; ///< the system's numbers of the watches
};

} // namespace mervo::jobs
