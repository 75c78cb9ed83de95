#pragma once

namespace mervo::mcp {

/// A pipe to oneself: wakes a thread that waits in poll().
class Wakeup {
public:
    /// Throws std::system_error.
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    /// Any thread, also a signal handler. Never blocks.
    void notify() const noexcept;
    /// Becomes readable after a notify, until `clear`.
    int fd() const { return ends_[0]; }
    void clear() const noexcept;

private:
    int ends_[2] = {-1, -1};
};

} // namespace mervo::mcp
