#pragma once

#include <string>
#include <vector>

/// The state of the platform's own parts: the local applications and what they consist of.
namespace mervo::platform {

/// The result of one check.
struct Finding {
    enum class State {
        works,
        limited, ///< does its work with less than it could; nothing the owner must do
        broken ///< needs the owner
    };

    std::string id; ///< a short name for programs ("mail")
    std::string label; ///< what the owner calls it ("Mail")
    State state = State::broken;
    std::string detail; ///< what was found
    std::string remedy; ///< what the owner can do; empty when nothing need be done

    bool works() const noexcept { return state == State::works; }
};

/// Asks every part, which can take some seconds. Reads only. Never throws: a part that cannot be asked is a finding.
std::vector<Finding> health() noexcept;

} // namespace mervo::platform
