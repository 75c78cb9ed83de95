#pragma once

#include "platform/desk/settings/Configuration.h"

/// Consent in desk.toml:
///
///     [consent]
///     ask = true # an application that nothing was decided for is asked for; false, the default: it may be used
namespace mervo::desk {

/// What becomes of the use of a scope that nothing was decided for.
enum class WhenUndecided { allow, ask };

void checkConsentSection(const Table& consent);
inline constexpr Section kConsentSection{"consent", "[consent]", checkConsentSection};

WhenUndecided whenUndecided(const Configuration& configuration);

} // namespace mervo::desk
