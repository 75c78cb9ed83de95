#pragma once

#include <array>
#include <string_view>

namespace mervo {

/// What an action can do to the owner's data; declared by each tool.
enum class Effect {
    read, ///< looks and changes nothing; runs in every mode unless a deny rule stops it
    create, ///< creations and other low-stakes changes; run unattended from `copilote` upwards
    destructive ///< sends, deletions and other acts that wait for a person below `yolo`
};

inline constexpr std::array kAllEffects{Effect::read, Effect::create, Effect::destructive};

std::string_view rawValue(Effect effect);

} // namespace mervo
