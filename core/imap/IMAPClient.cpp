#include "core/imap/IMAPClient.h"

#include "core/foundation/Text.h"
#include "core/imap/ImapText.h"

#include <utility>

namespace mervo {

namespace {

constexpr std::size_t kMostAtOnce = 65536;
constexpr std::size_t kMostInAnswer = 16 * 1024 * 1024; ///< no server has that much to say to one of our commands
constexpr std::string_view kHidden = "***";
constexpr std::string_view kUsualAllMail = "[Gmail]/All Mail";

/// The search is for a part of the header: a sender's lone "<" would find every message, so both ends must be there.
bool isBracketed(std::string_view id)
{
    return id.size() > 2 && id.starts_with('<') && id.ends_with('>');
}

} // namespace

IMAPClient::IMAPClient(const std::string& host, std::uint16_t port, std::chrono::milliseconds ioTimeout)
    : ioTimeout_(ioTimeout)
{
    try {
        conn_ = platform::connectTls(host, port == 0 ? kPort : port, ioTimeout);
    } catch (const platform::TlsTimeout&) {
        throw IMAPError::timeout("connect");
    } catch (const platform::TlsFailure& failure) {
        throw IMAPError::connect(failure.what());
    }
    while (buffer_.find("\r\n") == std::string::npos)
        receive();
    buffer_.clear(); // the greeting
}

std::size_t IMAPClient::archiveByMessageID(const std::string& host, std::uint16_t port, const std::string& email,
    const platform::Secret& password, const std::vector<std::string>& messageIds, std::chrono::milliseconds ioTimeout)
{
    IMAPClient client(host, port, ioTimeout);
    client.login(email, password);
    const std::string folder = client.allMailFolder();
    client.command("SELECT INBOX");
    std::size_t moved = 0;
    for (const std::string& id : messageIds)
        moved += client.moveById(id, folder);
    client.logout();
    return moved;
}

void IMAPClient::verifyLogin(const std::string& host, std::uint16_t port, const std::string& email,
    const platform::Secret& password, std::chrono::milliseconds ioTimeout)
{
    IMAPClient client(host, port, ioTimeout);
    client.login(email, password);
    client.logout();
}

void IMAPClient::login(const std::string& email, const platform::Secret& password)
{
    if (!ImapText::isQuotable(email) || !ImapText::isQuotable(password.view()))
        throw IMAPError::connect("the address or the password holds a line end, which no server takes");
    password_ = password.copy();
    quotedPassword_ = ImapText::quoted(password);
    platform::Secret text("LOGIN " + ImapText::quoted(email) + " ");
    text.append(quotedPassword_.view());
    command(text.view());
}

std::string IMAPClient::shown(std::string_view line) const
{
    std::string text(line);
    for (const std::string_view secret : {quotedPassword_.view(), password_.view()}) {
        for (auto at = secret.empty() ? std::string::npos : text.find(secret); at != std::string::npos;
             at = text.find(secret, at + kHidden.size()))
            text.replace(at, secret.size(), kHidden);
    }
    return Text::visibleLine(text);
}

void IMAPClient::logout() noexcept
{
    try {
        command("LOGOUT");
    } catch (const std::exception&) {
        close(); // the work is done
    }
}

std::string IMAPClient::allMailFolder()
{
    std::string folder = ImapText::allMailFolder(command(R"(LIST "" "*")")).value_or(std::string(kUsualAllMail));
    if (!ImapText::isQuotable(folder))
        throw IMAPError::server("a folder name with a line end in it");
    return folder;
}

std::size_t IMAPClient::moveById(const std::string& messageId, const std::string& folder)
{
    const std::string id = isBracketed(messageId) ? messageId : "<" + messageId + ">";
    if (!ImapText::isQuotable(id))
        return 0; // no header of a message can hold this
    std::size_t moved = 0;
    for (const std::uint64_t uid :
        ImapText::searchHits(command("UID SEARCH HEADER MESSAGE-ID " + ImapText::quoted(id)))) {
        command("UID MOVE " + std::to_string(uid) + " " + ImapText::quoted(folder));
        ++moved;
    }
    return moved;
}

std::string IMAPClient::command(std::string_view text)
{
    const std::string tag = "a" + std::to_string(++tagSeq_);
    try {
        platform::Secret line(tag + " "); // one of the commands holds the password
        line.append(text);
        line.append("\r\n");
        conn_->send(line.view(), ioTimeout_);
    } catch (const platform::TlsTimeout&) {
        throw IMAPError::timeout("write");
    } catch (const platform::TlsFailure& failure) {
        throw IMAPError::connect(failure.what());
    }
    for (std::size_t from = 0;;) {
        if (const auto line = ImapText::taggedLine(buffer_, tag, from)) {
            if (!ImapText::isOk(*line, tag))
                throw IMAPError::server(shown(*line));
            return std::exchange(buffer_, {});
        }
        receive();
    }
}

void IMAPClient::receive()
{
    std::string bytes;
    try {
        bytes = conn_->receive(kMostAtOnce, ioTimeout_);
    } catch (const platform::TlsTimeout&) {
        throw IMAPError::timeout("read");
    } catch (const platform::TlsFailure& failure) {
        throw IMAPError::connect(failure.what());
    }
    if (bytes.empty())
        throw IMAPError::connect("connection closed");
    if (buffer_.size() + bytes.size() > kMostInAnswer)
        throw IMAPError::server("an answer of more than 16 MiB");
    buffer_ += bytes;
}

} // namespace mervo
