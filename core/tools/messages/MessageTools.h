#pragma once

#include "core/policy/Tool.h"

#include <span>

namespace mervo::Tools {

const Tool& imessageNotify();
const Tool& imessageSend();
const Tool& imessageRead();

} // namespace mervo::Tools

namespace mervo::MessageTools {

/// The tools of this family.
std::span<const Tool* const> all();

} // namespace mervo::MessageTools
