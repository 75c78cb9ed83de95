#pragma once

#include "core/policy/Tool.h"

#include <span>

namespace mervo::Tools {

const Tool& finderReveal();
const Tool& appQuit();

} // namespace mervo::Tools

namespace mervo::AppTools {

/// The tools of this family.
std::span<const Tool* const> all();

} // namespace mervo::AppTools
