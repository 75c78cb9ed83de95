#pragma once

#include <string_view>

namespace mervo::platform {

/// The cockpit's own small settings, separate from the configuration that the programs share.
class Defaults {
public:
    Defaults() = default;
    Defaults(const Defaults&) = delete;
    Defaults& operator=(const Defaults&) = delete;
    virtual ~Defaults() = default;

    virtual bool boolean(std::string_view key) const = 0; ///< false when it was never set
    virtual void setBoolean(std::string_view key, bool value) = 0;
};

} // namespace mervo::platform
