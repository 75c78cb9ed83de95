#pragma once

#include <stdexcept>

namespace mervo::desk {

/// An application could not be started or asked to quit; what() is one sentence for a person.
class RunningError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace mervo::desk
