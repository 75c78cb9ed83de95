#pragma once

#include "platform/desk/running/DeskApplication.h"
#include "platform/desk/settings/Configuration.h"

namespace mervo::desk {

/// Starts the owner's own program for an application, which brings its window forward where it runs already. Reminders
/// without a program of their own are shown by that of the calendar. -10000 with a sentence when there is none, or when
/// it cannot be started.
void showOwnProgram(DeskApplication application, Sections sections);

} // namespace mervo::desk
