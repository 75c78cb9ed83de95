#pragma once

#include "core/policy/Tool.h"

#include <span>

/// The agents' tools for the operator channel. None of them waits for the owner.
namespace mervo::AskTools {

/// The tools of this family.
std::span<const Tool* const> all();

const Tool& ask();
const Tool& answer();
const Tool& answers();
const Tool& harvest(); ///< not audited when it finds nothing
const Tool& tell();
const Tool& remove();

} // namespace mervo::AskTools
