#pragma once

#include "platform/messages/message.h"

#include <array>
#include <memory>

namespace tarnel {

/// The posted messages of one queue, oldest first. Its storage grows by doubling and is kept, so
/// that posting allocates nothing once the queue is warm.
class MessageRing {
  public:
    static constexpr std::size_t limit = 10'000;

    std::size_t size() const { return size_; }

    const MSG& operator[](std::size_t index) const { return slots_[place(index)]; }

    /// False when `limit` messages are held.
    bool push(const MSG& message);

    /// Takes out the message at `index`; the others keep their order.
    void erase(std::size_t index);

    /// Drops all messages of `window`.
    void purge(HWND window);

    void clear();

    /// False when surely no message of that number is held: spares the look at each.
    bool may_hold(UINT message) const { return counts_[bucket(message)] > 0; }

  private:
    static std::size_t bucket(UINT message) { return message % 64; }

    std::size_t place(std::size_t index) const { return (first_ + index) & (capacity_ - 1); }

    MSG& at(std::size_t index) { return slots_[place(index)]; }

    void grow();

    std::unique_ptr<MSG[]> slots_;
    std::size_t capacity_ = 0;
    std::size_t first_ = 0;
    std::size_t size_ = 0;
    std::array<std::uint16_t, 64> counts_{};
};

} // namespace tarnel
