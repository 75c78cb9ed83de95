#pragma once

#include "platform/desk/vdir/ItemFile.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

/// One step of a commit: a rename between the folder where changes are staged and its place, both of one file system.
namespace mervo::desk {

struct StagedOperation {
    enum class Kind { create, replace, remove, makeFolder, removeFolder };
    Kind kind = Kind::create;
    std::filesystem::path target; ///< absolute
    std::filesystem::path staged; ///< where the new one waits, and the old one lies afterwards
    ItemStamp made = {}; ///< of the new file; of a new folder the inode alone counts
};

/// What the target must have held, by the fingerprint of its bytes.
struct ExpectedBytes {
    std::size_t size = 0;
    std::uint64_t print = 0;
};

/// Moves the new one to its place and the old one out of it. Throws VdirError when the target is not what is expected
/// or the system refuses; then nothing has changed. `expected` counts for replace and remove, `contents` (what the
/// folder may hold, by name) for removeFolder.
void apply(const StagedOperation& operation, const ExpectedBytes& expected,
    const std::map<std::string, ExpectedBytes>& contents);

/// Takes the step back if it was done. What another program has put in its place since then stays. False when the
/// system refuses.
bool undo(const StagedOperation& operation) noexcept;

} // namespace mervo::desk
