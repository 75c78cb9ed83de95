#include "platform/unified_log.h"

#include "platform/descriptor.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace mervo::platform {

namespace {

constexpr std::string_view kJournal = "/run/systemd/journal/socket";
constexpr std::string_view kSyslog = "/dev/log";
constexpr std::string_view kSubsystem = "org.mervolabs.app";
constexpr std::string_view kIdentifier = "mervo";
constexpr int kError = 3, kInfo = 6; // severities of RFC 5424, which the journal shares
constexpr int kFacilityUser = 1 << 3;
constexpr std::size_t kLongestEntry = 64 * 1024; // more would not fit into one datagram

/// One datagram, sent or dropped at once.
bool send(std::string_view socketPath, std::string_view entry)
{
    const Descriptor descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor.open())
        return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.data(), socketPath.size());
    const ssize_t sent = ::sendto(descriptor.get(), entry.data(), entry.size(), MSG_NOSIGNAL,
        reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent >= 0;
}

/// The journal's binary form of a field: name, new line, length in 64 bits with the lowest byte first, bytes, new
/// line. It holds values of several lines, and nobody can forge another field from inside a value.
void appendField(std::string& entry, std::string_view name, std::string_view value)
{
    entry += name;
    entry += '\n';
    for (std::uint64_t length = value.size(), byte = 0; byte < sizeof length; ++byte, length >>= 8)
        entry += static_cast<char>(length & 0xFF);
    entry += value;
    entry += '\n';
}

std::string journalEntry(int severity, std::string_view category, std::string_view message)
{
    std::string entry;
    appendField(entry, "MESSAGE", message);
    appendField(entry, "PRIORITY", std::to_string(severity));
    appendField(entry, "SYSLOG_IDENTIFIER", kIdentifier);
    appendField(entry, "MERVO_SUBSYSTEM", kSubsystem);
    appendField(entry, "MERVO_CATEGORY", category);
    return entry;
}

std::string syslogEntry(int severity, std::string_view category, std::string_view message)
{
    std::string entry = '<' + std::to_string(kFacilityUser | severity) + '>';
    entry += kIdentifier;
    entry += '[' + std::to_string(::getpid()) + "]: ";
    entry += kSubsystem;
    entry += ' ';
    entry += category;
    entry += ": ";
    for (const char byte : message)
        entry += static_cast<unsigned char>(byte) < 0x20 ? ' ' : byte;
    return entry;
}

void log(int severity, std::string_view category, std::string_view message) noexcept
{
    try {
        message = message.substr(0, kLongestEntry);
        if (!send(kJournal, journalEntry(severity, category, message)))
            send(kSyslog, syslogEntry(severity, category, message));
    } catch (...) {
        // Nobody is left to tell.
    }
}

} // namespace

void logError(std::string_view category, std::string_view message) noexcept
{
    log(kError, category, message);
}

void logInfo(std::string_view category, std::string_view message) noexcept
{
    log(kInfo, category, message);
}

} // namespace mervo::platform
