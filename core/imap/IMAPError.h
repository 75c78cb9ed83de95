#pragma once

#include "core/foundation/ServiceError.h"

#include <string>

namespace mervo {

/// What a conversation with an IMAP server fails with.
class IMAPError final : public ServiceError {
public:
    enum class Kind { connect, timeout, server };

    static IMAPError connect(const std::string& text); ///< "imap connect: " and the text
    static IMAPError timeout(const std::string& what); ///< "connect", "write" or "read"
    static IMAPError server(const std::string& line); ///< the server's own line

    Kind kind() const noexcept { return kind_; }

private:
    IMAPError(Kind kind, const std::string& text)
        : ServiceError(text)
        , kind_(kind)
    {
    }
    Kind kind_;
};

} // namespace mervo
