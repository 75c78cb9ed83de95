#pragma once

#include "core/policy/Tool.h"

namespace mervo::Tools {

const Tool& contactFind();
const Tool& contactAdd();

} // namespace mervo::Tools
