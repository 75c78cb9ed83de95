#pragma once

#include "core/policy/Tool.h"

namespace mervo::Tools {

const Tool& finderReveal();
const Tool& appQuit();

} // namespace mervo::Tools
