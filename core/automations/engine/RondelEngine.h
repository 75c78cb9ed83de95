#pragma once

#include "core/automations/model/Automation.h"

#include <filesystem>
#include <string_view>
#include <vector>

/// Operations on the automations of the home directory. Keeps no state: each call reads the folders again.
namespace mervo::RondelEngine {

/// The root of the engine's files: the home directory.
std::filesystem::path home();
std::filesystem::path automationsDir();
/// The log of an automation's runs; an empty path if no automation can have this name.
std::filesystem::path logURL(std::string_view name);

/// Every folder that holds a readable loop.json, sorted by name. Never throws: what cannot be read is left out.
std::vector<Automation> list() noexcept;

} // namespace mervo::RondelEngine
