#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What works on this machine and what does not, in words that an owner understands, each with its remedy.
///
/// Reads only: nothing is created, migrated or repaired, also where a look would invite it. Never throws: what cannot
/// be looked at is a finding. Takes as long as the script host and the local applications need to answer.
namespace mervo::Doctor {

enum class State {
    works,
    limited, ///< does its work with less than it could; nothing the owner must do
    broken ///< needs the owner
};

std::string_view rawValue(State state);

struct Check {
    std::string id; ///< "config", "database"
    std::string label; ///< "Settings"
    State state = State::broken;
    std::string detail; ///< what was found
    std::string remedy; ///< what to do; empty when nothing need be done
};

/// Every check, from the ground up.
std::vector<Check> examine();

} // namespace mervo::Doctor
