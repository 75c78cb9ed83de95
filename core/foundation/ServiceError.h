#pragma once

#include <stdexcept>

namespace mervo {

/// What services throw. what() is one sentence for a person, ready to show: what failed, on what, and the way out
/// where there is one.
class ServiceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace mervo
