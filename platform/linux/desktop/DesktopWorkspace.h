#pragma once

#include "platform/desktop/Workspace.h"

#include <QString>

namespace mervo::platform {

/// Opens with xdg-open, reveals through org.freedesktop.FileManager1, and numbers the dock's entry with the signal
/// com.canonical.Unity.LauncherEntry, which most docks understand.
class DesktopWorkspace final : public Workspace {
public:
    bool openFile(const std::filesystem::path& file) override;
    bool openUrl(const std::string& url) override;
    bool revealFile(const std::filesystem::path& file) override;
    void setBadge(const std::string& label) override;
};

} // namespace mervo::platform
