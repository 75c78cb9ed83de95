#pragma once

#include "core/policy/Tool.h"

namespace mervo::Tools {

const Tool& calFind();
const Tool& calUpdate();
const Tool& calAdd();
const Tool& calDelete();

} // namespace mervo::Tools
