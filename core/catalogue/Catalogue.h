#pragma once

#include "core/policy/Tool.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The one list of everything an agent can do, in the order of publication.
namespace mervo::Tools {

/// Every tool. Built once, on first use, and never changed.
std::span<const Tool* const> all();

/// The tool with exactly this id, or null.
const Tool* find(std::string_view id);

/// Up to `count` ids that look most like a mistyped one, best first; empty when none is near.
std::vector<std::string> closest(std::string_view id, std::size_t count = 3);

} // namespace mervo::Tools
