#include "core/automations/model/RunLock.h"

#include "core/foundation/Text.h"
#include "platform/files.h"
#include "platform/process.h"

#include <charconv>

namespace mervo::RunLock {

namespace {

constexpr std::size_t kLongestNumber = 64;

} // namespace

std::optional<std::int32_t> holder(const std::filesystem::path& pidFile)
{
    const auto bytes = platform::readFile(pidFile, kLongestNumber);
    std::string_view digits = bytes ? Text::trimmed(*bytes) : std::string_view();
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    std::int32_t pid = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    const bool isNumber = failure == std::errc() && end == digits.data() + digits.size();
    return isNumber ? std::optional(pid) : std::nullopt;
}

std::optional<std::int32_t> livingHolder(const std::filesystem::path& pidFile)
{
    const auto pid = holder(pidFile);
    return pid && platform::isRunning(*pid) ? pid : std::nullopt;
}

} // namespace mervo::RunLock
