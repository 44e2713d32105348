#include "platform/sockets/address.h"
#include "platform/sockets/stream_socket.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/epoll.h>

namespace tarnel {
namespace {

bool switch_option(int descriptor, int level, int option, int value) {
    return ::setsockopt(descriptor, level, option, &value, sizeof value) == 0;
}

/// Of both families where it is of IPv6. Only a fixed port is shared with what lingers there of
/// earlier connections.
bool prepare(int descriptor, int family, std::uint16_t port) {
    if (family == AF_INET6 && !switch_option(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, 0)) {
        return false;
    }
    const Address local = any_address(family, port);
    return port == 0 || (switch_option(descriptor, SOL_SOCKET, SO_REUSEADDR, 1) &&
                         ::bind(descriptor, local.get(), local.size) == 0);
}

} // namespace

Descriptor make_stream_socket(std::uint16_t port) {
    int error = 0;
    for (const int family : {AF_INET6, AF_INET}) {
        Descriptor made(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        if (made && prepare(made.get(), family, port)) {
            return made;
        }
        error = errno;
        if (error != EAFNOSUPPORT && error != EADDRNOTAVAIL) {
            break; // not for want of IPv6
        }
    }
    errno = error;
    return {};
}

int family_of(int descriptor) {
    int family = AF_UNSPEC;
    socklen_t size = sizeof family;
    ::getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &family, &size);
    return family;
}

// What poll tells is told in the same bits.
static_assert(EPOLLIN == POLLIN && EPOLLOUT == POLLOUT && EPOLLPRI == POLLPRI &&
              EPOLLRDHUP == POLLRDHUP && EPOLLHUP == POLLHUP && EPOLLERR == POLLERR);

std::uint32_t state_of(int descriptor) {
    constexpr short asked = POLLIN | POLLOUT | POLLPRI | POLLRDHUP;
    pollfd entry{.fd = descriptor, .events = asked, .revents = 0};
    return ::poll(&entry, 1, 0) > 0 ? static_cast<std::uint32_t>(entry.revents) : 0;
}

} // namespace tarnel
