#pragma once

#include "core/policy/Tool.h"

#include <span>
#include <string>
#include <string_view>

namespace mervo::Tools {

const Tool& noteList();
const Tool& noteFind();
const Tool& noteRead();
const Tool& noteAdd();
const Tool& noteOpen();
const Tool& noteUpdate();
const Tool& noteDelete();

} // namespace mervo::Tools

namespace mervo::NoteTools {

/// The tools of this family.
std::span<const Tool* const> all();

/// "7 note(s): a, b, c, d, e..." of names, one a line: what `note.delete` would delete, for the approval card.
std::string previewLine(std::string_view names);

} // namespace mervo::NoteTools
