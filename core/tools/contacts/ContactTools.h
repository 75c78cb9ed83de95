#pragma once

#include "core/policy/Tool.h"

#include <span>

namespace mervo::Tools {

const Tool& contactFind();
const Tool& contactAdd();

} // namespace mervo::Tools

namespace mervo::ContactTools {

/// The tools of this family.
std::span<const Tool* const> all();

} // namespace mervo::ContactTools
