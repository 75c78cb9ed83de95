#pragma once

namespace mervo::platform {

/// Whether the cockpit starts when the owner logs in.
class LoginItem {
public:
    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    /// The current state, also if another program has changed it.
    virtual bool isEnabled() const = 0;
    /// Throws std::runtime_error with a sentence.
    virtual void setEnabled(bool enabled) = 0;
};

} // namespace mervo::platform
