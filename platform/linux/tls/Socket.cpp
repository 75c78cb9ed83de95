#include "platform/linux/tls/Socket.h"

#include <arpa/inet.h>
#include <memory>
#include <netdb.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>

namespace mervo::platform {
namespace {

struct FreeAddresses {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

Addresses resolve(const std::string& host, std::uint16_t port)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV; // an address of a family that this machine has not is refused at once
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (failure != 0)
        throw TlsFailure(host + ": " + (failure == EAI_SYSTEM ? std::strerror(errno) : gai_strerror(failure)));
    return Addresses(found);
}

/// The system's lookup knows no time limit, so it has a thread of its own, which is left behind when it is too slow.
Addresses resolveInTime(const std::string& host, std::uint16_t port, const Deadline& deadline)
{
    std::promise<Addresses> promise;
    std::future<Addresses> result = promise.get_future();
    std::thread([host, port, promise = std::move(promise)]() mutable {
        try {
            promise.set_value(resolve(host, port));
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }).detach();
    deadline.awaitResult(result);
    return result.get();
}

/// None when it fails: `failure` is the system's error number.
Descriptor connectTo(const addrinfo& address, const Deadline& deadline, int& failure)
{
    Descriptor descriptor(
        socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol));
    failure = descriptor.open() && connect(descriptor.get(), address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
    if (failure == EINPROGRESS) {
        deadline.await(descriptor.get(), POLLOUT);
        socklen_t size = sizeof failure;
        if (getsockopt(descriptor.get(), SOL_SOCKET, SO_ERROR, &failure, &size) != 0)
            failure = errno;
    }
    if (failure != 0)
        return {};
    const int on = 1; // lines are short and wait for their answers
    setsockopt(descriptor.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return descriptor;
}

} // namespace

Socket::Socket(const std::string& host, std::uint16_t port, const Deadline& deadline)
{
    int failure = 0;
    const Addresses addresses = resolveInTime(host, port, deadline);
    for (const addrinfo* address = addresses.get(); address != nullptr && !descriptor_.open();
         address = address->ai_next)
        descriptor_ = connectTo(*address, deadline, failure);
    if (!descriptor_.open())
        throw TlsFailure(host + " port " + std::to_string(port) + ": " + std::strerror(failure));
}

} // namespace mervo::platform
