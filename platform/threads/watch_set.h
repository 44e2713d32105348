#pragma once

#include "platform/base/descriptor.h"
#include "platform/threads/watch.h"

#include <vector>

namespace tarnel {

/// The watches of one thread, which alone uses it.
class WatchSet {
  public:
    /// Null, with the last error, when the system refuses. `bell` is part of what the set's
    /// descriptor tells of.
    static std::shared_ptr<WatchSet> make(int bell);

    /// Readable while there is something to serve, or the bell is readable.
    int descriptor() const { return epoll_.get(); }

    bool add(Watch& watch, int descriptor, std::uint32_t events);
    void remove(Watch& watch);

    /// Serves what has come, without waiting.
    void serve();

  private:
    struct Place {
        Watch* watch = nullptr;
        std::uint32_t generation = 0; ///< of its user; what came for an earlier one is dropped
    };

    explicit WatchSet(Descriptor epoll) : epoll_(std::move(epoll)) {}

    std::size_t free_place();

    Descriptor epoll_;
    std::vector<Place> places_;
};

} // namespace tarnel
