#pragma once

#include "core/policy/HarnessRunner.h"
#include "frontends/cli/Call.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

/// A verdict of the gate in words, and as JSON. Texts of rules and arguments come from outside: in the words they are
/// made visible and cut with their length announced, in the JSON they are exact.
namespace mervo::cli {

std::string inWords(const Call& call, const HarnessRunner::Explanation& explanation);
nlohmann::ordered_json asJson(const Call& call, const HarnessRunner::Explanation& explanation);

} // namespace mervo::cli
