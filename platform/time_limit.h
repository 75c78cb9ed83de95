#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>

/// For libraries that wait for another program as long as that takes.
namespace mervo::platform {

/// The result of the work; nothing when it is not there in time. The work runs on a thread of its own, which is then
/// left behind: it must own what it uses, and may still come to its end later. Throws what the work throws in time.
template <typename Work>
std::optional<std::invoke_result_t<Work>> withinLimit(std::chrono::milliseconds limit, Work work)
{
    std::packaged_task<std::invoke_result_t<Work>()> task(std::move(work));
    auto result = task.get_future();
    std::thread(std::move(task)).detach();
    if (result.wait_for(limit) != std::future_status::ready)
        return std::nullopt;
    return result.get();
}

} // namespace mervo::platform
