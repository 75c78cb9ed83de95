#pragma once

#include "core/imap/IMAPError.h"
#include "platform/secret.h"
#include "platform/tls.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mervo {

/// A small IMAP client (RFC 9051, MOVE of RFC 6851) for one purpose: logging in and taking messages out of
/// the inbox by their Message-ID. One object serves one call. Blocks its caller, who must not be the main thread of a
/// program with windows.
class IMAPClient {
public:
    static constexpr std::chrono::milliseconds kPatience{20'000}; ///< for connecting, and for each write and read
    static constexpr std::uint16_t kPort = 993;

    /// Connects and reads the greeting. Port 0 is taken for 993. Throws IMAPError.
    IMAPClient(const std::string& host, std::uint16_t port, std::chrono::milliseconds ioTimeout = kPatience);

    /// Logs in, moves each message with one of these ids out of the inbox into the server's folder for all mail, and
    /// logs out. Returns how many were moved; an id unknown to the server is not counted. Throws IMAPError: what was
    /// moved until then stays moved.
    static std::size_t archiveByMessageID(const std::string& host, std::uint16_t port, const std::string& email,
        const platform::Secret& password, const std::vector<std::string>& messageIds,
        std::chrono::milliseconds ioTimeout = kPatience);

    /// Logs in and out. Throws IMAPError.
    static void verifyLogin(const std::string& host, std::uint16_t port, const std::string& email,
        const platform::Secret& password, std::chrono::milliseconds ioTimeout = kPatience);

    void close() noexcept { conn_.reset(); }

private:
    void login(const std::string& email, const platform::Secret& password);
    void logout() noexcept;
    std::string allMailFolder();
    std::size_t moveById(const std::string& messageId, const std::string& folder);
    /// Sends one command; gives the whole answer. Throws IMAPError, also when the server does not say OK.
    std::string command(std::string_view text);
    void receive();
    /// A line from the server for a person, without the password, which some servers repeat in their refusals.
    std::string shown(std::string_view line) const;

    std::unique_ptr<platform::TlsStream> conn_;
    std::chrono::milliseconds ioTimeout_;
    std::int64_t tagSeq_ = 0;
    std::string buffer_; ///< received and not yet used
    platform::Secret password_, quotedPassword_;
};

} // namespace mervo
