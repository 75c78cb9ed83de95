#include "platform/linux/tls/TlsModule.h"

#include "platform/linux/tls/Socket.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace mervo::platform {
namespace {

struct FreeContext {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
struct FreeSession {
    void operator()(SSL* session) const { SSL_free(session); }
};

/// Keeps a write to a connection that the other side has closed from ending the process.
class WithoutPipeSignal {
public:
    WithoutPipeSignal()
    {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~WithoutPipeSignal()
    {
        const timespec atOnce{};
        if (!wasPending_)
            sigtimedwait(&pipe_, nullptr, &atOnce);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

private:
    sigset_t pipe_{}, before_{};
    bool wasPending_ = false;
};

SSL_CTX& context()
{
    static const std::unique_ptr<SSL_CTX, FreeContext> made = [] {
        std::unique_ptr<SSL_CTX, FreeContext> fresh(SSL_CTX_new(TLS_client_method()));
        if (!fresh || SSL_CTX_set_default_verify_paths(fresh.get()) != 1)
            throw TlsFailure("the system's certificate authorities cannot be read");
        SSL_CTX_set_min_proto_version(fresh.get(), TLS1_2_VERSION);
        SSL_CTX_set_verify(fresh.get(), SSL_VERIFY_PEER, nullptr);
        SSL_CTX_set_options(fresh.get(), SSL_OP_IGNORE_UNEXPECTED_EOF); // a cut connection is an end like any other
        SSL_CTX_set_mode(fresh.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
        return fresh;
    }();
    return *made;
}

bool isNumericAddress(const std::string& host)
{
    in6_addr address{};
    return inet_pton(AF_INET, host.c_str(), &address) == 1 || inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

std::string certificateSentence(const std::string& host, long verdict)
{
    const std::string whose = "the certificate of " + host;
    switch (verdict) {
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
        return whose + " is made out to another name; check the host's name in the settings";
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return whose + " has expired; the server needs a new one";
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return whose + " is not valid yet; check this machine's clock";
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        return whose
            + " comes from an authority that this machine does not trust; add the authority to the system's store, "
              "or name its file in SSL_CERT_FILE";
    default:
        return whose + " is not accepted: " + X509_verify_cert_error_string(verdict);
    }
}

std::string lastError()
{
    const char* reason = ERR_reason_error_string(ERR_peek_last_error());
    return reason == nullptr ? "the connection broke" : reason;
}

class Stream final : public TlsStream {
public:
    Stream(const std::string& host, std::uint16_t port, const Deadline& deadline)
        : stop_(deadline.stop())
        , socket_(host, port, deadline)
        , session_(SSL_new(&context()))
    {
        if (!session_ || SSL_set_fd(session_.get(), socket_.descriptor()) != 1 || !expect(host))
            throw TlsFailure("a secure connection cannot be prepared: " + lastError());
        perform(
            deadline, [&](SSL* session) { return SSL_connect(session); }, host);
    }

    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() override
    {
        if (isOpen_) {
            const WithoutPipeSignal quiet;
            SSL_shutdown(session_.get()); // says good-bye and waits for nothing
        }
    }

    void send(std::string_view bytes, std::chrono::milliseconds limit) override
    {
        const Deadline deadline(limit, stop_);
        while (!bytes.empty()) {
            const int part = static_cast<int>(std::min(bytes.size(), kMostAtOnce));
            bytes.remove_prefix(static_cast<std::size_t>(
                perform(deadline, [&](SSL* session) { return SSL_write(session, bytes.data(), part); })));
        }
    }

    std::string receive(std::size_t most, std::chrono::milliseconds limit) override
    {
        std::string bytes(std::min(most, kMostAtOnce), '\0');
        const int received = perform(Deadline(limit, stop_),
            [&](SSL* session) { return SSL_read(session, bytes.data(), static_cast<int>(bytes.size())); });
        bytes.resize(static_cast<std::size_t>(received));
        return bytes;
    }

private:
    static constexpr std::size_t kMostAtOnce = 65536;

    /// Asks for the server of this name (SNI), and insists on it.
    bool expect(const std::string& host)
    {
        if (isNumericAddress(host))
            return X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(session_.get()), host.c_str()) == 1;
        std::string name = host; // the library's own macro would cast its constness away
        return SSL_ctrl(session_.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, name.data()) == 1
            && SSL_set1_host(session_.get(), host.c_str()) == 1;
    }

    /// Repeats a step until it has done something. Gives what it returned, 0 at the end of the stream.
    template <typename Step>
    int perform(const Deadline& deadline, Step step, const std::string& shakingHandsWith = {})
    {
        while (true) {
            ERR_clear_error();
            errno = 0;
            const int done = [&] {
                const WithoutPipeSignal quiet;
                return step(session_.get());
            }();
            const int systemError = errno;
            if (done > 0) {
                isOpen_ = true;
                return done;
            }
            switch (SSL_get_error(session_.get(), done)) {
            case SSL_ERROR_WANT_READ:
                deadline.await(socket_.descriptor(), POLLIN);
                break;
            case SSL_ERROR_WANT_WRITE:
                deadline.await(socket_.descriptor(), POLLOUT);
                break;
            case SSL_ERROR_ZERO_RETURN:
                if (shakingHandsWith.empty())
                    return 0;
                fail(shakingHandsWith, 0);
            default:
                fail(shakingHandsWith, systemError);
            }
        }
    }

    [[noreturn]] void fail(const std::string& shakingHandsWith, int systemError)
    {
        isOpen_ = false;
        const long verdict = SSL_get_verify_result(session_.get());
        if (!shakingHandsWith.empty() && verdict != X509_V_OK)
            throw TlsFailure(certificateSentence(shakingHandsWith, verdict));
        throw TlsFailure(systemError != 0 ? std::strerror(systemError) : lastError());
    }

    int stop_;
    Socket socket_;
    std::unique_ptr<SSL, FreeSession> session_;
    bool isOpen_ = false;
};

} // namespace

TlsStream* mervoConnectTls(const std::string& host, std::uint16_t port, std::chrono::milliseconds limit, int stop)
{
    return new Stream(host, port, Deadline(limit, stop));
}

} // namespace mervo::platform
