#include "platform/desk/cache/CacheText.h"

#include <cstring>
#include <functional>
#include <stdexcept>

namespace mervo::desk {

void put(std::string& to, std::uint64_t number)
{
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    to.append(bytes, sizeof bytes);
}

void put(std::string& to, std::string_view text)
{
    put(to, text.size());
    to += text;
}

void put(std::string& to, const platform::FileStamp& stamp)
{
    put(to, stamp.device);
    put(to, stamp.number);
    put(to, static_cast<std::uint64_t>(stamp.bytes));
    put(to, static_cast<std::uint64_t>(stamp.changed));
}

std::uint64_t CacheTaker::number()
{
    std::uint64_t value = 0;
    std::memcpy(&value, piece(sizeof value).data(), sizeof value);
    return value;
}

platform::FileStamp CacheTaker::stamp()
{
    platform::FileStamp stamp{.device = number()};
    stamp.number = number();
    stamp.bytes = static_cast<std::int64_t>(number());
    stamp.changed = static_cast<std::int64_t>(number());
    return stamp;
}

std::size_t CacheTaker::count()
{
    const std::uint64_t value = number();
    if (value > left_.size())
        throw std::out_of_range("count");
    return value;
}

std::string_view CacheTaker::piece(std::uint64_t length)
{
    if (length > left_.size())
        throw std::out_of_range("text");
    const std::string_view taken = left_.substr(0, length);
    left_.remove_prefix(length);
    return taken;
}

std::uint64_t cacheChecksum(std::string_view bytes) noexcept
{
    return std::hash<std::string_view>()(bytes);
}

} // namespace mervo::desk
