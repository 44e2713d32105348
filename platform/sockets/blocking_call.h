#pragma once

#include "platform/sockets/live_socket.h"
#include "platform/sockets/socket_thread.h"
#include "platform/threads/deadline.h"

#include <functional>
#include <memory>

namespace tarnel {

/// A call of a socket that waits on its thread. Until its end no notification reaches any socket of
/// the thread. It lives on the waiting thread's stack, and keeps what it needs of the socket, whose
/// object may be deleted while it waits.
class BlockingCall {
  public:
    /// `event` is for the call, and is not announced meanwhile.
    BlockingCall(std::shared_ptr<LiveSocket> socket, LONG event);

    BlockingCall(const BlockingCall&) = delete;
    BlockingCall& operator=(const BlockingCall&) = delete;
    ~BlockingCall();

    /// Serves the thread's sockets, and runs what is sent to its windows, until `done`; `idle`,
    /// unless empty, is called when messages are waiting. False, with the last error, when the
    /// call was cancelled (the socket's object may be gone then) or the deadline has passed.
    bool wait(const std::function<bool()>& done, const std::function<void()>& idle,
              const Deadline& deadline = {});

  private:
    const std::shared_ptr<LiveSocket> socket_;
    SocketThread* const thread_;
};

} // namespace tarnel
