#pragma once

namespace mervo {

/// What the status icon says, and nothing of how it is drawn.
struct StatusIconState {
    enum class Autonomy { panic, copilote, yolo };
    enum class Attention { none, proposal, approval, error };

    Autonomy autonomy = Autonomy::copilote;
    Attention attention = Attention::none;
    bool working = false;

    bool operator==(const StatusIconState&) const = default;
};

} // namespace mervo
