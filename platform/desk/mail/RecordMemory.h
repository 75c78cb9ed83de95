#pragma once

#include <cstddef>
#include <memory>

namespace mervo::desk {

/// The bytes of all records of one mailbox: one piece of memory, in large pages where the system gives them, because
/// touching megabytes page by page costs more than reading them.
class RecordMemory {
public:
    explicit RecordMemory(std::size_t capacity);

    /// The next `length` bytes, aligned for records. The total must stay within the capacity.
    char* take(std::size_t length);

private:
    struct Free {
        void operator()(char* memory) const noexcept;
    };

    std::unique_ptr<char, Free> bytes_;
    std::size_t used_ = 0, capacity_ = 0;
};

} // namespace mervo::desk
