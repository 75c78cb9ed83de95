#pragma once

#include "core/policy/PendingStore.h"
#include "platform/files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace mervo {

/// Reads the queue repeatedly. A file is read again only if its stamp says that it may have changed, so a refresh with
/// hundreds of waiting actions costs a stat of each. One thread.
class QueueReader {
public:
    explicit QueueReader(std::filesystem::path folder);

    /// Brings `actions` up to date; true if they changed.
    bool refresh();
    /// Oldest first, without damaged files.
    const std::vector<PendingAction>& actions() const { return actions_; }
    /// Why the last refresh could not read the folder, and so changed nothing. A folder that does not exist is empty.
    std::error_code failure() const { return failure_; }
    /// The number of damaged files: unreadable, undecodable, or with another id inside. One that has just changed does
    /// not count yet, since it may still be being written.
    std::size_t damaged() const;

private:
    struct Known {
        platform::FileStamp stamp;
        bool isSettled = false; ///< the stamp told so when the file was read
        std::optional<PendingAction> action;
        std::uint64_t seenAt = 0; ///< the refresh that met the file last
    };
    /// Brings one file up to date; true if its action changed.
    bool look(const std::filesystem::path& file, Known& known) const;
    bool forgetUnseen();

    std::filesystem::path folder_;
    std::unordered_map<std::string, Known> known_; ///< by file name
    std::uint64_t refreshes_ = 0;
    std::vector<PendingAction> actions_;
    std::error_code failure_;
};

} // namespace mervo
