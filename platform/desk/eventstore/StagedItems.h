#pragma once

#include "platform/desk/contentlines/ContentDocument.h"
#include "platform/desk/vdir/VdirCommit.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace mervo::desk {

/// The files that are to change together, as they were read and as they are to be. Throws VdirError.
class StagedItems {
public:
    /// The file as it will be. Read from the disk where nothing was staged for it; then it must have the stamp, where
    /// one is given.
    ContentDocument& open(
        const std::filesystem::path& root, const std::filesystem::path& file, const std::optional<ItemStamp>& expected);
    /// A new file below a folder that is there, or staged.
    void create(const std::filesystem::path& root, const std::filesystem::path& file, std::string bytes);
    /// The file "displayname" or "color" of a folder; empty takes it away.
    void setMetadata(const std::filesystem::path& root, const std::filesystem::path& file, std::string bytes);

    bool hasFolder(const std::filesystem::path& folder) const { return made_.contains(folder); }
    void makeFolder(const std::filesystem::path& root, const std::filesystem::path& folder,
        std::map<std::string, std::string> files);
    /// With all the files in it, which must be these and what is hidden. What was staged for them is forgotten.
    void removeFolder(const std::filesystem::path& root, const std::filesystem::path& folder,
        const std::map<std::string, std::string>& files);

    void commit();

private:
    struct File {
        std::filesystem::path root;
        std::optional<std::string> old; ///< nothing: it is new
        std::unique_ptr<ContentDocument> document; ///< null: `bytes` counts
        std::string bytes;
    };
    struct Folder {
        std::filesystem::path root;
        std::map<std::string, std::string> files;
    };
    void put(std::map<std::filesystem::path, VdirCommit>& commits);

    std::map<std::filesystem::path, File> files_;
    std::map<std::filesystem::path, Folder> made_, removed_;
};

/// What a save says when another program was there first.
[[noreturn]] void failChanged(const std::filesystem::path& file);

} // namespace mervo::desk
