/// The floor of an archive over IMAP: says the lines of a file over TLS, each after the answer to the one before, and
/// does nothing to find them.
///
///     bare-imap PORT FILE     on localhost; the authority is SSL_CERT_FILE's
#include <fstream>
#include <memory>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <stdexcept>
#include <string>

namespace {

void insist(bool good, const std::string& what)
{
    if (!good)
        throw std::runtime_error(what);
}

using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
using Stream = std::unique_ptr<BIO, decltype(&BIO_free_all)>;

Stream connect(SSL_CTX* context, const std::string& port)
{
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    insist(SSL_CTX_set_default_verify_paths(context) == 1, "no trusted authorities");
    Stream stream(BIO_new_ssl_connect(context), BIO_free_all);
    SSL* tls = nullptr;
    BIO_get_ssl(stream.get(), &tls);
    insist(SSL_set1_host(tls, "localhost") == 1, "no host name");
    BIO_set_conn_hostname(stream.get(), ("localhost:" + port).c_str());
    insist(BIO_do_connect(stream.get()) == 1, "no connection");
    return stream;
}

/// Reads until a line that begins with the tag, and is an OK, has ended.
void awaitOk(BIO* stream, const std::string& tag)
{
    std::string answer;
    while (!answer.ends_with("\r\n") || ("\r\n" + answer).find("\r\n" + tag + " OK") == std::string::npos) {
        char bytes[65536];
        const int count = BIO_read(stream, bytes, sizeof bytes);
        insist(count > 0, "no OK for " + tag + " in: " + answer);
        answer.append(bytes, static_cast<std::size_t>(count));
    }
}

void talk(const std::string& port, const std::string& file)
{
    const Context context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
    const Stream stream = connect(context.get(), port);
    awaitOk(stream.get(), "*");
    std::ifstream lines(file, std::ios::binary);
    insist(lines.is_open(), "cannot read " + file);
    for (std::string line; std::getline(lines, line);) {
        line += "\n";
        insist(BIO_write(stream.get(), line.data(), static_cast<int>(line.size())) > 0, "cannot send");
        awaitOk(stream.get(), line.substr(0, line.find(' ')));
    }
}

} // namespace

int main(int count, char** words)
{
    try {
        insist(count == 3, "usage: bare-imap PORT FILE");
        talk(words[1], words[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bare-imap: %s\n", error.what());
        return 1;
    }
}
