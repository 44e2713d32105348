#include "platform/messages/message_ring.h"

#include <algorithm>

namespace tarnel {

bool MessageRing::push(const MSG& message) {
    if (size_ == limit) {
        return false;
    }
    if (size_ == capacity_) {
        grow();
    }
    at(size_++) = message;
    ++counts_[bucket(message.message)];
    return true;
}

void MessageRing::erase(std::size_t index) {
    --counts_[bucket(at(index).message)];
    --size_;
    if (index < size_ / 2) {
        for (; index > 0; --index) {
            at(index) = at(index - 1);
        }
    }
    if (index == 0) {
        first_ = place(1);
        return;
    }
    for (; index < size_; ++index) {
        at(index) = at(index + 1);
    }
}

void MessageRing::purge(HWND window) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < size_; ++i) {
        if (at(i).hwnd == window) {
            --counts_[bucket(at(i).message)];
        } else {
            at(kept++) = at(i);
        }
    }
    size_ = kept;
}

void MessageRing::clear() {
    size_ = 0;
    counts_.fill(0);
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
