#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <deque>
#include <unordered_map>

namespace tarnel {

class LiveSocket;

/// The sockets of one thread, and the hidden window through which their events reach them: each is
/// one posted message. It lives as long as its thread.
class SocketThread {
  public:
    /// The calling thread's; null, with the last error, when no descriptor is left.
    static SocketThread* current();

    /// Numbers the socket. A number is never used again, so that what was posted for a socket that
    /// is gone finds nobody.
    std::uint64_t enter(LiveSocket& socket);

    void leave(std::uint64_t number) { sockets_.erase(number); }

    /// False while the thread's queue is full.
    bool post(std::uint64_t number, LONG event, int error);

    // While a blocking call waits on the thread, what reaches the window is kept.

    void begin_wait() { ++waits_; }

    void end_wait();

  private:
    struct Notification {
        std::uint64_t number;
        LONG event;
        int error;
    };

    static LRESULT handle_message(void* self, HWND window, UINT message, WPARAM wparam,
                                  LPARAM lparam);
    static void thread_ended(void* self);

    void receive(const Notification& notification);
    void deliver_kept();
    void deliver(const Notification& notification);

    HWND window_ = nullptr;
    std::uint64_t last_number_ = 0;
    std::unordered_map<std::uint64_t, LiveSocket*> sockets_;
    int waits_ = 0;
    std::deque<Notification> kept_;

    static thread_local constinit SocketThread* own_;
};

} // namespace tarnel
