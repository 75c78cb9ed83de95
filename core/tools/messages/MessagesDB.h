#pragma once

#include "core/foundation/ServiceError.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// What comes in by Messages, read from its database: the application offers no scripting of it.
namespace mervo::MessagesDB {

struct InboundMessage {
    std::string date; ///< local time, "2026-03-01 08:15:42"
    double epoch = 0; ///< seconds since 1970
    std::string handle; ///< the sender's phone number or address
    std::string text;
};

class MessagesError final : public ServiceError {
public:
    /// "chat.db not readable (grant Full Disk Access): " and the reason.
    static MessagesError notAccessible(const std::string& reason);

private:
    using ServiceError::ServiceError;
};

/// "Library/Messages/chat.db" in the user's home.
std::filesystem::path chatDatabase();

/// Newest first. `from` matches a handle whether or not either is written with spaces; an empty text filters nothing.
/// Only messages whose text stands in its own column are seen. Opens the file for reading and never creates it.
/// Throws MessagesError.
std::vector<InboundMessage> recentInbound(const std::string& from, std::optional<std::int64_t> sinceMinutes,
    const std::string& contains, std::int64_t limit, const std::filesystem::path& file = chatDatabase());

} // namespace mervo::MessagesDB
