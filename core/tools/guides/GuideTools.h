#pragma once

#include "core/policy/Tool.h"

#include <span>

namespace mervo::Tools {

const Tool& howItWorks();

} // namespace mervo::Tools

namespace mervo::GuideTools {

/// The tools of this family.
std::span<const Tool* const> all();

} // namespace mervo::GuideTools
