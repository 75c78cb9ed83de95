#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace mervo {

/// The owner's one global setting, from the most guarded to the least: a smaller value is stricter.
enum class AutonomyMode { panic, copilote, yolo };

inline constexpr std::array kAllAutonomyModes{AutonomyMode::panic, AutonomyMode::copilote, AutonomyMode::yolo};

/// The word stored in `config.json` ("copilote").
std::string_view rawValue(AutonomyMode mode);

/// The mode of a stored word, nothing for any other text.
std::optional<AutonomyMode> autonomyMode(std::string_view text);

/// What the owner reads ("Copilote"), and the sentence below it.
std::string_view title(AutonomyMode mode);
std::string_view description(AutonomyMode mode);

} // namespace mervo
