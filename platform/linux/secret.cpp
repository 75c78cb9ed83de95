#include "platform/secret.h"

#include <algorithm>
#include <string.h>
#include <utility>

namespace mervo::platform {

void wipe(std::span<char> bytes) noexcept
{
    if (!bytes.empty())
        explicit_bzero(bytes.data(), bytes.size());
}

Secret::Secret(Secret&& other) noexcept
    : buffer_(std::move(other.buffer_))
    , size_(std::exchange(other.size_, 0))
    , capacity_(std::exchange(other.capacity_, 0))
{
}

Secret& Secret::operator=(Secret&& other) noexcept
{
    if (this != &other) {
        release();
        buffer_ = std::move(other.buffer_);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
    }
    return *this;
}

Secret::~Secret()
{
    release();
}

void Secret::append(std::string_view bytes)
{
    if (bytes.size() > capacity_ - size_)
        reserve(std::max(size_ + bytes.size(), 2 * capacity_));
    std::ranges::copy(bytes, buffer_.get() + size_);
    size_ += bytes.size();
}

void Secret::shorten(std::size_t size) noexcept
{
    if (size < size_)
        wipe({buffer_.get() + size, size_ - size});
    size_ = std::min(size, size_);
}

void Secret::reserve(std::size_t capacity)
{
    auto larger = std::make_unique<char[]>(capacity);
    std::ranges::copy(view(), larger.get());
    wipe({buffer_.get(), capacity_});
    buffer_ = std::move(larger);
    capacity_ = capacity;
}

void Secret::release() noexcept
{
    wipe({buffer_.get(), capacity_});
    buffer_.reset();
    size_ = capacity_ = 0;
}

} // namespace mervo::platform
