#pragma once

#include "platform/jobs/Job.h"

#include <filesystem>
#include <string>
#include <vector>

/// The jobs that systemd's manager of this user looks after: units in the user's folder, and `systemctl --user`. Units
/// that somebody else has written are never touched.
namespace mervo::jobs::systemd {

/// Whether the user's manager answers on its socket.
bool runs();
/// Whether the manager lives without a log-in of the user (loginctl enable-linger).
bool lingers();

/// Sorted.
std::vector<std::string> loaded();
bool isLoaded(const std::string& label);
/// The property list of a loaded job; empty when it is not loaded.
std::filesystem::path propertyList(const std::string& label);

/// Writes the units, has them read, and starts the timer. Throws std::runtime_error; the units are gone then.
void load(const Job& job);
/// False when it is not loaded. A run in progress goes on. Throws std::runtime_error with what systemctl says; the
/// units are gone all the same.
bool unload(const std::string& label);
/// A run now, unless one is in progress. Throws std::runtime_error.
void requestRun(const std::string& label);

} // namespace mervo::jobs::systemd
