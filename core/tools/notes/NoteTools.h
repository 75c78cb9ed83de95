#pragma once

#include "core/policy/Tool.h"

namespace mervo::Tools {

const Tool& noteList();
const Tool& noteFind();
const Tool& noteRead();
const Tool& noteAdd();
const Tool& noteOpen();
const Tool& noteUpdate();
const Tool& noteDelete();

} // namespace mervo::Tools
