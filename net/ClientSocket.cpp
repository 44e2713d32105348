#include "net/ClientSocket.h"

#include "net/Flag.h"
#include "net/SocketStream.h"
#include "platform/base/exceptions.h"

#include <new>
#include <utility>

namespace {

/// The socket announces nothing as long as this lives.
class Silence {
  public:
    explicit Silence(CAsyncSocket& socket) : socket_(socket) { socket_.AsyncSelect(0); }

    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

    ~Silence() { socket_.AsyncSelect(); }

  private:
    CAsyncSocket& socket_;
};

} // namespace

CTCPIPSocket::CTCPIPSocket(CSocketData* pReceiveData) : m_pReceiveData(pReceiveData) {}

CTCPIPSocket::~CTCPIPSocket() {
    DeleteFileAndArchives();
}

int CTCPIPSocket::Connect(LPCSTR lpszHostAddress, UINT nHostPort) {
    const Running running(*this);
    if (m_hSocket == INVALID_SOCKET && !Create()) {
        return 0;
    }
    if (!CSocket::Connect(lpszHostAddress, nHostPort)) {
        CSocket::Close();
        DeleteFileAndArchives();
        return 0;
    }
    if (!PostConnectInitialise()) {
        return 0;
    }
    OnConnectionEstablished(0);
    return 1;
}

int CTCPIPSocket::PostConnectInitialise() {
    DeleteFileAndArchives();
    try {
        m_pStream = std::make_shared<tarnel::SocketStream>(*this);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    if (!MakeWindow()) {
        DeleteFileAndArchives();
        return 0;
    }
    return 1;
}

int CTCPIPSocket::Send(CSocketData* pData) {
    const auto stream = m_pStream;
    if (!stream || m_bGettingSynchReply) {
        return 0;
    }
    const Running running(*this);
    pData->Dump(0);
    if (!pData->Serialise(stream->sending)) {
        return 0;
    }
    try {
        stream->sending.Flush();
    } catch (CException* exception) {
        exception->Delete();
        return 0;
    }
    return 1;
}

void CTCPIPSocket::Close() {
    m_bCloseWanted = m_bInReceive != 0;
    if (m_bCloseWanted) {
        return; // the end of what is running posts it
    }
    CSocket::Close();
    DeleteFileAndArchives();
}

void CTCPIPSocket::OnReceive(int nErrorCode) {
    const auto stream = m_pStream;
    if (m_bInSynchExchange || m_bInReceive || !stream) {
        return;
    }
    const Running running(*this);
    const tarnel::Flag receiving(m_bInReceive);
    CSocket::OnReceive(nErrorCode);
    if (nErrorCode != 0) {
        return;
    }
    ProcessDelayedMessages();
    const Silence silence(*this);
    ReceiveAll(stream);
}

/// Handles what one read of the connection brings. More than that announces itself again, so that
/// a peer who never stops leaves the thread its other work.
void CTCPIPSocket::ReceiveAll(const std::shared_ptr<tarnel::SocketStream>& stream) {
    stream->receiving.EnableBulkRead();
    bool more = stream == m_pStream;
    while (more) {
        if (m_pReceiveData->Serialise(stream->receiving)) {
            OnMessageReceived(m_pReceiveData);
            ProcessDelayedMessages(); // kept by a wait in that handler: they came earlier
        }
        more = stream == m_pStream && !stream->receiving.IsBufferEmpty();
    }
}

void CTCPIPSocket::OnClose(int nErrorCode) {
    const Running running(*this);
    const auto stream = m_pStream;
    CSocket::OnClose(nErrorCode);
    ClearDelayedMessageQueue();
    OnConnectionClosed(nErrorCode);
    if (stream == m_pStream) { // else the handler has connected anew
        DeleteFileAndArchives();
    }
}

void CTCPIPSocket::DelayedDelete() {
    m_bDeleteWanted = true;
    if (!IsRunning()) {
        PostWanted();
    }
}

int CTCPIPSocket::IsExpectedCommand(CSocketData*, DWORD, DWORD*, ProcessesingType*) {
    return 1;
}

bool CTCPIPSocket::MakeWindow() {
    if (m_pDelayedMessageWindow) {
        return true;
    }
    m_pDelayedMessageWindow = std::make_unique<CDelayedMessageWindow>(this);
    const bool made = m_pDelayedMessageWindow->Create() != FALSE;
    if (!made) {
        m_pDelayedMessageWindow.reset();
    }
    return made;
}

void CTCPIPSocket::PostWanted() {
    if ((!m_bCloseWanted && !m_bDeleteWanted) || !MakeWindow()) {
        return;
    }
    if (m_bCloseWanted) {
        m_pDelayedMessageWindow->PostMessage(CDelayedMessageWindow::close_owner);
    }
    if (m_bDeleteWanted) {
        m_pDelayedMessageWindow->PostMessage(CDelayedMessageWindow::delete_owner);
    }
}

void CTCPIPSocket::CloseIfWanted() {
    if (m_bCloseWanted) {
        Close();
    }
}

void CTCPIPSocket::ProcessDelayedMessages() {
    const Running running(*this);
    while (!m_DelayedMessages.empty()) {
        const std::unique_ptr<CSocketData> message = std::move(m_DelayedMessages.front());
        m_DelayedMessages.pop_front();
        OnMessageReceived(message.get());
    }
}

void CTCPIPSocket::ClearDelayedMessageQueue() {
    m_DelayedMessages.clear();
}

/// The window stays when something is still to come through it.
void CTCPIPSocket::DeleteFileAndArchives() {
    ClearDelayedMessageQueue();
    if (const auto stream = std::exchange(m_pStream, nullptr)) {
        stream->close();
    }
    if (!m_bCloseWanted && !m_bDeleteWanted) {
        m_pDelayedMessageWindow.reset();
    }
}
