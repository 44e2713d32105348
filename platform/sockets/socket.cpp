#include "platform/sockets/socket.h"

#include "platform/base/last_error.h"
#include "platform/sockets/blocking_call.h"

IMPLEMENT_DYNAMIC(CSocket, CAsyncSocket)

CSocket::CSocket() = default;
CSocket::~CSocket() = default;

BOOL CSocket::Create(UINT port, int type) {
    return CAsyncSocket::Create(port, type);
}

/// Whether no other call of the socket waits.
bool CSocket::is_free() const {
    const bool waited_for = live_ && live_->is_waited_for();
    if (waited_for) {
        SetLastError(WSAEINPROGRESS);
    }
    return !waited_for;
}

/// After a call that would have had to wait, with the edges counted before it: waits for the next
/// one. False when the call has failed, also by being cancelled; this may be gone then.
bool CSocket::wait_for(LONG event, unsigned seen) {
    if (GetLastError() != WSAEWOULDBLOCK) {
        return false;
    }
    const auto live = live_;
    tarnel::BlockingCall call(live, event);
    return call.wait([&] { return live->stirs() != seen; }, [this] { OnMessagePending(); });
}

BOOL CSocket::Accept(CAsyncSocket& connected) {
    for (;;) {
        const unsigned seen = live_ ? live_->stirs() : 0;
        if (!is_free()) {
            return FALSE;
        }
        if (CAsyncSocket::Accept(connected)) {
            return TRUE;
        }
        if (!wait_for(FD_ACCEPT, seen)) {
            return FALSE;
        }
    }
}

int CSocket::Receive(void* buffer, int size, int flags) {
    for (;;) {
        const unsigned seen = live_ ? live_->stirs() : 0;
        if (!is_free()) {
            return SOCKET_ERROR;
        }
        const int got = CAsyncSocket::Receive(buffer, size, flags);
        if (got != SOCKET_ERROR || !wait_for(FD_READ, seen)) {
            return got;
        }
    }
}

int CSocket::Send(const void* buffer, int size, int flags) {
    int done = 0;
    do {
        const unsigned seen = live_ ? live_->stirs() : 0;
        if (!is_free()) {
            return SOCKET_ERROR;
        }
        const int sent =
            CAsyncSocket::Send(static_cast<const char*>(buffer) + done, size - done, flags);
        if (sent == SOCKET_ERROR && !wait_for(FD_WRITE, seen)) {
            return SOCKET_ERROR;
        }
        done += sent == SOCKET_ERROR ? 0 : sent;
    } while (done < size);
    return done;
}

BOOL CSocket::ConnectHelper(const SOCKADDR* address, int size) {
    if (!is_free()) {
        return FALSE;
    }
    const auto live = live_;
    tarnel::BlockingCall call(live, FD_CONNECT);
    if (CAsyncSocket::ConnectHelper(address, size)) {
        return TRUE;
    }
    if (GetLastError() != WSAEWOULDBLOCK ||
        !call.wait([&] { return !live->is_connecting(); }, [this] { OnMessagePending(); })) {
        return FALSE;
    }
    if (live->error() != 0) {
        SetLastError(static_cast<DWORD>(live->error()));
    }
    return live->error() == 0;
}

void CSocket::Close() {
    CancelBlockingCall();
    CAsyncSocket::Close();
}

void CSocket::CancelBlockingCall() {
    if (live_ && live_->is_waited_for()) {
        live_->cancel();
    }
}

BOOL CSocket::OnMessagePending() {
    return FALSE;
}
