// Which events of a socket are announced, and when.

#include "platform/sockets/live_socket.h"
#include "platform/sockets/socket_error.h"
#include "platform/sockets/socket_thread.h"
#include "platform/sockets/stream_socket.h"

#include <sys/epoll.h>

namespace tarnel {
namespace {

constexpr std::uint32_t ending = EPOLLRDHUP | EPOLLHUP | EPOLLERR;

} // namespace

void LiveSocket::select(LONG mask) {
    mask_ = mask;
    armed_ = FD_ALL_EVENTS;
    look();
}

void LiveSocket::end_wait() {
    const LONG event = std::exchange(awaited_, 0);
    if (cancelled_ && descriptor_) { // nobody will look again
        cancelled_ = false;
        armed_ |= event;
        look();
    }
}

void LiveSocket::serve(std::uint32_t events) {
    ++stirs_;
    act_on(events);
}

/// Acts on what holds now.
void LiveSocket::look() {
    if (mask_ != 0) {
        act_on(state_of(descriptor_.get()));
    }
}

void LiveSocket::act_on(std::uint32_t events) {
    if (state_ == State::connecting && (events & (EPOLLOUT | ending))) {
        finish_connecting();
    }
    if (state_ == State::listening && (events & EPOLLIN)) {
        announce(FD_ACCEPT);
    }
    if (state_ != State::connected) {
        return;
    }
    ended_ = ended_ || (events & ending);
    if ((events & EPOLLOUT) && error_ == 0) {
        announce(FD_WRITE);
    }
    if (events & EPOLLPRI) {
        announce(FD_OOB);
    }
    if (ended_) {
        look_at_end();
    } else if (events & EPOLLIN) {
        announce(FD_READ);
    }
}

void LiveSocket::finish_connecting() {
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(descriptor_.get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error == 0) {
        established();
        return;
    }
    state_ = State::failed;
    error_ = socket_error_from_errno(error);
    announce(FD_CONNECT, error_);
}

void LiveSocket::established() {
    state_ = State::connected;
    announce(FD_CONNECT);
    announce(FD_WRITE);
}

/// The end is announced when everything before it has been read.
void LiveSocket::look_at_end() {
    char byte = 0;
    const Got got = try_receive(&byte, 1, MSG_PEEK);
    if (got.count > 0) {
        announce(FD_READ);
    } else if (got.error != WSAEWOULDBLOCK) {
        announce(FD_CLOSE, error_);
    }
}

void LiveSocket::announce(LONG event, int error) {
    if (event & awaited_) {
        armed_ &= ~event;
    }
    if (!thread_ || !(event & mask_ & armed_)) {
        return;
    }
    if ((queued_ & event) || thread_->post(number_, event, error)) {
        armed_ &= ~event;
        queued_ |= event;
    } else {
        watch(); // the queue is full: once more, later
    }
}

/// Whether what was announced before a re-enabling call is still so.
bool LiveSocket::still_holds(LONG event) {
    char byte = 0;
    switch (event) {
    case FD_READ:
        return try_receive(&byte, 1, MSG_PEEK).count > 0;
    case FD_ACCEPT:
        return (state_of(descriptor_.get()) & EPOLLIN) != 0;
    default:
        return true;
    }
}

void LiveSocket::deliver(LONG event, int error) {
    struct Handler {
        LONG event;
        void (CAsyncSocket::*run)(int);
    };

    static constexpr Handler handlers[] = {
        {FD_READ, &CAsyncSocket::OnReceive},      {FD_WRITE, &CAsyncSocket::OnSend},
        {FD_OOB, &CAsyncSocket::OnOutOfBandData}, {FD_ACCEPT, &CAsyncSocket::OnAccept},
        {FD_CONNECT, &CAsyncSocket::OnConnect},   {FD_CLOSE, &CAsyncSocket::OnClose},
    };
    queued_ &= ~event;
    if ((armed_ & event) && !still_holds(event)) {
        return;
    }
    for (const Handler& handler : handlers) {
        if (handler.event == event) {
            (owner_.*handler.run)(error);
            return;
        }
    }
}

} // namespace tarnel
