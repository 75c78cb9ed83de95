#pragma once

#include "core/policy/Tool.h"

#include <span>

/// The tools with which agents manage automations.
namespace mervo::AutomationTools {

/// The tools of this family.
std::span<const Tool* const> all();

const Tool& list();
const Tool& log();
const Tool& add();
const Tool& edit();
const Tool& enable();
const Tool& disable();
const Tool& run();
const Tool& remove();

} // namespace mervo::AutomationTools
