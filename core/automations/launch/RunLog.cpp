#include "core/automations/launch/RunLog.h"

#include "platform/streams.h"

#include <array>
#include <ctime>
#include <exception>
#include <fmt/format.h>

namespace mervo {

namespace {

constexpr std::uintmax_t kLongest = 1'048'576; // bytes

} // namespace

std::string RunLog::now()
{
    const std::time_t moment = std::time(nullptr);
    std::tm local{};
    std::array<char, 32> text{};
    ::localtime_r(&moment, &local);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

void RunLog::line(std::string_view text) const noexcept
try {
    platform::appendToFile(file_, std::string(text) + "\n");
} catch (const std::exception&) { // lost
}

void RunLog::stamped(std::string_view text) const noexcept
try {
    line(fmt::format("[{}] {}", now(), text));
} catch (const std::exception&) { // lost
}

void RunLog::end(std::string_view name, int code) const noexcept
try {
    line(fmt::format("===== rondel: {} done (exit {}) =====", name, code));
} catch (const std::exception&) { // lost
}

void RunLog::rotate(const std::filesystem::path& older) const noexcept
{
    std::error_code failure;
    const auto length = std::filesystem::file_size(file_, failure);
    if (failure || length <= kLongest)
        return;
    std::filesystem::remove(older, failure);
    std::filesystem::rename(file_, older, failure);
}

} // namespace mervo
