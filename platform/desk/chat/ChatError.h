#pragma once

#include <stdexcept>

namespace mervo::desk {

/// What sending a message throws; what() is one sentence for a person. Nothing was sent.
class ChatError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace mervo::desk
