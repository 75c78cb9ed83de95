#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace mervo::desk {

/// The applications of the desk that can run.
enum class DeskApplication { mail, calendar, reminders, contacts, notes, messages, finder, systemEvents };

struct ApplicationIdentity {
    DeskApplication application;
    std::string_view name; ///< as scripts and people call it: "System Events"
    std::string_view bundleId; ///< "com.apple.systemevents"
};

/// All of them.
std::span<const ApplicationIdentity> applicationIdentities();

const ApplicationIdentity& identityOf(DeskApplication application);

/// Letter case does not count. Nothing for any other name.
std::optional<DeskApplication> applicationNamed(std::string_view name);
std::optional<DeskApplication> applicationWithBundleId(std::string_view bundleId);

/// Finder and System Events: they run as long as the desk does, and nobody ends them.
bool alwaysRuns(DeskApplication application);

} // namespace mervo::desk
