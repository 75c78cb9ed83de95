#pragma once

#include "platform/desk/settings/Configuration.h"

#include <filesystem>

/// The address book in desk.toml:
///
///     [contacts]
///     path = "~/.contacts"   # a folder of .vcf files, or of such folders; default: contacts below the desk's data
namespace mervo::desk {

void checkContactSection(const Table& contacts);
inline constexpr Section kContactSection{"contacts", "[contacts]", checkContactSection};

/// Absolute. It need not be there.
std::filesystem::path contactFolder(const Configuration& configuration);

} // namespace mervo::desk
