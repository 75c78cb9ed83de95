#include "core/imap/IMAPError.h"

namespace mervo {

IMAPError IMAPError::connect(const std::string& text)
{
    return {Kind::connect, "imap connect: " + text};
}

IMAPError IMAPError::timeout(const std::string& what)
{
    return {Kind::timeout, "imap timeout: " + what};
}

IMAPError IMAPError::server(const std::string& line)
{
    return {Kind::server, "imap server: " + line};
}

} // namespace mervo
