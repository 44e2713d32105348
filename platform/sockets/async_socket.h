#pragma once

#include "platform/base/object.h"
#include "platform/base/string.h"
#include "platform/sockets/socket_errors.h"

#include <memory>

struct sockaddr;

using SOCKET = std::uint64_t;
using SOCKADDR = ::sockaddr;

constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
constexpr int SOCKET_ERROR = -1;

constexpr LONG FD_READ = 0x01;
constexpr LONG FD_WRITE = 0x02;
constexpr LONG FD_OOB = 0x04;
constexpr LONG FD_ACCEPT = 0x08;
constexpr LONG FD_CONNECT = 0x10;
constexpr LONG FD_CLOSE = 0x20;
constexpr LONG FD_ALL_EVENTS = 0x3F;

namespace tarnel {
class LiveSocket;
}

/// A TCP socket that never waits. It belongs to the thread that created it (or accepted into it),
/// and its handlers run there, from that thread's message loop. Where the machine has IPv6, a
/// socket serves both families.
///
/// An event that was announced is announced again only after its re-enabling call, whether that
/// succeeds or not: reading for FD_READ and FD_OOB, Accept() for FD_ACCEPT; FD_WRITE comes when the
/// connection is made and when space returns after a send that failed for want of it, FD_CLOSE once
/// when the peer has closed and everything has been read, or the connection has broken. A handler
/// may close its socket or delete the object.
///
/// Failing calls return FALSE or SOCKET_ERROR and set the last error to a WSAE... value.
class TARNEL_PLATFORM_API CAsyncSocket : public CObject {
    DECLARE_DYNAMIC(CAsyncSocket)

    // The system's own headers know these names too, so they stand in the class.
    static constexpr int SOCK_STREAM = 1;
    static constexpr int MSG_PEEK = 2;

    CAsyncSocket();

    /// Closes the socket.
    ~CAsyncSocket() override;

    /// Makes a socket on local port `port` (0: any) of all addresses of the machine, announcing the
    /// events in `mask`. `type` must be SOCK_STREAM. The object must have no socket.
    BOOL Create(UINT port = 0, int type = SOCK_STREAM, LONG mask = FD_ALL_EVENTS);

    /// Connects to the host, a numeric address or a name, which is looked up for 30 seconds at most
    /// (the thread serves its sockets and what is sent to its windows meanwhile). FALSE with
    /// WSAEWOULDBLOCK when OnConnect() will tell the outcome, FALSE with WSAEINVAL for an unknown
    /// name. A host's addresses are tried in the resolver's order; without waiting (see CSocket),
    /// only up to the first whose outcome is not known at once.
    BOOL Connect(LPCSTR host, UINT port);

    /// `backlog` connections may wait to be accepted.
    BOOL Listen(int backlog = 5);

    /// Takes the connection that waits first into `connected`, which must have no socket, and
    /// which announces the same events as this one.
    virtual BOOL Accept(CAsyncSocket& connected);

    /// Up to `size` bytes, as many as there are; 0 when the peer has closed. With MSG_PEEK they
    /// stay in the socket.
    virtual int Receive(void* buffer, int size, int flags = 0);

    /// As many of the bytes as there is space for.
    virtual int Send(const void* buffer, int size, int flags = 0);

    /// Nothing is announced any more, not even what waits in the message queue.
    virtual void Close();

    /// Announces the events in `mask` from now on, and what of them holds now at once; 0 announces
    /// nothing new, but what waits in the message queue still arrives.
    BOOL AsyncSelect(LONG mask = FD_ALL_EVENTS);

    /// The numeric address and the port of the peer.
    BOOL GetPeerName(CString& address, UINT& port);

    static int GetLastError() { return WSAGetLastError(); }

    /// The descriptor, INVALID_SOCKET for none. Not to be closed.
    SOCKET m_hSocket = INVALID_SOCKET;

  protected:
    friend tarnel::LiveSocket;

    virtual void OnReceive(int error);
    virtual void OnSend(int error);
    virtual void OnOutOfBandData(int error);
    virtual void OnAccept(int error);
    virtual void OnConnect(int error);
    virtual void OnClose(int error);

    /// Connects to one address of the host.
    virtual BOOL ConnectHelper(const SOCKADDR* address, int size);

    // Null without a socket; shared with the calls that wait for it.
    std::shared_ptr<tarnel::LiveSocket> live_;

  private:
    void take(std::shared_ptr<tarnel::LiveSocket> live);
    void release();
};

namespace tarnel {

/// Sleeps, dispatching nothing, until bytes or the end of the connection can be read from `socket`,
/// at most `milliseconds`.
TARNEL_PLATFORM_API void sleep_until_input(const CAsyncSocket& socket, DWORD milliseconds);

} // namespace tarnel
