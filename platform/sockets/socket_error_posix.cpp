#include "platform/base/last_error.h"
#include "platform/sockets/socket_error.h"
#include "platform/sockets/socket_errors.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

struct Translation {
    int error;
    int socket_error;
};

constexpr Translation translations[] = {
    {EINTR, WSAEINTR},
    {EACCES, WSAEACCES},
    {EPERM, WSAEACCES},
    {EINVAL, WSAEINVAL},
    {EMFILE, WSAEMFILE},
    {ENFILE, WSAEMFILE},
    {EAGAIN, WSAEWOULDBLOCK},
    {EINPROGRESS, WSAEWOULDBLOCK}, // what connecting without waiting begins with
    {EALREADY, WSAEALREADY},
    {EBADF, WSAENOTSOCK},
    {ENOTSOCK, WSAENOTSOCK},
    {EAFNOSUPPORT, WSAEAFNOSUPPORT},
    {EADDRINUSE, WSAEADDRINUSE},
    {EADDRNOTAVAIL, WSAEADDRNOTAVAIL},
    {ENETDOWN, WSAENETDOWN},
    {ENETUNREACH, WSAENETUNREACH},
    {ECONNABORTED, WSAECONNABORTED},
    {ECONNRESET, WSAECONNRESET},
    {EPIPE, WSAECONNRESET}, // what a reset becomes after the peer had closed
    {ENOBUFS, WSAENOBUFS},
    {ENOMEM, WSAENOBUFS},
    {EISCONN, WSAEISCONN},
    {ENOTCONN, WSAENOTCONN},
    {ETIMEDOUT, WSAETIMEDOUT},
    {ECONNREFUSED, WSAECONNREFUSED},
    {EHOSTUNREACH, WSAEHOSTUNREACH},
};

} // namespace

int WSAGetLastError() {
    return static_cast<int>(GetLastError());
}

namespace tarnel {

int socket_error_from_errno(int error) {
    const auto* const found = std::ranges::find(translations, error, &Translation::error);
    return found == std::ranges::end(translations) ? WSASYSCALLFAILURE : found->socket_error;
}

} // namespace tarnel
