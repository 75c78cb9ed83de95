#include "core/policy/PendingStore.h"

#include "core/foundation/ConfigDir.h"
#include "core/foundation/ServiceError.h"
#include "platform/files.h"

#include <algorithm>

namespace mervo {

namespace {

constexpr std::string_view kFolder = "pending";
constexpr std::string_view kExtension = ".json";

bool isBaseName(std::string_view id)
{
    return !id.empty() && id.find('/') == std::string_view::npos && id.find('\0') == std::string_view::npos;
}

std::filesystem::path file(const std::filesystem::path& dir, std::string_view id)
{
    return dir / (std::string(id) += kExtension);
}

std::vector<std::filesystem::path> actionFiles(const std::filesystem::path& dir)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(dir, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == kExtension)
            files.push_back(entry->path());
    }
    return files;
}

std::vector<PendingAction> actionsIn(const std::filesystem::path& dir)
{
    std::vector<PendingAction> actions;
    for (const auto& path : actionFiles(dir)) {
        if (auto action = PendingStore::read(path))
            actions.push_back(*std::move(action));
    }
    std::sort(actions.begin(), actions.end(), [](const PendingAction& a, const PendingAction& b) {
        return std::tie(a.createdAt, a.id) < std::tie(b.createdAt, b.id);
    });
    return actions;
}

} // namespace

PendingStore::PendingStore(const std::filesystem::path& configDir)
    : dir_(configDir / kFolder)
{
    platform::createPrivateFolder(dir_); // a failure shows when an action cannot be written
}

PendingStore::PendingStore()
    : PendingStore(ConfigDir::url())
{
}

void PendingStore::save(const PendingAction& action) const
{
    if (!isBaseName(action.id))
        throw ServiceError("the action's id cannot be the name of a file");
    const std::filesystem::path path = file(dir_, action.id);
    if (const auto error = platform::writeInPlace(path, action.encode()))
        throw ServiceError("\"" + path.string() + "\" could not be written: " + error.message());
}

std::vector<PendingAction> PendingStore::list() const
{
    return actionsIn(dir_);
}

std::optional<PendingAction> PendingStore::load(std::string_view id) const
{
    return isBaseName(id) ? read(file(dir_, id)) : std::nullopt;
}

bool PendingStore::remove(std::string_view id) const
{
    std::error_code ignored;
    return isBaseName(id) && std::filesystem::remove(file(dir_, id), ignored);
}

std::optional<PendingAction> PendingStore::read(const std::filesystem::path& file)
{
    const auto json = platform::readFile(file);
    return json ? PendingAction::decode(*json) : std::nullopt;
}

std::vector<PendingAction> PendingStore::listExisting(const std::filesystem::path& configDir)
{
    return actionsIn(configDir / kFolder);
}

} // namespace mervo
