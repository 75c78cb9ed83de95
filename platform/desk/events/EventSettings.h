#pragma once

#include "platform/desk/settings/Configuration.h"
#include "platform/eventkit.h"

#include <filesystem>
#include <string>

/// Calendars and lists of reminders in desk.toml:
///
///     [calendars]
///     path = "~/.calendars" # folders of .ics files at any depth; default: calendars below the desk's data folder
///     default = "Home"      # where new events go; made at the first one
///     [reminders]
///     path = "~/.calendars" # default: reminders below the data folder; may be the same as the calendars'
///     default = "Reminders"
namespace mervo::desk {

void checkEventSection(const Table& table);
void checkReminderSection(const Table& table);
inline constexpr Section kEventSection{"calendars", "[calendars]", checkEventSection};
inline constexpr Section kReminderSection{"reminders", "[reminders]", checkReminderSection};

struct EventSettings {
    std::filesystem::path root;
    std::string defaultTitle; ///< never empty
    bool isDefaultNamed = false; ///< the owner wrote it down
};
EventSettings eventSettings(const Configuration& configuration, platform::Entity entity);

} // namespace mervo::desk
