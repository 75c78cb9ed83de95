#pragma once

#include <string>
#include <vector>

namespace mervo::jobs {

/// What stands behind "gui/<uid>" in the words of a command: a label or the path of a property list. The forms
/// "gui/<uid> REST", "gui/<uid>/LABEL" and "REST" mean the same. Throws CommandError for another user's domain, and
/// when there is not exactly one such word.
std::string target(const std::vector<std::string>& words);

/// The label that a target means: itself, or the one in the property list, or the file's name where that is gone.
std::string labelOf(const std::string& target);

} // namespace mervo::jobs
