#pragma once

#include "core/policy/Tool.h"

#include <span>

/// The operator channel's face toward agents. None of the tools waits for the owner.
namespace mervo::AskTools {

/// The tools of this family.
std::span<const Tool* const> all();

const Tool& ask();
const Tool& answer();
const Tool& answers();
const Tool& harvest(); ///< a cycle that found nothing deserves no audit row
const Tool& tell();
const Tool& remove();

} // namespace mervo::AskTools
