#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace mervo::platform {

/// Overwrites memory, also where a compiler could leave that out.
void wipe(std::span<char> bytes) noexcept;

/// Bytes that must not stay in memory that is no longer used. The whole of every buffer that held them is overwritten
/// before it is released: at the end of the object's life, by an assignment, and when it grows. Moving hands the buffer
/// over and leaves nothing behind. `view` is for handing the bytes on; a copy is the caller's responsibility.
class Secret {
public:
    Secret() noexcept = default;
    explicit Secret(std::string_view bytes) { append(bytes); }
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();

    /// Another secret with the same bytes.
    Secret copy() const { return Secret(view()); }
    void append(std::string_view bytes);
    /// Cuts the end off.
    void shorten(std::size_t size) noexcept;

    std::string_view view() const noexcept { return {data(), size_}; }
    const char* data() const noexcept { return buffer_.get(); }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }

private:
    void reserve(std::size_t capacity);
    void release() noexcept;

    std::unique_ptr<char[]> buffer_;
    std::size_t size_ = 0, capacity_ = 0;
};

} // namespace mervo::platform
