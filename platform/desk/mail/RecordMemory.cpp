#include "platform/desk/mail/RecordMemory.h"

#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace mervo::desk {
namespace {

constexpr std::size_t kLargePage = 2 * 1024 * 1024;

std::size_t rounded(std::size_t size, std::size_t unit)
{
    return (size + unit - 1) / unit * unit;
}

} // namespace

RecordMemory::RecordMemory(std::size_t capacity)
    : capacity_(capacity)
{
    const std::size_t unit = capacity < kLargePage ? alignof(std::max_align_t) : kLargePage;
    const std::size_t size = rounded(capacity + 1, unit);
    bytes_.reset(static_cast<char*>(std::aligned_alloc(unit, size)));
    if (!bytes_)
        throw std::bad_alloc();
    if (unit == kLargePage)
        madvise(bytes_.get(), size, MADV_HUGEPAGE);
}

char* RecordMemory::take(std::size_t length)
{
    if (length > capacity_ - used_)
        throw std::bad_alloc();
    char* piece = bytes_.get() + used_;
    used_ += length;
    return piece;
}

void RecordMemory::Free::operator()(char* memory) const noexcept
{
    std::free(memory);
}

} // namespace mervo::desk
