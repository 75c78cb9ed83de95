#pragma once

#include <filesystem>
#include <string>

namespace mervo::platform {

/// Opening files and URLs in other programs, and the entry in the dock. Main thread only; never blocks.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    /// Opens a file in the program for its type, or a URL in the program for its scheme. False if it is known at once
    /// that the desktop has no program for it.
    virtual bool openFile(const std::filesystem::path& file) = 0;
    virtual bool openUrl(const std::string& url) = 0;
    /// Shows a file selected in its folder.
    virtual bool revealFile(const std::filesystem::path& file) = 0;

    /// Sets the number on the application's entry in the dock; an empty text removes it.
    virtual void setBadge(const std::string& label) = 0;
};

} // namespace mervo::platform
