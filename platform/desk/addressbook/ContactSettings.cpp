#include "platform/desk/addressbook/ContactSettings.h"

#include "platform/desk/settings/Places.h"
#include "platform/folders.h"

namespace mervo::desk {
namespace {

std::filesystem::path readFolder(const Table& contacts)
{
    contacts.refuseUnknownKeys({"path"}, "of \"contacts\"");
    if (!contacts.contains("path"))
        return dataFolder() / "contacts";
    std::filesystem::path folder = platform::expandTilde(contacts.text("path"));
    if (!folder.is_absolute())
        contacts.fail("path", "\"path\" must start with \"/\" or \"~/\".");
    return folder;
}

} // namespace

void checkContactSection(const Table& contacts)
{
    readFolder(contacts);
}

std::filesystem::path contactFolder(const Configuration& configuration)
{
    const auto contacts = configuration.section(kContactSection);
    return contacts ? readFolder(*contacts) : dataFolder() / "contacts";
}

} // namespace mervo::desk
