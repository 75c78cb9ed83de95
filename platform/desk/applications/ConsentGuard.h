#pragma once

#include "platform/applescript/values/Application.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// Lets a script use an application as far as the owner consents to it: its scope in the record is its bundle id.
/// `sections` are all that desk.toml may have; a mistake in it is the error where nothing is decided.
applescript::ApplicationRegistry::Guard consentGuard(Sections sections);

} // namespace mervo::desk
