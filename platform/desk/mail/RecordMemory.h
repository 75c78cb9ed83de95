#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// The bytes of all records of one mailbox: one piece of memory, in large pages where the system gives them, because
/// touching megabytes page by page costs more than reading them.
class RecordMemory {
public:
    explicit RecordMemory(std::size_t capacity);

    /// The next `length` bytes, aligned for records. The total must stay within the capacity.
    char* take(std::size_t length);
    /// Whether this is one of its bytes.
    bool holds(const char* byte) const noexcept { return byte >= bytes_.get() && byte < bytes_.get() + used_; }

private:
    struct Free {
        void operator()(char* memory) const noexcept;
    };

    std::unique_ptr<char, Free> bytes_;
    std::size_t used_ = 0, capacity_ = 0;
};

/// The chunks of one mailbox by number, and the pieces of memory that they lie in, which other mailboxes may share.
struct RecordChunks {
    std::vector<std::shared_ptr<const RecordMemory>> memory;
    std::map<std::int64_t, std::string_view> byNumber;
};

} // namespace mervo::desk
