#include "platform/applescript/values/RefCounted.h"

#include "platform/applescript/values/Limits.h"

#include <new>

namespace mervo::applescript {

void* Cell::operator new(std::size_t size)
{
    Limits::charge(size);
    return ::operator new(size);
}

void Cell::operator delete(void* memory, std::size_t size) noexcept
{
    Limits::discharge(size);
    ::operator delete(memory);
}

void* Cell::operator new(std::size_t size, ExtraBytes extra)
{
    Limits::charge(size + extra.count);
    return ::operator new(size + extra.count);
}

void Cell::operator delete(void* memory, ExtraBytes) noexcept
{
    ::operator delete(memory);
}

void Cell::bury(const Cell* cell) noexcept
{
    constinit static thread_local const Cell* grave = nullptr;
    constinit static thread_local bool isDigging = false;
    cell->nextInGrave_ = grave;
    grave = cell;
    if (isDigging)
        return;
    isDigging = true;
    while (grave) {
        const Cell* next = grave;
        grave = next->nextInGrave_;
        delete next;
    }
    isDigging = false;
}

} // namespace mervo::applescript
