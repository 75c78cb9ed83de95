#pragma once

#include "core/policy/Tool.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
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

    /// The call on one line for a person: the tool, then key=value by key, from the arguments themselves (`summary` may
    /// say something else). A key or a value of anything but ASCII letters, digits and "@%+,-./:_" stands in quotation
    /// marks, so that one value cannot look like two arguments; what cannot be seen is shown by its code point. More
    /// than `limit` characters are cut, and the length of the whole call is announced.
    std::string line(std::size_t limit) const;

    /// The compact JSON object of the file, and back; decoding gives nothing for anything else. Encoding throws
    /// ServiceError when a text is not UTF-8.
    std::string encode() const;
    static std::optional<PendingAction> decode(std::string_view json);
};

/// The queue: `<home>/pending/<id>.json`, one file for each action, without index or lock. Any number of
/// processes may queue at once. An id that cannot be a base name (empty, or with a "/") names no action.
///
/// A file is damaged when it cannot be read, is longer than kLongest, holds no whole action, or one whose id is not the
/// file's name: a verdict finds the file by the id, so it would fall on another action. Nothing removes a damaged file.
class PendingStore {
public:
    /// The longest file, in bytes: an action's 16 MiB of arguments stand in it twice (the summary repeats them), and
    /// JSON writes a control character as six bytes.
    static constexpr std::size_t kLongest = 256 * 1024 * 1024;

    struct Damaged {
        std::string name; ///< of the file; any bytes
        std::string reason; ///< "Permission denied", "it holds no whole action"; may quote the file
    };
    struct Listing {
        std::vector<PendingAction> actions; ///< oldest first
        std::vector<Damaged> damaged; ///< by name
        std::error_code failure; ///< why the folder could not be read; none when it is not there
    };

    /// "pending" below the given directory, which is created; a failure shows at the first save.
    explicit PendingStore(const std::filesystem::path& configDir);
    /// The same below the home directory.
    PendingStore();

    /// Writes the file in place and removes it again when that fails. Throws ServiceError with the reason.
    void save(const PendingAction& action) const;
    /// All actions, oldest first; what is damaged is skipped.
    std::vector<PendingAction> list() const;
    std::optional<PendingAction> load(std::string_view id) const;
    /// True when this call removed the file: of several that try, one gets true.
    bool remove(std::string_view id) const;

    /// The action of one file; nothing when it is damaged, for the reason that `why` receives.
    static std::optional<PendingAction> read(const std::filesystem::path& file, std::string* why = nullptr);
    /// All that is below a home directory, which may not exist; creates nothing. A file that changed just now and looks
    /// damaged is looked at twice, 50 ms apart: it may be in the middle of being written.
    static Listing listing(const std::filesystem::path& configDir);
    /// Its actions alone.
    static std::vector<PendingAction> listExisting(const std::filesystem::path& configDir);

    const std::filesystem::path& dir() const { return dir_; }

private:
    std::filesystem::path dir_;
};

} // namespace mervo
