#pragma once

#include <filesystem>
#include <string>

namespace mervo::platform {

/// What the desktop opens for us, and how we come to its front. Main thread; nothing blocks.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    /// Opens a file in the program for its type, or a URL in the program for its scheme. False when the desktop has
    /// nothing to open it with, as far as that is known at once.
    virtual bool openFile(const std::filesystem::path& file) = 0;
    virtual bool openUrl(const std::string& url) = 0;
    /// Shows a file selected in its folder.
    virtual bool revealFile(const std::filesystem::path& file) = 0;

    /// The number on the application's entry in the desktop's dock; an empty text takes it away.
    virtual void setBadge(const std::string& label) = 0;
};

} // namespace mervo::platform
