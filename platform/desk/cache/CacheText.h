#pragma once

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Numbers and texts one after the other: a number is of 8 bytes in the machine's order, a text has its length in
/// front.
namespace mervo::desk {

void put(std::string& to, std::uint64_t number);
void put(std::string& to, std::string_view text);
void put(std::string& to, const platform::FileStamp& stamp);

/// Takes apart what `put` wrote, of which the texts are parts. Throws std::out_of_range at an end that comes too early.
class CacheTaker {
public:
    explicit CacheTaker(std::string_view bytes) noexcept
        : left_(bytes)
    {
    }
    bool isDone() const noexcept { return left_.empty(); }
    std::uint64_t number();
    /// All that is left.
    std::string_view rest() { return piece(left_.size()); }
    std::string_view text() { return piece(number()); }
    platform::FileStamp stamp();
    /// A number of things, of which each takes up at least one byte of what is left.
    std::size_t count();

private:
    std::string_view piece(std::uint64_t length);

    std::string_view left_;
};

/// Distinguishes contents that went wrong from those that were written; not for adversaries, and not the same on
/// another machine.
std::uint64_t cacheChecksum(std::string_view bytes) noexcept;

} // namespace mervo::desk
