#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The system explains itself in two texts, resources of the bundle. Read on every call; never fails: a resource that
/// cannot be read as UTF-8 is replaced by a short built-in text.
namespace mervo::MervoGuides {

std::string llm(); ///< for the agent
std::string user(); ///< for the person

/// The shortest statement of the contract for each reader.
inline constexpr std::string_view kBuiltInLlm =
    "Mervo: you propose, the human approves. Effects are read / create / destructive; destructive actions queue for "
    "human approval below YOLO mode. You cannot approve your own actions. Call read-only tools to ground yourself "
    "before mutating.";
inline constexpr std::string_view kBuiltInUser =
    "Mervo is an auditable agent for your Mac. You set the autonomy level (Panic / Copilote / YOLO) on the Policy "
    "tab; risky actions wait for your approval in the menu-bar cockpit. The assistant can never approve its own "
    "actions.";

/// The text of a file, or the built-in one.
std::string text(const std::filesystem::path& file, std::string_view builtIn);

} // namespace mervo::MervoGuides
