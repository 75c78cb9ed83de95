#pragma once

#include "platform/desk/vdir/ItemFile.h"
#include "platform/files.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Folders of items, one file each, as vdirsyncer, khal, todoman and khard share them (the format "vdir").
namespace mervo::desk {

/// An item's file, not read.
struct VdirItem {
    std::string name; ///< of the file
    ItemStamp stamp;
    platform::FileStamp status; ///< another one after every change, also of a program that sets times
};

/// A file with an item's name that is none: a folder, a pipe, a device.
struct SkippedFile {
    std::filesystem::path file;
    std::string why;
};

/// A folder that holds items, or that has no folders in it.
struct VdirCollection {
    std::filesystem::path folder = {};
    std::string id = {}; ///< its path below the root; "." for the root itself
    std::string title = {}; ///< what its file "displayname" says, else the folder's name
    std::string color = {}; ///< "#rrggbb" from its file "color"; else empty
    bool isWritable = true;
    bool hasFolders = false; ///< other collections may lie in it
    std::vector<VdirItem> items = {}; ///< by name
    /// While the folder has this stamp, the names of its items are these. Nothing: that is not sure, because it changed
    /// a moment ago, or because something else lies in it.
    std::optional<platform::FileStamp> stamp = {};
};

/// What lies below a root at one moment.
struct VdirListing {
    std::vector<VdirCollection> collections = {}; ///< by id
    std::vector<SkippedFile> skipped = {}; ///< and folders that cannot be read
    std::string fault = {}; ///< why the root cannot be read; empty: it can, or it is not there
};

/// The root itself is a collection only where it holds items. Hidden folders and files are left out, links to folders
/// are followed (each folder counts once), and nothing that lies more than 16 levels down is looked at. A root that is
/// not there holds nothing. `extension` is ".ics" or ".vcf".
///
/// `recall` spares the listing of folders: it may give the names of a folder's items, sorted, where they are known from
/// a VdirCollection of this stamp. They are views of texts
/// that end with NUL and live as long as the call. Each item is looked at in any case, since
/// a program that writes a file in place leaves its folder's stamp as it was.
using RecallNames = std::function<std::optional<std::vector<std::string_view>>(
    const std::filesystem::path& folder, const platform::FileStamp& stamp)>;
VdirListing listVdir(
    const std::filesystem::path& root, const std::string& extension, const RecallNames& recall = nullptr);

/// The color as "#rrggbb" in lower case; empty for what is none ("#rrggbbaa" loses its end).
std::string readColor(std::string text);

} // namespace mervo::desk
