#pragma once

#include "platform/messages/message.h"

#include <memory>

namespace tarnel {

/// The posted messages of one queue, oldest first. Its storage grows by doubling and is kept, so
/// that posting allocates nothing once the queue is warm.
class MessageRing {
  public:
    static constexpr std::size_t limit = 10'000;

    std::size_t size() const { return size_; }

    const MSG& operator[](std::size_t index) const { return slots_[place(index)]; }

    /// A new last message, to be filled by the caller: member by member, which is much faster than
    /// copying a record that has just been put together. Null when `limit` messages are held.
    MSG* push() {
        if (size_ == limit) {
            return nullptr;
        }
        if (size_ == capacity_) {
            grow();
        }
        return &at(size_++);
    }

    /// Takes out the message at `index`; the others keep their order.
    void erase(std::size_t index) {
        if (index > 0) {
            close_gap(index);
            return;
        }
        // Starts anew when empty: the storage that was just in use is still in the cache.
        first_ = --size_ == 0 ? 0 : place(1);
    }

    /// Drops all messages of `window`.
    void purge(HWND window);

    void clear() { size_ = 0; }

  private:
    std::size_t place(std::size_t index) const { return (first_ + index) & (capacity_ - 1); }

    MSG& at(std::size_t index) { return slots_[place(index)]; }

    void grow();
    void close_gap(std::size_t index);

    std::unique_ptr<MSG[]> slots_;
    std::size_t capacity_ = 0;
    std::size_t first_ = 0;
    std::size_t size_ = 0;
};

} // namespace tarnel
