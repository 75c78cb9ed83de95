#pragma once

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>
#include <string_view>

/// Looks for a text in the memory that a program releases. Replaces the program's operators new and delete: for one
/// source file of a program.
namespace mervo::test::ReleasedMemory {

inline std::string_view wanted; ///< nothing is looked for while it is empty
inline std::atomic<int> found = 0; ///< released blocks that held the text

inline void release(void* block) noexcept
{
    if (block != nullptr && !wanted.empty()) {
        const std::size_t size = malloc_usable_size(block);
        if (std::string_view(static_cast<const char*>(block), size).find(wanted) != std::string_view::npos)
            ++found;
        std::memset(block, 0, size); // or it would be found again in the next block at this place
    }
    std::free(block);
}

} // namespace mervo::test::ReleasedMemory

void* operator new(std::size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    return block != nullptr ? block : throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    mervo::test::ReleasedMemory::release(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    mervo::test::ReleasedMemory::release(block);
}
