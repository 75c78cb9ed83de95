#pragma once

#include <stdexcept>

namespace mervo::desk {

/// A terminal could not be found, opened or closed; what() is one sentence for a person.
class TerminalError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace mervo::desk
