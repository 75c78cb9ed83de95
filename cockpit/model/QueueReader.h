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

/// The queue read again and again. A file is read anew only when it may have changed: a tick over some hundred waiting
/// actions costs one look at each file's stamp. One thread.
class QueueReader {
public:
    explicit QueueReader(std::filesystem::path folder);

    /// Brings `actions` up to date; true when they are others than before.
    bool refresh();
    /// Oldest first. What cannot be read or decoded is left out, and what stands under a name that is not its id.
    const std::vector<PendingAction>& actions() const { return actions_; }
    /// Why the folder could not be read at the last refresh, which then has changed nothing; none where it is not
    /// there.
    std::error_code failure() const { return failure_; }
    /// How many files are left out; one that has just changed is not counted yet, it may be in the middle of being
    /// written.
    std::size_t damaged() const;

private:
    struct Known {
        platform::FileStamp stamp;
        bool isSettled = false; ///< the stamp told so when the file was read
        std::optional<PendingAction> action;
        std::uint64_t seenAt = 0; ///< the refresh that met the file last
    };
    /// Brings one file up to date; true when its action is another one than before.
    bool look(const std::filesystem::path& file, Known& known) const;
    bool forgetUnseen();

    std::filesystem::path folder_;
    std::unordered_map<std::string, Known> known_; ///< by file name
    std::uint64_t refreshes_ = 0;
    std::vector<PendingAction> actions_;
    std::error_code failure_;
};

} // namespace mervo
