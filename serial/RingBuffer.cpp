#include "serial/RingBuffer.h"

#include <algorithm>
#include <cstring>

ERCirBuf::ERCirBuf(int capacity) : capacity_(std::max(capacity, 2)) {
    storage_ = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(capacity_));
}

ERCirBuf::~ERCirBuf() = default;

void ERCirBuf::OnDebord() {
    RAZ();
}

void ERCirBuf::Put(const char* data, int length) {
    std::size_t left = length > 0 ? static_cast<std::size_t>(length) : std::strlen(data);
    while (left > 0) {
        while (is_full()) {
            OnDebord();
        }
        // Only now: the overflow reaction may have moved everything.
        const int room = std::min(capacity_ - 1 - count_, capacity_ - write_);
        const std::size_t run = std::min(left, static_cast<std::size_t>(room));
        std::memcpy(storage_.get() + write_, data, run);
        write_ = slot_after(write_, static_cast<int>(run));
        count_ += static_cast<int>(run);
        data += run;
        left -= run;
    }
}

void ERCirBuf::PutBack(char c) {
    if (count_ == capacity_) {
        return;
    }
    read_ = (read_ == 0 ? capacity_ : read_) - 1;
    storage_.get()[read_] = c;
    ++count_;
}

void ERCirBuf::RAZ() {
    write_ = 0;
    read_ = 0;
    count_ = 0;
}
