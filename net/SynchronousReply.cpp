#include "net/ClientSocket.h"
#include "net/Flag.h"
#include "net/SocketStream.h"

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

constexpr DWORD no_limit = 0xFFFFFFFF;
constexpr Milliseconds longest_pause(50);

} // namespace

/// A running wait for a reply: the socket announces nothing meanwhile, and what was kept is handled
/// on a later turn of the message loop, however the wait ends.
class CTCPIPSocket::SynchWait {
  public:
    SynchWait(CTCPIPSocket& socket, DWORD timeout)
        : m_Running(socket), m_Flag(socket.m_bGettingSynchReply), m_Socket(socket),
          m_pStream(socket.m_pStream), m_bCloseWanted(socket.m_bCloseWanted),
          m_bEndless(timeout == no_limit), m_Deadline(Clock::now() + Milliseconds(timeout)) {
        m_Socket.AsyncSelect(0);
    }

    SynchWait(const SynchWait&) = delete;
    SynchWait& operator=(const SynchWait&) = delete;

    ~SynchWait() {
        m_pStream->file.Settle();
        if (!m_Socket.m_DelayedMessages.empty() && m_Socket.m_pDelayedMessageWindow) {
            m_Socket.m_pDelayedMessageWindow->PostMessage(CDelayedMessageWindow::process_delayed);
        }
        m_Socket.AsyncSelect();
    }

    void Extend(DWORD milliseconds) { m_Deadline += Milliseconds(milliseconds); }

    /// Waits until there are bytes to be parsed; false when there will be none in time.
    bool HasInput() {
        while (!IsClosed()) {
            if (!Input().IsBufferEmpty() || m_pStream->file.HasSeen()) {
                return true;
            }
            const int count = m_pStream->file.Look();
            if (count > 0) {
                return true;
            }
            if (count == 0 || GetLastError() != WSAEWOULDBLOCK || !Pause()) {
                return false;
            }
        }
        return false;
    }

    CArchive& Input() { return m_pStream->receiving; }

    /// Before handlers run: what was parsed is taken from the socket.
    void Settle() { m_pStream->file.Settle(); }

  private:
    /// A handler has closed the connection, or wants it closed.
    bool IsClosed() const {
        return m_pStream != m_Socket.m_pStream || m_Socket.m_bCloseWanted != m_bCloseWanted;
    }

    /// Sleeps until something has come, a while at most; false after the deadline.
    bool Pause() {
        const auto left = std::chrono::ceil<Milliseconds>(m_Deadline - Clock::now());
        if (!m_bEndless && left < Milliseconds::zero()) {
            return false;
        }
        const auto pause =
            m_bEndless ? longest_pause : std::clamp(left, Milliseconds(1), longest_pause);
        tarnel::sleep_until_input(m_Socket, static_cast<DWORD>(pause.count()));
        return true;
    }

    const Running m_Running;
    const tarnel::Flag m_Flag;
    CTCPIPSocket& m_Socket;
    const std::shared_ptr<tarnel::SocketStream> m_pStream;
    const bool m_bCloseWanted;
    const bool m_bEndless;
    Clock::time_point m_Deadline;
};

int CTCPIPSocket::GetSynchReply(CSocketData* pReply, DWORD dwCommand, DWORD dwTimeOut) {
    if (m_bGettingSynchReply || !m_pStream) {
        return 0;
    }
    SynchWait wait(*this, dwTimeOut);
    while (wait.HasInput()) {
        if (!pReply->Serialise(wait.Input())) {
            continue;
        }
        wait.Settle();
        if (IsReply(pReply, dwCommand, wait)) {
            return 1;
        }
    }
    return 0;
}

bool CTCPIPSocket::IsReply(CSocketData* pReply, DWORD dwCommand, SynchWait& wait) {
    DWORD extension = 0;
    ProcessesingType type = Ignore;
    if (IsExpectedCommand(pReply, dwCommand, &extension, &type)) {
        pReply->Dump(1);
        return true;
    }
    wait.Extend(extension);
    if (type == ProcessNow) {
        pReply->Dump(1);
        OnMessageReceived(pReply);
    } else if (type == ProcessDelayed) {
        Keep(pReply);
    }
    return false;
}

void CTCPIPSocket::Keep(CSocketData* pData) {
    CSocketData* copy = nullptr;
    pData->Clone(copy);
    if (copy) {
        m_DelayedMessages.emplace_back(copy);
    }
}

int CTCPIPSocket::SendAndGetSynchReply(CSocketData* pRequest, CSocketData* pReply, DWORD dwCommand,
                                       DWORD dwTimeOut) {
    const Running running(*this);
    const tarnel::Flag exchanging(m_bInSynchExchange);
    return Send(pRequest) && GetSynchReply(pReply, dwCommand, dwTimeOut);
}
