#pragma once

#include "core/policy/Tool.h"

namespace mervo::Tools {

const Tool& howItWorks();

} // namespace mervo::Tools
