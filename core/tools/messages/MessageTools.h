#pragma once

#include "core/policy/Tool.h"

namespace mervo::Tools {

const Tool& imessageNotify();
const Tool& imessageSend();
const Tool& imessageRead();

} // namespace mervo::Tools
