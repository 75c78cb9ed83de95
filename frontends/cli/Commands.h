#pragma once

#include "frontends/cli/Command.h"

#include <array>

/// Every command of `mervo`, in the order of the help. None approves, rejects, edits a rule, raises autonomy or reads
/// the audit trail: whatever an agent can start must not be able to.
namespace mervo::cli {

extern const Command kRun;
extern const Command kTools;
extern const Command kExplain;
extern const Command kPending;
extern const Command kAutonomy;
extern const Command kAutoRun;
extern const Command kAutoDone;
extern const Command kPermissions;
extern const Command kBootstrapPermissions;
extern const Command kSecret;
extern const Command kDoctor;

inline constexpr std::array kCommands{&kRun, &kTools, &kExplain, &kPending, &kAutonomy, &kAutoRun, &kAutoDone,
    &kPermissions, &kBootstrapPermissions, &kSecret, &kDoctor};

} // namespace mervo::cli
