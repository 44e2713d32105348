#pragma once

#include "platform/base/descriptor.h"
#include "platform/sockets/async_socket.h"
#include "platform/threads/watch.h"

#include <sys/socket.h>

namespace tarnel {

class SocketThread;

/// The open socket behind a CAsyncSocket, and which of its events are to be announced. Calls that
/// fail set the last error. The descriptor's edges come through the thread's watch set; whether a
/// condition holds at a re-enabling moment is asked of the system.
class LiveSocket final : public Watch {
  public:
    /// A new socket on local port `port` (0: any), or null.
    static std::shared_ptr<LiveSocket> open(CAsyncSocket& owner, UINT port, LONG mask);

    LiveSocket(CAsyncSocket& owner, SocketThread& thread, LONG mask);
    ~LiveSocket();

    int descriptor() const { return descriptor_.get(); }

    /// False with WSAEWOULDBLOCK while it connects. After a failure a fresh socket is in place.
    bool connect(const sockaddr* address, int size);
    bool listen(int backlog);
    std::shared_ptr<LiveSocket> accept(CAsyncSocket& owner);
    int receive(void* buffer, int size, int flags);
    int send(const void* buffer, int size, int flags);
    void select(LONG mask);
    void close();

    // For the calls that wait.

    bool is_connecting() const { return state_ == State::connecting; }

    bool has_failed() const { return state_ == State::failed; }

    /// Why connecting failed, or what has broken the connection; 0 for nothing.
    int error() const { return error_; }

    /// Changes with each edge.
    unsigned stirs() const { return stirs_; }

    bool is_waited_for() const { return awaited_ != 0; }

    /// `event` ends a wait from here on, and is not announced.
    void begin_wait(LONG event) { awaited_ = event; }

    void end_wait();

    void cancel() { cancelled_ = true; }

    bool is_cancelled() const { return cancelled_; }

    // For the socket's thread.

    /// Runs the handler, after which this may be gone.
    void deliver(LONG event, int error);

    void thread_ended() { thread_ = nullptr; }

  private:
    enum class State { idle, connecting, failed, connected, listening };

    struct Got {
        int count;
        int error;
    };

    void serve(std::uint32_t events) override;
    bool attach(Descriptor descriptor, State state);

    /// Asks for an edge of whatever holds now, and all that follow.
    bool watch();

    bool renew();
    void look();
    void act_on(std::uint32_t events);
    void finish_connecting();
    void established();
    void look_at_end();
    void announce(LONG event, int error = 0);
    bool still_holds(LONG event);
    Got try_receive(void* buffer, int size, int flags);
    int fail(int error) const;

    CAsyncSocket& owner_;
    SocketThread* thread_;
    const std::uint64_t number_;
    UINT port_ = 0; ///< as asked for
    Descriptor descriptor_;
    State state_ = State::idle;
    LONG mask_;
    LONG armed_ = FD_ALL_EVENTS; ///< not announced since their re-enabling call
    LONG queued_ = 0;            ///< announced and not delivered: one of a kind is enough
    LONG awaited_ = 0;
    bool ended_ = false; ///< the peer has closed, or worse: what can be read is the rest
    int error_ = 0;
    unsigned stirs_ = 0;
    bool cancelled_ = false;
};

} // namespace tarnel
