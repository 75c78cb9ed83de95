#include "platform/desk/running/DeskApplication.h"

#include "platform/ascii.h"

#include <algorithm>
#include <array>

namespace mervo::desk {
namespace {

constexpr std::array kIdentities{
    ApplicationIdentity{DeskApplication::mail, "Mail", "com.apple.mail"},
    ApplicationIdentity{DeskApplication::calendar, "Calendar", "com.apple.iCal"},
    ApplicationIdentity{DeskApplication::reminders, "Reminders", "com.apple.reminders"},
    ApplicationIdentity{DeskApplication::contacts, "Contacts", "com.apple.AddressBook"},
    ApplicationIdentity{DeskApplication::notes, "Notes", "com.apple.Notes"},
    ApplicationIdentity{DeskApplication::messages, "Messages", "com.apple.MobileSMS"},
    ApplicationIdentity{DeskApplication::finder, "Finder", "com.apple.finder"},
    ApplicationIdentity{DeskApplication::systemEvents, "System Events", "com.apple.systemevents"},
};

std::optional<DeskApplication> find(std::string_view text, std::string_view ApplicationIdentity::*key)
{
    const auto found = std::ranges::find_if(kIdentities,
        [&](const ApplicationIdentity& entry) { return platform::ascii::equalsIgnoringCase(entry.*key, text); });
    return found == kIdentities.end() ? std::nullopt : std::optional(found->application);
}

} // namespace

std::span<const ApplicationIdentity> applicationIdentities()
{
    return kIdentities;
}

const ApplicationIdentity& identityOf(DeskApplication application)
{
    return *std::ranges::find(kIdentities, application, &ApplicationIdentity::application);
}

std::optional<DeskApplication> applicationNamed(std::string_view name)
{
    return find(name, &ApplicationIdentity::name);
}

std::optional<DeskApplication> applicationWithBundleId(std::string_view bundleId)
{
    return find(bundleId, &ApplicationIdentity::bundleId);
}

bool alwaysRuns(DeskApplication application)
{
    return application == DeskApplication::finder || application == DeskApplication::systemEvents;
}

} // namespace mervo::desk
