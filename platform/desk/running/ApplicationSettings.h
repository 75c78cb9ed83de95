#pragma once

#include "platform/desk/running/DeskApplication.h"
#include "platform/desk/settings/Configuration.h"

#include <map>
#include <string>

/// The owner's own programs in desk.toml:
///
///     [applications]
///     Mail = "thunderbird"   # name or path of the program that is the owner's Mail
///
/// Mail, Calendar, Reminders, Contacts, Notes and Messages can be named.
namespace mervo::desk {

void checkApplicationSection(const Table& applications);
inline constexpr Section kApplicationSection{"applications", "[applications]", checkApplicationSection};

/// The programs that are named.
std::map<DeskApplication, std::string> namedPrograms(const Configuration& configuration);

} // namespace mervo::desk
