#pragma once

#include "core/automations/model/Automation.h"

#include <filesystem>
#include <string_view>
#include <vector>

/// The automations of the home directory. No state in memory: each call reads the folders as they are now.
namespace mervo::RondelEngine {

/// The root of the engine's files: the home directory.
std::filesystem::path home();
std::filesystem::path automationsDir();
/// The log of an automation's runs; an empty path for a name that no automation can have.
std::filesystem::path logURL(std::string_view name);

/// Every folder that holds a readable loop.json, sorted by name. Never throws: what cannot be read is left out.
std::vector<Automation> list() noexcept;

} // namespace mervo::RondelEngine
