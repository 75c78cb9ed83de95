#pragma once

#include "core/foundation/AutonomyMode.h"

namespace mervo {

/// What the status icon says, independent of how it is drawn.
struct StatusIconState {
    enum class Attention { none, proposal, approval, error };

    AutonomyMode autonomy = AutonomyMode::copilote;
    Attention attention = Attention::none;
    bool working = false;

    bool operator==(const StatusIconState&) const = default;
};

} // namespace mervo
