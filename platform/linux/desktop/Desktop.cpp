#include "platform/desktop/Desktop.h"

#include "platform/linux/desktop/AutostartLoginItem.h"
#include "platform/linux/desktop/DesktopAppearance.h"
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "platform/linux/desktop/FileDefaults.h"
#include "platform/linux/desktop/FreedesktopNotifier.h"
#include "platform/linux/desktop/PanelTrayHost.h"

namespace mervo::platform {

Desktop connectDesktop(const std::filesystem::path& program)
{
    Desktop desktop;
    desktop.appearance = std::make_unique<DesktopAppearance>();
    desktop.defaults = std::make_unique<FileDefaults>();
    desktop.loginItem = std::make_unique<AutostartLoginItem>(program);
    desktop.notifier = std::make_unique<FreedesktopNotifier>();
    desktop.trayHost = std::make_unique<PanelTrayHost>(*desktop.appearance); // gone before the appearance
    desktop.workspace = std::make_unique<DesktopWorkspace>();
    return desktop;
}

} // namespace mervo::platform
