#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tarnel {

class WatchSet;

/// A descriptor that the message loops of one thread look after: a socket, the presenter's line. It
/// belongs to the thread that starts it, and looks on until it is stopped, destroyed, or the thread
/// ends.
class Watch {
  public:
    Watch() = default;
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Looks at `descriptor`, which is closed only after stop(), for `events` (EPOLL..., HUP and
    /// ERR always) on the calling thread: edge-triggered, so what is served is used up until
    /// nothing more can be read or written, or remembered. False, with the last error, when the
    /// system refuses.
    bool start(int descriptor, std::uint32_t events);

    /// Nothing is served any more, not even what has come already.
    void stop();

    bool started() const { return descriptor_ >= 0; }

  protected:
    ~Watch() { stop(); }

  private:
    friend WatchSet;

    /// Something has come (EPOLL...). Called within the retrieval of messages, which may be
    /// anywhere in the application: it posts messages, and calls nothing of the application. It
    /// may stop and destroy watches, itself too.
    virtual void serve(std::uint32_t events) = 0;

    std::weak_ptr<WatchSet> set_;
    std::size_t place_ = 0;
    int descriptor_ = -1;
};

} // namespace tarnel
