#include "core/policy/PendingStore.h"

#include "core/foundation/ConfigDir.h"
#include "core/foundation/ServiceError.h"
#include "platform/files.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <tuple>
#include <utility>

namespace mervo {

namespace {

constexpr std::string_view kFolder = "pending";
constexpr std::string_view kExtension = ".json";
constexpr std::chrono::milliseconds kTimeToFinish(50);

bool isBaseName(std::string_view id)
{
    return !id.empty() && id.find('/') == std::string_view::npos && id.find('\0') == std::string_view::npos;
}

std::filesystem::path file(const std::filesystem::path& dir, std::string_view id)
{
    return dir / (std::string(id) += kExtension);
}

std::vector<std::filesystem::path> actionFiles(const std::filesystem::path& dir, std::error_code& error)
{
    std::vector<std::filesystem::path> files;
    for (std::filesystem::directory_iterator entry(dir, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == kExtension)
            files.push_back(entry->path());
    }
    if (error == std::errc::no_such_file_or_directory)
        error.clear();
    return files;
}

/// Adds the file's action, or says what is wrong with it. A file that has gone meanwhile is no damage.
void add(const std::filesystem::path& file, PendingStore::Listing& to)
{
    std::string why;
    if (auto action = PendingStore::read(file, &why)) {
        to.actions.push_back(*std::move(action));
    } else if (platform::fileStamp(file)) {
        to.damaged.push_back({file.filename(), std::move(why)});
    }
}

bool mayBeUnfinished(const std::filesystem::path& file)
{
    const auto stamp = platform::fileStamp(file);
    return stamp && !stamp->isSettled();
}

void lookAgain(const std::filesystem::path& dir, PendingStore::Listing& listing)
{
    const bool worthwhile = std::ranges::any_of(
        listing.damaged, [&](const PendingStore::Damaged& one) { return mayBeUnfinished(dir / one.name); });
    if (!worthwhile)
        return;
    std::this_thread::sleep_for(kTimeToFinish);
    for (const PendingStore::Damaged& one : std::exchange(listing.damaged, {}))
        add(dir / one.name, listing);
}

PendingStore::Listing listingOf(const std::filesystem::path& dir)
{
    PendingStore::Listing found;
    for (const auto& file : actionFiles(dir, found.failure))
        add(file, found);
    lookAgain(dir, found);
    std::ranges::sort(found.actions, {}, [](const PendingAction& one) { return std::tie(one.createdAt, one.id); });
    std::ranges::sort(found.damaged, {}, &PendingStore::Damaged::name);
    return found;
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
    const std::string bytes = action.encode();
    if (bytes.size() > kLongest)
        throw ServiceError("the call is longer than an action can be");
    if (const auto error = platform::writeInPlace(path, bytes))
        throw ServiceError("\"" + path.string() + "\" could not be written: " + error.message());
}

std::vector<PendingAction> PendingStore::list() const
{
    return listingOf(dir_).actions;
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

std::optional<PendingAction> PendingStore::read(const std::filesystem::path& file, std::string* why)
{
    std::error_code error;
    const auto json = platform::readFile(file, kLongest, &error);
    auto action = json ? PendingAction::decode(*json) : std::nullopt;
    const bool misnamed = action && action->id != file.stem();
    if (why != nullptr && (!action || misnamed)) {
        *why = !json   ? error.message()
            : misnamed ? "its id is \"" + action->id + "\", which is not its name"
                       : "it holds no whole action";
    }
    return misnamed ? std::nullopt : action;
}

PendingStore::Listing PendingStore::listing(const std::filesystem::path& configDir)
{
    return listingOf(configDir / kFolder);
}

std::vector<PendingAction> PendingStore::listExisting(const std::filesystem::path& configDir)
{
    return listing(configDir).actions;
}

} // namespace mervo
