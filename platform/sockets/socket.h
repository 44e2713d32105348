#pragma once

#include "platform/sockets/async_socket.h"

/// A socket whose calls wait until they are done instead of failing with WSAEWOULDBLOCK. The thread
/// serves its sockets meanwhile, without running any of their handlers: these come afterwards, in
/// order. What is sent to its windows runs, and so does the application's own loop where one is
/// set (see host_loop.h); posted messages are left to OnMessagePending(). A call that another call
/// of the same socket has to wait for fails with WSAEINPROGRESS.
class TARNEL_PLATFORM_API CSocket : public CAsyncSocket {
    DECLARE_DYNAMIC(CSocket)

    CSocket();
    ~CSocket() override;

    /// See CAsyncSocket; all events are announced.
    BOOL Create(UINT port = 0, int type = SOCK_STREAM);

    BOOL Accept(CAsyncSocket& connected) override;
    int Receive(void* buffer, int size, int flags = 0) override;

    /// All of the bytes. On failure some may have been sent.
    int Send(const void* buffer, int size, int flags = 0) override;

    /// Ends a call that waits, too.
    void Close() override;

    /// Has the call that waits, if there is one, fail with WSAEINTR.
    void CancelBlockingCall();

  protected:
    /// Called while a call waits and messages are in the thread's queue: an override may run some
    /// of them, which may even close or delete the socket. The result is not used.
    virtual BOOL OnMessagePending();

    BOOL ConnectHelper(const SOCKADDR* address, int size) override;

  private:
    bool is_free() const;
    bool wait_for(LONG event, unsigned seen);
};
