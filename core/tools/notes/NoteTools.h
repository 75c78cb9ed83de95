#pragma once

#include "core/policy/Tool.h"

#include <span>

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

} // namespace mervo::NoteTools
