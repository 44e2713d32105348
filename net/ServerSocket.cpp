#include "net/ServerSocket.h"

namespace {

constexpr int waiting_clients = 5;

} // namespace

CTCPIPServerSocket::CTCPIPServerSocket(CSocketData* pReceiveData) : CTCPIPSocket(pReceiveData) {}

CTCPIPServerSocket::~CTCPIPServerSocket() = default;

int CTCPIPServerSocket::Listen(UINT nPort) {
    StopListening();
    Close();
    m_pListening = std::make_shared<CListeningSocket>(this);
    if (!m_pListening->Create(nPort) || !m_pListening->Listen(waiting_clients)) {
        m_pListening.reset();
        return 0;
    }
    return 1;
}

void CTCPIPServerSocket::CloseConnection() {
    const Running running(*this);
    StopListening();
    Close();
    OnClose(0);
}

/// A client may be waiting that could not be taken while the old connection was there.
void CTCPIPServerSocket::Close() {
    CTCPIPSocket::Close();
    if (m_pListening && m_hSocket == INVALID_SOCKET) {
        m_pListening->AsyncSelect();
    }
}

void CTCPIPServerSocket::OnClose(int nErrorCode) {
    CTCPIPSocket::OnClose(nErrorCode);
}

void CTCPIPServerSocket::StopListening() {
    if (m_pListening) {
        m_pListening->Close();
        m_pListening.reset();
    }
}

/// The handler may listen anew, close the connection, or have the server deleted: what is done for
/// this connection then ends with it.
void CTCPIPServerSocket::TakeConnection(const std::shared_ptr<CListeningSocket>& from) {
    const Running running(*this);
    const bool ready = PostConnectInitialise() != 0;
    OnConnectionEstablished(1);
    if (m_pListening != from) {
        return;
    }
    if (ready) {
        StopListening();
    } else {
        Close();
    }
}

CTCPIPServerSocket::CListeningSocket::CListeningSocket(CTCPIPServerSocket* owner)
    : m_pOwner(owner) {}

CTCPIPServerSocket::CListeningSocket::~CListeningSocket() = default;

void CTCPIPServerSocket::CListeningSocket::OnAccept(int nErrorCode) {
    CSocket::OnAccept(nErrorCode);
    // Without waiting: the client may have gone again.
    if (nErrorCode != 0 || !CAsyncSocket::Accept(*m_pOwner)) {
        return;
    }
    const std::shared_ptr<CListeningSocket> self = m_pOwner->m_pListening; // until this has ended
    m_pOwner->TakeConnection(self);
}
