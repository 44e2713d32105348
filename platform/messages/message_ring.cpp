#include "platform/messages/message_ring.h"

#include <algorithm>

namespace tarnel {

void MessageRing::close_gap(std::size_t index) {
    if (index < size_ / 2) {
        for (; index > 0; --index) {
            at(index) = at(index - 1);
        }
        erase(0);
        return;
    }
    --size_;
    for (; index < size_; ++index) {
        at(index) = at(index + 1);
    }
}

void MessageRing::purge(HWND window) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < size_; ++i) {
        if (at(i).hwnd != window) {
            at(kept++) = at(i);
        }
    }
    size_ = kept;
}

void MessageRing::grow() {
    const std::size_t capacity = std::max<std::size_t>(64, capacity_ * 2);
    auto slots = std::make_unique<MSG[]>(capacity);
    for (std::size_t i = 0; i < size_; ++i) {
        slots[i] = at(i);
    }
    slots_ = std::move(slots);
    capacity_ = capacity;
    first_ = 0;
}

} // namespace tarnel
