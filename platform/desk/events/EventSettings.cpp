#include "platform/desk/events/EventSettings.h"

#include "platform/desk/settings/Places.h"
#include "platform/folders.h"

namespace mervo::desk {
namespace {

using platform::Entity;

EventSettings read(const Table& table, const char* where)
{
    table.refuseUnknownKeys({"path", "default"}, where);
    EventSettings settings;
    if (table.contains("path")) {
        settings.root = platform::expandTilde(table.text("path"));
        if (!settings.root.is_absolute())
            table.fail("path", "\"path\" must start with \"/\" or \"~/\".");
    }
    if (table.contains("default")) {
        settings.defaultTitle = table.text("default");
        settings.isDefaultNamed = true;
    }
    return settings;
}

} // namespace

void checkEventSection(const Table& table)
{
    read(table, "of \"calendars\"");
}

void checkReminderSection(const Table& table)
{
    read(table, "of \"reminders\"");
}

EventSettings eventSettings(const Configuration& configuration, Entity entity)
{
    const bool isEvents = entity == Entity::events;
    const auto table = configuration.section(isEvents ? kEventSection : kReminderSection);
    EventSettings settings = table ? read(*table, "of this section") : EventSettings();
    if (settings.root.empty())
        settings.root = dataFolder() / (isEvents ? "calendars" : "reminders");
    if (settings.defaultTitle.empty())
        settings.defaultTitle = isEvents ? "Home" : "Reminders";
    return settings;
}

} // namespace mervo::desk
