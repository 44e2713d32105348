#pragma once

#include "net/DelayedMessageWindow.h"
#include "net/SocketData.h"
#include "platform/sockets/socket.h"

#include <deque>
#include <memory>

namespace tarnel {
class SocketStream;
}

/// One end of a TCP connection that exchanges payload objects. The application derives from it and
/// supplies the handlers. It is used on one thread, whose message loop calls them.
///
/// A handler may send, wait for a reply, close the socket or have it deleted by DelayedDelete();
/// only when no call of the socket is running may it be deleted directly. A framework exception
/// that leaves a handler goes to whoever made the call, from a message loop to the application
/// (CWinApp::ProcessWndProcException); the socket is as usable afterwards as before.
class TARNEL_API CTCPIPSocket : public CSocket {
  public:
    /// What becomes of a message that came instead of the awaited reply.
    enum ProcessesingType {
        Ignore = 0,         ///< it is dropped
        ProcessNow = 1,     ///< it is handled at once, within the wait
        ProcessDelayed = 2, ///< a copy (CSocketData::Clone) is handled after the wait
    };

    /// `pReceiveData` takes every unsolicited message; it is the application's, and outlives this.
    explicit CTCPIPSocket(CSocketData* pReceiveData);
    ~CTCPIPSocket() override;

    using CSocket::Send;

    /// Connects to a host (a name or a numeric address) and port, waiting as CSocket does. 1, or 0
    /// on failure. A connection that there was is lost then.
    int Connect(LPCSTR lpszHostAddress, UINT nHostPort);

    /// Makes a connected system socket ready for use: 1, or 0 with nothing made. Connect() and the
    /// server socket call it.
    int PostConnectInitialise();

    int IsConnected() { return m_pStream != nullptr; }

    /// Sends one payload and waits until the system has taken it. 1; 0 when there is no connection,
    /// while a reply is awaited, and when sending fails. What the payload throws passes through.
    int Send(CSocketData* pData);

    /// Waits up to `dwTimeOut` milliseconds (0xFFFFFFFF: no limit) for the message that
    /// IsExpectedCommand() takes as the reply to `dwCommand`: 1 with the reply in `pReply`. 0 when
    /// none came in time, when the connection has ended or a handler has closed it, when there is
    /// none, and within another wait. No posted messages are dispatched meanwhile.
    int GetSynchReply(CSocketData* pReply, DWORD dwCommand, DWORD dwTimeOut);

    /// Send() and GetSynchReply(): 1 when both succeed. What comes in between is left for the wait.
    int SendAndGetSynchReply(CSocketData* pRequest, CSocketData* pReply, DWORD dwCommand,
                             DWORD dwTimeOut);

    int IsGettingSynchReply() { return m_bGettingSynchReply; }

    /// Ends the connection without telling the application, and forgets the kept messages. In a
    /// handler of a message that came unsolicited it happens on a later turn of the message loop.
    void Close() override;

    void OnReceive(int nErrorCode) override;
    void OnClose(int nErrorCode) override;

    /// Has the socket deleted on a later turn of the message loop, when no call of it is running.
    void DelayedDelete();

    /// A message to be handled; `pData` is valid during the call.
    virtual void OnMessageReceived(CSocketData* pData) = 0;

    /// Whether `pData` is the reply to `dwCommand`: nonzero if so, as the base says of every
    /// message. If not, what becomes of it may be set in `pType`, and by how many milliseconds the
    /// wait is to be longer in `pdwTimeExtension`.
    virtual int IsExpectedCommand(CSocketData* pData, DWORD dwCommand, DWORD* pdwTimeExtension,
                                  ProcessesingType* pType);

    /// The peer has closed the connection (0), or it has broken (a WSAE... value).
    virtual void OnConnectionClosed(int nErrorCode) = 0;

    /// The connection is ready for use: made by Connect() (0) or accepted by a server (1).
    virtual void OnConnectionEstablished(int bAccepted) = 0;

  protected:
    /// A call of the socket that can call the application: the socket is not deleted before its
    /// end.
    class Running {
      public:
        explicit Running(CTCPIPSocket& socket) : m_Socket(socket) { ++m_Socket.m_nRunning; }

        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        ~Running() {
            if (--m_Socket.m_nRunning == 0) {
                m_Socket.PostWanted();
            }
        }

      private:
        CTCPIPSocket& m_Socket;
    };

  private:
    friend CDelayedMessageWindow;
    class SynchWait;

    bool IsRunning() const { return m_nRunning > 0; }

    bool MakeWindow();
    void PostWanted();
    void CloseIfWanted();
    void ProcessDelayedMessages();
    void ClearDelayedMessageQueue();
    void DeleteFileAndArchives();
    void ReceiveAll(const std::shared_ptr<tarnel::SocketStream>& stream);
    bool IsReply(CSocketData* pReply, DWORD dwCommand, SynchWait& wait);
    void Keep(CSocketData* pData);

    std::shared_ptr<tarnel::SocketStream> m_pStream; ///< null without a connection
    std::unique_ptr<CDelayedMessageWindow> m_pDelayedMessageWindow;
    int m_bGettingSynchReply = 0;
    int m_bInSynchExchange = 0;
    int m_bInReceive = 0;
    CSocketData* const m_pReceiveData;
    std::deque<std::unique_ptr<CSocketData>> m_DelayedMessages;

    int m_nRunning = 0;
    bool m_bCloseWanted = false;
    bool m_bDeleteWanted = false;
};
