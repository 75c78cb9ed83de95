#pragma once

#include "platform/desk/vdir/ItemFile.h"

#include <filesystem>
#include <string>
#include <vector>

/// Folders of items, one file each, as vdirsyncer, khal, todoman and khard share them (the format "vdir").
namespace mervo::desk {

/// An item's file, not read.
struct VdirItem {
    std::string name; ///< of the file
    ItemStamp stamp;
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
VdirListing listVdir(const std::filesystem::path& root, const std::string& extension);

/// The color as "#rrggbb" in lower case; empty for what is none ("#rrggbbaa" loses its end).
std::string readColor(std::string text);

} // namespace mervo::desk
