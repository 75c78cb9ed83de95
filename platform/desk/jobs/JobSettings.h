#pragma once

#include "platform/desk/settings/Configuration.h"

/// Jobs in desk.toml:
///
///     [jobs]
///     runner = "auto" # who starts them: "systemd", "own", "none", or systemd where the user's manager runs
namespace mervo::desk {

enum class JobRunner { automatic, systemd, own, none };

void checkJobSection(const Table& jobs);
inline constexpr Section kJobSection{"jobs", "[jobs]", checkJobSection};

JobRunner jobRunner(const Configuration& configuration);

} // namespace mervo::desk
