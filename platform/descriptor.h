#pragma once

#include <unistd.h>
#include <utility>

namespace mervo::platform {

/// Owns one file descriptor, or none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number)
        : number_(number)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : number_(std::exchange(other.number_, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        if (this != &other) {
            close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    int get() const { return number_; }
    bool open() const { return number_ >= 0; }
    /// Hands the descriptor over.
    int release() { return std::exchange(number_, -1); }
    /// The result of the system's close, 0 when there was nothing to close.
    int close() { return number_ < 0 ? 0 : ::close(std::exchange(number_, -1)); }

private:
    int number_ = -1;
};

} // namespace mervo::platform
