#pragma once

#include <utility>

namespace mervo::applescript {

/// Sets something for a scope.
template <typename T>
class Restored {
public:
    Restored(T& place, T value)
        : place_(place)
        , saved_(std::exchange(place, std::move(value)))
    {
    }
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;
    ~Restored() { place_ = std::move(saved_); }

private:
    T& place_;
    T saved_;
};

} // namespace mervo::applescript
