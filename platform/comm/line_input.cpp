#include "platform/comm/line_input.h"

#include <algorithm>
#include <cstring>

namespace tarnel {
namespace {

constexpr char mark_byte = '\xFF';

} // namespace

bool LineInput::add(std::span<const char> bytes) {
    if (begin_ == end_) {
        begin_ = end_ = 0;
    } else if (end_ + bytes.size() + 2 > capacity) {
        std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (marked_ && (state_ != State::plain || std::memchr(bytes.data(), mark_byte, bytes.size()))) {
        return add_slowly(bytes);
    }
    std::memcpy(bytes_.data() + end_, bytes.data(), bytes.size());
    end_ += bytes.size();
    received_ += bytes.size();
    return false;
}

bool LineInput::add_slowly(std::span<const char> marked) {
    bool damaged = false;
    for (const char c : marked) {
        if (state_ == State::plain && c == mark_byte) {
            state_ = State::mark;
        } else if (state_ == State::mark && c == '\0') {
            state_ = State::error;
        } else if (state_ == State::mark && c != mark_byte) {
            // Not from a marking tty: received before the line was set up.
            append(mark_byte);
            append(c);
            state_ = State::plain;
        } else {
            if (state_ == State::error) {
                add_break();
                damaged = true;
            }
            append(c);
            state_ = State::plain;
        }
    }
    return damaged;
}

void LineInput::append(char c) {
    bytes_[end_++] = c;
    ++received_;
}

void LineInput::spoil_since(std::uint64_t place) {
    while (!breaks_.empty() && breaks_.back() >= place) {
        breaks_.pop_back();
    }
    for (; place <= received_; ++place) {
        breaks_.push_back(place);
    }
}

std::size_t LineInput::available() const {
    const std::uint64_t position = received_ - (end_ - begin_);
    const auto next = std::ranges::upper_bound(breaks_, position);
    return next == breaks_.end() ? end_ - begin_ : static_cast<std::size_t>(*next - position);
}

std::size_t LineInput::take(char* target, std::size_t size) {
    const std::size_t count = std::min(size, available());
    if (count > 0) {
        take_break(); // one that nobody asked for
    }
    std::memcpy(target, bytes_.data() + begin_, count);
    begin_ += count;
    return count;
}

bool LineInput::take_break() {
    const std::uint64_t position = received_ - (end_ - begin_);
    bool taken = false;
    for (; !breaks_.empty() && breaks_.front() <= position; breaks_.pop_front()) {
        taken = true;
    }
    return taken;
}

void LineInput::clear() {
    begin_ = end_;
    if (!breaks_.empty()) {
        breaks_.clear();
        add_break();
    }
}

} // namespace tarnel
