#pragma once

#include "platform/threads/deadline.h"

#include <array>
#include <memory>
#include <span>

namespace tarnel {

/// Something behind a descriptor that has an object signalled one day: an operation on a line. It
/// has no thread of its own; whoever waits for the object serves it. Called without any lock held.
class Source {
  public:
    struct Watch {
        int descriptor = -1; ///< -1 for none
        short events = 0;    ///< as of poll
        Deadline deadline;
    };

    /// What to wait for before the next serve().
    virtual Watch watch() = 0;

    /// Goes on as far as it can without waiting.
    virtual void serve() = 0;

  protected:
    ~Source() = default;
};

/// The sources behind the objects of one wait.
class Sources {
  public:
    void clear() { count_ = 0; }

    void add(std::shared_ptr<Source> source) {
        if (source && count_ < all_.size()) {
            all_[count_++] = std::move(source);
        }
    }

    std::span<const std::shared_ptr<Source>> all() const { return std::span(all_).first(count_); }

  private:
    std::array<std::shared_ptr<Source>, 8> all_;
    std::size_t count_ = 0;
};

} // namespace tarnel
