#pragma once

#include "core/automations/model/Automation.h"

#include <filesystem>
#include <optional>
#include <string_view>

/// An automation as its files describe it: loop.json (LoopObject), AGENT.md, the state (RunState), the lock (RunLock).
/// Readers are tolerant: a damaged runtime file gives defaults and never hides an automation, and a name written by
/// hand may be one that no other operation accepts. Where the files of a valid name are, RunPaths knows.
namespace mervo::AutomationFolder {

/// The automation of a loop.json; nothing when that cannot be read, is not a JSON object or has no name. Never throws.
std::optional<Automation> load(const std::filesystem::path& loopFile, const std::filesystem::path& home) noexcept;

/// Whether a living process holds the automation's lock.
bool isRunning(const std::filesystem::path& home, std::string_view name);

/// A file of an automation below `.runtime`; `folder` is "state", "run" or "logs". Nothing if the name cannot be a file
/// name.
std::optional<std::filesystem::path> runtimeFile(
    const std::filesystem::path& home, std::string_view folder, std::string_view name, std::string_view ending);

} // namespace mervo::AutomationFolder
