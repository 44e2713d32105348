#include "platform/base/last_error.h"
#include "platform/sockets/address.h"
#include "platform/sockets/live_socket.h"
#include "platform/sockets/socket_error.h"
#include "platform/sockets/socket_thread.h"
#include "platform/sockets/stream_socket.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

namespace tarnel {
namespace {

/// The system has no room for one more connection; one that waits will not get it at once.
bool is_exhausted(int error) {
    return error == WSAEMFILE || error == WSAENOBUFS;
}

/// Whether an error of reading or writing says something of the connection, not of the call.
bool breaks_connection(int error) {
    return error != EAGAIN && error != EINVAL && error != EFAULT && error != ENOMEM &&
           error != ENOBUFS;
}

} // namespace

LiveSocket::LiveSocket(CAsyncSocket& owner, SocketThread& thread, LONG mask)
    : owner_(owner), thread_(&thread), number_(thread.enter(*this)), mask_(mask) {}

LiveSocket::~LiveSocket() {
    close();
}

std::shared_ptr<LiveSocket> LiveSocket::open(CAsyncSocket& owner, UINT port, LONG mask) {
    SocketThread* const thread = SocketThread::current();
    if (!thread) {
        SetLastError(WSAENOBUFS);
        return nullptr;
    }
    auto live = std::make_shared<LiveSocket>(owner, *thread, mask);
    live->port_ = port;
    Descriptor made = make_stream_socket(static_cast<std::uint16_t>(port));
    if (!made) {
        live->fail(socket_error_from_errno(errno));
        return nullptr;
    }
    return live->attach(std::move(made), State::idle) ? live : nullptr;
}

bool LiveSocket::attach(Descriptor descriptor, State state) {
    descriptor_ = std::move(descriptor);
    state_ = state;
    return watch();
}

bool LiveSocket::watch() {
    if (!start(descriptor_.get(), EPOLLIN | EPOLLOUT | EPOLLPRI | EPOLLRDHUP)) {
        fail(WSAENOBUFS);
    }
    return started();
}

void LiveSocket::close() {
    stop();
    if (thread_) {
        thread_->leave(number_);
    }
    descriptor_ = Descriptor();
    cancelled_ = true;
    mask_ = 0;
}

int LiveSocket::fail(int error) const {
    SetLastError(static_cast<DWORD>(error));
    return SOCKET_ERROR;
}

/// A socket whose connecting failed keeps something of it: a fresh one takes its place and number.
bool LiveSocket::renew() {
    const Descriptor fresh = make_stream_socket(static_cast<std::uint16_t>(port_));
    stop();
    if (!fresh || ::dup3(fresh.get(), descriptor_.get(), O_CLOEXEC) < 0) {
        fail(socket_error_from_errno(errno));
        return false;
    }
    state_ = State::idle;
    error_ = 0;
    ended_ = false;
    armed_ = FD_ALL_EVENTS;
    return watch();
}

bool LiveSocket::connect(const sockaddr* address, int size) {
    if (state_ == State::connected) {
        fail(WSAEISCONN); // the system says so only the second time
        return false;
    }
    if (state_ == State::failed && !renew()) {
        return false;
    }
    const auto fitting =
        address_for(family_of(descriptor_.get()), address, static_cast<socklen_t>(size));
    if (!fitting) {
        fail(WSAEAFNOSUPPORT);
        return false;
    }
    if (::connect(descriptor_.get(), fitting->get(), fitting->size) == 0) {
        established();
        return true;
    }
    const int error = socket_error_from_errno(errno);
    if (error == WSAEWOULDBLOCK) {
        state_ = State::connecting;
    } else if (state_ == State::idle) {
        state_ = State::failed;
        error_ = error;
    }
    fail(error);
    return false;
}

bool LiveSocket::listen(int backlog) {
    if (::listen(descriptor_.get(), backlog) != 0) {
        fail(socket_error_from_errno(errno));
        return false;
    }
    state_ = State::listening;
    return true;
}

std::shared_ptr<LiveSocket> LiveSocket::accept(CAsyncSocket& owner) {
    armed_ |= FD_ACCEPT;
    Descriptor accepted(retry_on_signal([&] {
        return ::accept4(descriptor_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    }));
    const int error = accepted ? 0 : socket_error_from_errno(errno);
    if (!is_exhausted(error)) {
        look();
    }
    SocketThread* const thread = SocketThread::current();
    if (!accepted || !thread) {
        fail(accepted ? WSAENOBUFS : error);
        return nullptr;
    }
    auto live = std::make_shared<LiveSocket>(owner, *thread, mask_);
    return live->attach(std::move(accepted), State::connected) ? live : nullptr;
}

LiveSocket::Got LiveSocket::try_receive(void* buffer, int size, int flags) {
    if (state_ != State::connected) {
        return {SOCKET_ERROR, WSAENOTCONN};
    }
    const ssize_t got = retry_on_signal(
        [&] { return ::recv(descriptor_.get(), buffer, static_cast<std::size_t>(size), flags); });
    if (got < 0 && breaks_connection(errno)) {
        error_ = socket_error_from_errno(errno);
    }
    ended_ = ended_ || error_ != 0 || (got == 0 && size > 0);
    if (got == 0 && size > 0 && error_ != 0) {
        return {SOCKET_ERROR, error_}; // the system tells an error once
    }
    return {static_cast<int>(got), got < 0 ? socket_error_from_errno(errno) : 0};
}

int LiveSocket::receive(void* buffer, int size, int flags) {
    const Got got = try_receive(buffer, size, flags);
    armed_ |= (flags & MSG_OOB) ? FD_OOB : FD_READ;
    look();
    return got.count < 0 ? fail(got.error) : got.count;
}

int LiveSocket::send(const void* buffer, int size, int flags) {
    if (state_ != State::connected || error_ != 0) {
        return fail(error_ != 0 ? error_ : WSAENOTCONN);
    }
    const ssize_t sent = retry_on_signal([&] {
        return ::send(descriptor_.get(), buffer, static_cast<std::size_t>(size),
                      flags | MSG_NOSIGNAL);
    });
    if (sent >= 0) {
        return static_cast<int>(sent);
    }
    const int error = socket_error_from_errno(errno);
    if (error == WSAEWOULDBLOCK) {
        armed_ |= FD_WRITE;
    } else if (breaks_connection(errno)) {
        error_ = error;
    }
    return fail(error);
}

} // namespace tarnel
