#pragma once

#include "core/policy/Tool.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// A call that waits for a person. A file's existence is the action's state.
struct PendingAction {
    std::string id; ///< 8 upper-case hexadecimal digits, also the file's base name
    std::string tool;
    Args args; ///< as the agent gave them
    std::string summary; ///< the tool's id, a blank, the sorted "key=value" texts joined by blanks
    std::string createdAt;
    std::optional<std::string> preview; ///< the state of the world at queueing time

    bool operator==(const PendingAction&) const = default;

    /// The compact JSON object of the file, and back; decoding gives nothing for anything else. Encoding throws
    /// ServiceError when a text is no UTF-8.
    std::string encode() const;
    static std::optional<PendingAction> decode(std::string_view json);
};

/// The waiting room: `<home>/pending/<id>.json`, one file for each action, without index or lock. Any number of
/// processes may queue at once. An id that cannot be a base name (empty, or with a "/") names no action.
class PendingStore {
public:
    /// "pending" below the given directory, which is created; a failure shows at the first save.
    explicit PendingStore(const std::filesystem::path& configDir);
    /// The same below the home directory.
    PendingStore();

    /// Writes the file in place and removes it again when that fails. Throws ServiceError with the reason.
    void save(const PendingAction& action) const;
    /// All actions, oldest first; what cannot be read or decoded is skipped.
    std::vector<PendingAction> list() const;
    std::optional<PendingAction> load(std::string_view id) const;
    /// True when this call removed the file: of several that try, one gets true.
    bool remove(std::string_view id) const;

    /// The action of one file; nothing when it cannot be read or decoded.
    static std::optional<PendingAction> read(const std::filesystem::path& file);
    /// The actions below a home directory that may not exist; creates nothing.
    static std::vector<PendingAction> listExisting(const std::filesystem::path& configDir);

    const std::filesystem::path& dir() const { return dir_; }

private:
    std::filesystem::path dir_;
};

} // namespace mervo
