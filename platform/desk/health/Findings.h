#pragma once

#include "platform/health.h"

#include <filesystem>
#include <string>
#include <vector>

/// Findings that several kinds of data share.
namespace mervo::desk {

using platform::Finding;

/// Works without a remedy, and is broken with one.
Finding makeFinding(std::string id, std::string label, std::string detail, std::string remedy = {});

/// Whether the program of a configured command can be found. `key` is the command's name in desk.toml; `withoutOne`
/// says what having none means, and is no fault.
Finding commandFinding(std::string id, std::string label, const std::vector<std::string>& command, const char* key,
    std::string withoutOne);

/// The first value that a query answers, or SQLite's words when it fails. Opens the database for reading alone and
/// waits up to 2 s for another program's lock.
std::string askDatabase(const std::filesystem::path& file, const char* sql);

} // namespace mervo::desk
