#include "platform/launchd/FolderWatch.h"

#include "platform/jobs/JobPlaces.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>

namespace mervo::jobs {

namespace {

constexpr const char* kZoneFolder = "/etc";
constexpr std::string_view kZoneName = "localtime";

int watch(int descriptor, const char* folder, std::uint32_t events)
{
    const int number = ::inotify_add_watch(descriptor, folder, events | IN_ONLYDIR);
    if (number < 0)
        throw std::system_error(errno, std::generic_category(), folder);
    return number;
}

} // namespace

FolderWatch::FolderWatch()
    : descriptor_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (!descriptor_.open())
        throw std::system_error(errno, std::generic_category(), "inotify");
    loaded_ = watch(descriptor_.get(), loadedFolder().c_str(), IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM);
    requests_ = watch(descriptor_.get(), requestsFolder().c_str(), IN_CREATE | IN_MOVED_TO);
    zone_ = watch(descriptor_.get(), kZoneFolder, IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE);
    folder_ = platform::fileStamp(loadedFolder());
}

bool FolderWatch::isCurrent() const
{
    const auto folder = platform::fileStamp(loadedFolder());
    return folder && folder_ && folder->isSameFile(*folder_);
}

std::vector<FolderWatch::Change> FolderWatch::take()
{
    std::vector<Change> changes;
    alignas(inotify_event) std::array<char, 4096> block{};
    ssize_t count = 0;
    while ((count = ::read(descriptor_.get(), block.data(), block.size())) > 0) {
        for (const char* at = block.data(); at < block.data() + count;) {
            inotify_event event{};
            std::memcpy(&event, at, sizeof event);
            const std::string name = event.len > 0 ? at + sizeof event : "";
            at += sizeof event + event.len;
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                changes.push_back({Place::everything, {}});
            } else if (event.wd == zone_) {
                if (name == kZoneName)
                    changes.push_back({Place::timeZone, {}});
            } else if (!name.empty()) {
                changes.push_back({event.wd == loaded_ ? Place::loaded : Place::requests, name});
            }
        }
    }
    return changes;
}

} // namespace mervo::jobs
