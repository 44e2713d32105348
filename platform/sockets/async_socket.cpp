#include "platform/sockets/async_socket.h"

#include "platform/base/last_error.h"
#include "platform/messages/queue.h"
#include "platform/sockets/blocking_call.h"
#include "platform/sockets/live_socket.h"
#include "platform/sockets/name_lookup.h"

#include <utility>

IMPLEMENT_DYNAMIC(CAsyncSocket, CObject)

namespace {

constexpr DWORD longest_lookup = 30'000; // milliseconds
constexpr UINT last_port = 65'535;

BOOL fail(int error) {
    SetLastError(static_cast<DWORD>(error));
    return FALSE;
}

/// None, with the last error, when there are none or the call was cancelled.
std::vector<tarnel::Address> look_up(const std::shared_ptr<tarnel::LiveSocket>& live, LPCSTR host,
                                     UINT port) {
    auto addresses = tarnel::find_addresses(host, port, true);
    if (!addresses.empty()) {
        return addresses;
    }
    tarnel::MessageQueue* const queue = tarnel::MessageQueue::current();
    const auto lookup = queue ? tarnel::NameLookup::start(host, port, queue->bell()) : nullptr;
    if (!lookup) {
        fail(WSAENOBUFS);
        return {};
    }
    tarnel::BlockingCall call(live, FD_CONNECT);
    if (!call.wait([&] { return lookup->done(); }, {}, tarnel::Deadline::after(longest_lookup))) {
        return {};
    }
    fail(WSAEINVAL);
    return lookup->addresses();
}

} // namespace

CAsyncSocket::CAsyncSocket() = default;

CAsyncSocket::~CAsyncSocket() {
    release();
}

void CAsyncSocket::take(std::shared_ptr<tarnel::LiveSocket> live) {
    live_ = std::move(live);
    m_hSocket = static_cast<SOCKET>(live_->descriptor());
}

void CAsyncSocket::release() {
    m_hSocket = INVALID_SOCKET;
    if (const auto live = std::exchange(live_, nullptr)) {
        live->close();
    }
}

BOOL CAsyncSocket::Create(UINT port, int type, LONG mask) {
    if (live_ || port > last_port) {
        return fail(WSAEINVAL);
    }
    if (type != SOCK_STREAM) {
        return fail(WSAESOCKTNOSUPPORT);
    }
    auto live = tarnel::LiveSocket::open(*this, port, mask);
    if (live) {
        take(std::move(live));
    }
    return live_ != nullptr;
}

BOOL CAsyncSocket::Connect(LPCSTR host, UINT port) {
    const auto live = live_;
    if (!live || live->is_waited_for()) {
        return fail(live ? WSAEINPROGRESS : WSAENOTSOCK);
    }
    if (!host || port > last_port) {
        return fail(WSAEINVAL);
    }
    for (const tarnel::Address& address : look_up(live, host, port)) {
        if (ConnectHelper(address.get(), static_cast<int>(address.size))) {
            return TRUE;
        }
        const bool try_next = live->has_failed() || GetLastError() == WSAEAFNOSUPPORT;
        if (!try_next || live->is_cancelled()) {
            break;
        }
    }
    return FALSE;
}

BOOL CAsyncSocket::ConnectHelper(const SOCKADDR* address, int size) {
    return live_ ? live_->connect(address, size) : fail(WSAENOTSOCK);
}

BOOL CAsyncSocket::Listen(int backlog) {
    return live_ ? live_->listen(backlog) : fail(WSAENOTSOCK);
}

BOOL CAsyncSocket::Accept(CAsyncSocket& connected) {
    if (!live_ || connected.live_) {
        return fail(live_ ? WSAEINVAL : WSAENOTSOCK);
    }
    auto live = live_->accept(connected);
    if (!live) {
        return FALSE;
    }
    connected.take(std::move(live));
    return TRUE;
}

int CAsyncSocket::Receive(void* buffer, int size, int flags) {
    if (!live_ || size < 0) {
        fail(live_ ? WSAEINVAL : WSAENOTSOCK);
        return SOCKET_ERROR;
    }
    return live_->receive(buffer, size, flags);
}

int CAsyncSocket::Send(const void* buffer, int size, int flags) {
    if (!live_ || size < 0) {
        fail(live_ ? WSAEINVAL : WSAENOTSOCK);
        return SOCKET_ERROR;
    }
    return live_->send(buffer, size, flags);
}

void CAsyncSocket::Close() {
    release();
}

BOOL CAsyncSocket::AsyncSelect(LONG mask) {
    if (!live_) {
        return fail(WSAENOTSOCK);
    }
    live_->select(mask);
    return TRUE;
}

void CAsyncSocket::OnReceive(int) {}

void CAsyncSocket::OnSend(int) {}

void CAsyncSocket::OnOutOfBandData(int) {}

void CAsyncSocket::OnAccept(int) {}

void CAsyncSocket::OnConnect(int) {}

void CAsyncSocket::OnClose(int) {}
