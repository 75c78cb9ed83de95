#pragma once

#include "core/policy/Tool.h"

#include <span>

namespace mervo::Tools {

const Tool& calFind();
const Tool& calUpdate();
const Tool& calAdd();
const Tool& calDelete();

} // namespace mervo::Tools

namespace mervo::CalendarTools {

/// The tools of this family.
std::span<const Tool* const> all();

} // namespace mervo::CalendarTools
