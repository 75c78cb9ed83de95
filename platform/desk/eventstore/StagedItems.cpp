#include "platform/desk/eventstore/StagedItems.h"

#include "platform/desk/eventstore/ItemEdits.h"
#include "platform/files.h"

#include <fmt/format.h>

namespace mervo::desk {

using std::filesystem::path;

void failChanged(const path& file)
{
    throw VdirError(fmt::format(
        "Nothing was changed: another program has written “{}” in the meantime; try again.", file.string()));
}

ContentDocument& StagedItems::open(const path& root, const path& file, const std::optional<ItemStamp>& expected)
{
    if (const auto staged = files_.find(file); staged != files_.end() && staged->second.document != nullptr)
        return *staged->second.document;
    std::string why;
    auto found = readItem(file, why);
    if (!found && !itemStamp(file))
        failChanged(file);
    if (!found)
        throw VdirError(fmt::format("Nothing was changed: “{}” cannot be read ({}).", file.string(), why));
    if (expected && found->stamp != *expected)
        failChanged(file);
    File made{
        .root = root, .old = found->bytes, .document = std::make_unique<ContentDocument>(found->bytes), .bytes = {}};
    return *files_.insert_or_assign(file, std::move(made)).first->second.document;
}

void StagedItems::create(const path& root, const path& file, std::string bytes)
{
    File made{.root = root,
        .old = std::nullopt,
        .document = std::make_unique<ContentDocument>(std::move(bytes)),
        .bytes = {}};
    files_.insert_or_assign(file, std::move(made));
}

void StagedItems::setMetadata(const path& root, const path& file, std::string bytes)
{
    if (const auto folder = made_.find(file.parent_path()); folder != made_.end()) {
        folder->second.files[file.filename().string()] = std::move(bytes);
        return;
    }
    files_.insert_or_assign(
        file, File{.root = root, .old = platform::readFile(file), .document = nullptr, .bytes = std::move(bytes)});
}

void StagedItems::makeFolder(const path& root, const path& folder, std::map<std::string, std::string> files)
{
    made_[folder] = {root, std::move(files)};
}

void StagedItems::removeFolder(const path& root, const path& folder, const std::map<std::string, std::string>& files)
{
    std::erase_if(files_, [&](const auto& file) { return file.first.parent_path() == folder; });
    if (made_.erase(folder) == 0)
        removed_[folder] = {root, files};
}

void StagedItems::put(std::map<path, VdirCommit>& commits)
{
    const auto commitOf = [&](const path& root) -> VdirCommit& {
        return commits.try_emplace(root, root).first->second;
    };
    for (auto& [folder, made] : made_)
        commitOf(made.root).makeFolder(folder, std::move(made.files));
    for (auto& [name, file] : files_) {
        const bool isKept = file.document == nullptr ? !file.bytes.empty() : holdsItems(*file.document);
        std::string bytes = file.document == nullptr ? std::move(file.bytes) : file.document->text();
        if (!isKept && file.old)
            commitOf(file.root).remove(name, *file.old);
        else if (isKept && !file.old)
            commitOf(file.root).create(name, std::move(bytes));
        else if (isKept && bytes != *file.old)
            commitOf(file.root).replace(name, *file.old, std::move(bytes));
    }
    for (const auto& [folder, removed] : removed_)
        commitOf(removed.root).removeFolder(folder, removed.files);
}

void StagedItems::commit()
{
    std::map<path, VdirCommit> commits;
    put(commits);
    files_.clear();
    made_.clear();
    removed_.clear();
    for (auto& [root, commit] : commits)
        commit.commit();
}

} // namespace mervo::desk
