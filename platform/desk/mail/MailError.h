#pragma once

#include <stdexcept>
#include <string>

namespace mervo::desk {

/// What the mail store throws. what() is one sentence for a person: what failed, on which folder or message, and why.
class MailError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The message no longer exists.
class MessageGone final : public MailError {
public:
    using MailError::MailError;
};

/// A file to attach cannot be read.
class NoSuchAttachment final : public MailError {
public:
    explicit NoSuchAttachment(const std::string& path);
    const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
};

} // namespace mervo::desk
