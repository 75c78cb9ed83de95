#include "cockpit/model/queue/QueueReader.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <utility>

namespace mervo {

namespace {

constexpr std::string_view kExtension = ".json";

} // namespace

QueueReader::QueueReader(std::filesystem::path folder)
    : folder_(std::move(folder))
{
}

bool QueueReader::refresh()
{
    ++refreshes_;
    bool changed = false;
    failure_.clear();
    for (std::filesystem::directory_iterator entry(folder_, failure_), end; !failure_ && entry != end;
         entry.increment(failure_)) {
        std::string name = entry->path().filename();
        if (!name.ends_with(kExtension))
            continue;
        Known& known = known_[std::move(name)];
        known.seenAt = refreshes_;
        changed = look(entry->path(), known) || changed;
    }
    if (failure_ == std::errc::no_such_file_or_directory)
        failure_.clear();
    if (!failure_)
        changed = forgetUnseen() || changed;
    if (!changed)
        return false;
    actions_.clear();
    for (const auto& [name, file] : known_) {
        if (file.action)
            actions_.push_back(*file.action);
    }
    std::ranges::sort(actions_, {}, [](const PendingAction& action) { return std::tie(action.createdAt, action.id); });
    return true;
}

bool QueueReader::look(const std::filesystem::path& file, Known& known) const
{
    const auto stamp = platform::fileStamp(file);
    if (stamp && known.isSettled && known.stamp == *stamp)
        return false;
    known.isSettled = stamp && stamp->isSettled();
    known.stamp = stamp.value_or(platform::FileStamp{});
    auto action = stamp ? PendingStore::read(file) : std::nullopt;
    if (action == known.action)
        return false;
    known.action = std::move(action);
    return true;
}

std::size_t QueueReader::damaged() const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(known_, [](const auto& item) { return item.second.isSettled && !item.second.action; }));
}

/// True when an action went with its file.
bool QueueReader::forgetUnseen()
{
    bool changed = false;
    std::erase_if(known_, [&](const auto& item) {
        const bool isGone = item.second.seenAt != refreshes_;
        changed = changed || (isGone && item.second.action);
        return isGone;
    });
    return changed;
}

} // namespace mervo
