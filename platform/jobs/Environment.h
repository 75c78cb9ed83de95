#pragma once

#include <string_view>

namespace mervo::jobs {

/// Whether a variable belongs to every program of a session: who and where the user is, language, display, session bus.
/// What else the process was given that started the runner is not meant for jobs.
bool isSessionVariable(std::string_view name) noexcept;

/// Takes everything else out of this process's environment.
void keepSessionVariables();

} // namespace mervo::jobs
