#include "cockpit/model/QueueReader.h"

#include <algorithm>
#include <chrono>
#include <tuple>
#include <utility>

namespace mervo {

namespace {

using namespace std::chrono_literals;

/// A file's time has the grain of the system's tick or, on other file systems, of up to two seconds: a file written
/// again within it may look as before.
constexpr auto kGrain = 3s;

std::int64_t nanoseconds(std::chrono::system_clock::duration time)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
}

} // namespace

QueueReader::QueueReader(std::filesystem::path folder)
    : folder_(std::move(folder))
{
}

bool QueueReader::refresh()
{
    std::unordered_map<std::string, Known> found;
    bool isSame = true;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() != ".json")
            continue;
        const std::string name = entry->path().filename();
        const auto before = known_.find(name);
        auto now = look(entry->path(), before == known_.end() ? Known{} : before->second);
        isSame = isSame && now.action == (before == known_.end() ? std::nullopt : before->second.action);
        found.emplace(name, std::move(now));
    }
    const auto isGone = [&](const auto& item) { return item.second.action && !found.contains(item.first); };
    isSame = isSame && std::ranges::none_of(known_, isGone);
    known_ = std::move(found);
    if (isSame)
        return false;
    actions_.clear();
    for (const auto& [name, file] : known_)
        if (file.action)
            actions_.push_back(*file.action);
    std::ranges::sort(actions_, {}, [](const PendingAction& action) { return std::tie(action.createdAt, action.id); });
    return true;
}

QueueReader::Known QueueReader::look(const std::filesystem::path& file, Known known) const
{
    const auto stamp = platform::fileStamp(file);
    if (!stamp)
        return {};
    if (known.isSettled && known.stamp == *stamp)
        return known;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    known.isSettled = stamp->written < nanoseconds(now - kGrain);
    known.stamp = *stamp;
    known.action = PendingStore::read(file);
    if (known.action && known.action->id != file.stem())
        known.action.reset(); // a verdict finds the file by the id
    return known;
}

} // namespace mervo
