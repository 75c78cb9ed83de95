#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace mervo::applescript {

/// The base of everything that values share: texts, lists, records, dates, objects of applications.
///
/// Counted without atomics: an interpreter and all its values belong to one thread. A cell whose last reference
/// goes is freed without recursion, so a list nested a million deep does no harm. Memory is charged to Limits.
class Cell {
public:
    Cell() noexcept = default;
    Cell(const Cell&) = delete;
    Cell& operator=(const Cell&) = delete;
    virtual ~Cell() = default;

    void retain() const noexcept { ++references_; }
    void release() const noexcept
    {
        if (--references_ == 0)
            bury(this);
    }

    static void* operator new(std::size_t size);
    static void operator delete(void* memory, std::size_t size) noexcept;

protected:
    /// Bytes behind the cell itself; the destructor of the derived class discharges them.
    struct ExtraBytes {
        std::size_t count;
    };
    static void* operator new(std::size_t size, ExtraBytes extra);
    static void operator delete(void* memory, ExtraBytes extra) noexcept;

private:
    static void bury(const Cell* cell) noexcept;

    mutable std::uint32_t references_ = 0;
    mutable const Cell* nextInGrave_ = nullptr;
};

/// A counted pointer to a Cell. Null until set.
template <typename T>
class Ref { // NOLINT(cppcoreguidelines-special-member-functions): one assignment takes its value and serves both
public:
    Ref() noexcept = default;
    Ref(T* cell) noexcept // NOLINT: a fresh `new` becomes a Ref where it is made
        : cell_(cell)
    {
        if (cell_)
            cell_->retain();
    }
    Ref(const Ref& other) noexcept
        : Ref(other.cell_)
    {
    }
    Ref(Ref&& other) noexcept
        : cell_(std::exchange(other.cell_, nullptr))
    {
    }
    template <typename U>
    Ref(const Ref<U>& other) noexcept // NOLINT: from derived to base
        : Ref(other.get())
    {
    }
    Ref& operator=(Ref other) noexcept
    {
        std::swap(cell_, other.cell_);
        return *this;
    }
    ~Ref()
    {
        if (cell_)
            cell_->release();
    }

    T* get() const noexcept { return cell_; }
    T* operator->() const noexcept { return cell_; }
    T& operator*() const noexcept { return *cell_; }
    explicit operator bool() const noexcept { return cell_ != nullptr; }

private:
    T* cell_ = nullptr;
};

template <typename T, typename... Arguments>
Ref<T> makeRef(Arguments&&... arguments)
{
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

} // namespace mervo::applescript
