#include "platform/base/descriptor.h"
#include "platform/base/last_error.h"
#include "platform/sockets/address.h"
#include "platform/sockets/async_socket.h"
#include "platform/sockets/live_socket.h"
#include "platform/sockets/socket_error.h"
#include "platform/threads/clock.h"
#include "platform/threads/doorbell.h"

#include <poll.h>

#include <algorithm>
#include <climits>

BOOL CAsyncSocket::GetPeerName(CString& address, UINT& port) {
    tarnel::Address peer;
    peer.size = sizeof peer.storage;
    if (::getpeername(static_cast<int>(m_hSocket), peer.get(), &peer.size) != 0) {
        SetLastError(static_cast<DWORD>(tarnel::socket_error_from_errno(errno)));
        return FALSE;
    }
    address = tarnel::numeric_address(peer, port).c_str();
    return TRUE;
}

void tarnel::sleep_until_input(const CAsyncSocket& socket, DWORD milliseconds) {
    if (socket.m_hSocket == INVALID_SOCKET) {
        Sleep(milliseconds);
        return;
    }
    HeldRing::let_out();
    pollfd entry{.fd = static_cast<int>(socket.m_hSocket), .events = POLLIN, .revents = 0};
    const int limit = static_cast<int>(std::min<DWORD>(milliseconds, INT_MAX));
    static_cast<void>(::poll(&entry, 1, milliseconds == INFINITE ? -1 : limit));
}
