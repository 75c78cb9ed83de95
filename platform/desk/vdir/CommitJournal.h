#pragma once

#include "platform/desk/vdir/StagedOperation.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// The steps of a commit as the file that tells the next program of them. Fields end with NUL:
///
///     "mervo-commit 1", then for each step its kind, target below the root, staged name, and the inode, size and
///     modification time (ns) of what was made; "end" closes the list.
std::string writeJournal(const std::filesystem::path& root, const std::vector<StagedOperation>& operations);

/// Nothing for bytes that are no whole journal. Targets that would lie outside the root are no journal either.
std::optional<std::vector<StagedOperation>> readJournal(
    const std::filesystem::path& root, const std::filesystem::path& stage, std::string_view bytes);

} // namespace mervo::desk
