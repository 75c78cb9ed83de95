#pragma once

#include "platform/desktop/Appearance.h"
#include "platform/desktop/Defaults.h"
#include "platform/desktop/LoginItem.h"
#include "platform/desktop/Notifier.h"
#include "platform/desktop/TrayHost.h"
#include "platform/desktop/Workspace.h"

#include <filesystem>
#include <memory>

/// Everything that the cockpit asks of the person's desktop.
namespace mervo::platform {

struct Desktop {
    std::unique_ptr<Appearance> appearance;
    std::unique_ptr<Defaults> defaults;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<Notifier> notifier;
    std::unique_ptr<TrayHost> trayHost;
    std::unique_ptr<Workspace> workspace;
};

/// The desktop of this session. The application object must exist and outlive the result. `program` is what starts at
/// login.
Desktop connectDesktop(const std::filesystem::path& program);

} // namespace mervo::platform
