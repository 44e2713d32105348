#include "platform/audio/wave_output.h"

#include <algorithm>

namespace tarnel {
namespace {

// Milliseconds.
constexpr DWORD longest_pause = 5; // between two looks at a device that plays
constexpr DWORD grace_time = 10;   // for the next buffer, before silence follows the last one
constexpr DWORD idle_time = 1000;  // before the device is given back
constexpr DWORD stall_time = 3000;
constexpr DWORD retry_time = 2000;

std::span<const BYTE> bytes_of(const WAVEHDR& header) {
    return {reinterpret_cast<const BYTE*>(header.lpData), header.dwBufferLength};
}

void mark_done(WAVEHDR& header) {
    header.dwFlags = (header.dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
}

} // namespace

MMRESULT WaveOutput::write(WAVEHDR& header) {
    const std::lock_guard guard(output_lock_);
    if ((header.dwFlags & WHDR_PREPARED) == 0) {
        return WAVERR_UNPREPARED;
    }
    if ((header.dwFlags & WHDR_INQUEUE) != 0) {
        return WAVERR_STILLPLAYING;
    }
    header.dwFlags = (header.dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    queue_.push_back({&header});
    next_ = Deadline::after(0);
    event_->attach(shared_from_this()); // has those who wait look at the deadline
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutput::unprepare(WAVEHDR& header) {
    const std::lock_guard guard(output_lock_);
    if ((header.dwFlags & WHDR_INQUEUE) != 0) {
        return WAVERR_STILLPLAYING;
    }
    header.dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

bool WaveOutput::is_queued() {
    const std::lock_guard guard(output_lock_);
    return !queue_.empty();
}

void WaveOutput::reset() {
    const std::lock_guard guard(output_lock_);
    stream_ = nullptr;
    next_ = Deadline();
    for (const Buffer& buffer : queue_) {
        mark_done(*buffer.header);
    }
    queue_.clear();
    event_->set();
}

void WaveOutput::handle_closed() {
    reset();
    event_->attach(nullptr);
}

Source::Watch WaveOutput::watch() {
    const std::lock_guard guard(output_lock_);
    return {.deadline = next_};
}

void WaveOutput::serve() {
    const std::lock_guard guard(output_lock_);
    if (!next_.passed()) {
        return;
    }
    if (queue_.empty()) {
        stream_ = nullptr;
        next_ = Deadline();
        return;
    }
    open_stream();
    const bool all_sent = send();
    look();
    const bool dry_soon = all_sent && written_ - heard_ <= stream_->margin();
    // Who was told of a buffer has its turn first: something may follow the last one.
    if (!complete_heard(dry_soon) && dry_soon && grace_.passed()) {
        written_ += stream_->flush();
    }
    plan();
}

void WaveOutput::open_stream() {
    if (stream_ && !(silent_ && retry_.passed())) {
        return;
    }
    int error = 0;
    if (auto stream = open_sound_stream(rate_, error)) {
        change_stream(std::move(stream));
        silent_ = false;
    } else {
        lose_stream();
    }
}

/// What the old stream had taken counts as heard.
void WaveOutput::change_stream(std::unique_ptr<SoundStream> stream) {
    stream_ = std::move(stream);
    written_ = 0;
    heard_ = 0;
    stall_ = Deadline::after(stall_time);
    for (Buffer& buffer : queue_) {
        buffer.end = 0;
    }
}

void WaveOutput::lose_stream() {
    change_stream(make_silent_stream(rate_));
    silent_ = true;
    retry_ = Deadline::after(retry_time);
}

/// Whether the stream has taken all that is queued.
bool WaveOutput::send() {
    return std::ranges::all_of(queue_, [this](Buffer& buffer) { return send_rest(buffer); });
}

bool WaveOutput::send_rest(Buffer& buffer) {
    const auto rest = bytes_of(*buffer.header).subspan(buffer.sent);
    if (rest.empty()) {
        return true;
    }
    auto taken = stream_->write(rest);
    if (!taken) {
        lose_stream();
        taken = stream_->write(rest);
    }
    buffer.sent += *taken;
    written_ += *taken;
    buffer.end = written_;
    grace_ = Deadline::after(grace_time);
    return *taken == rest.size();
}

void WaveOutput::look() {
    const auto unheard = stream_->unheard();
    const std::uint64_t heard = written_ - std::min(unheard.value_or(0), written_);
    if (unheard && heard > heard_) {
        heard_ = heard;
        stall_ = Deadline::after(stall_time);
        if (!silent_) {
            report_sound(nullptr);
        }
    } else if (!unheard) {
        lose_stream();
    } else if (stall_.passed()) {
        report_sound("the device has stopped");
        lose_stream();
    }
}

/// Whether buffers were done. When the device is about to run dry, it has come to the last one.
bool WaveOutput::complete_heard(bool dry_soon) {
    const std::size_t before = queue_.size();
    while (!queue_.empty() && (is_heard(queue_.front()) || (dry_soon && queue_.size() > 1))) {
        mark_done(*queue_.front().header);
        queue_.pop_front();
    }
    const bool some = queue_.size() < before;
    if (some) {
        event_->set();
    }
    return some;
}

bool WaveOutput::is_heard(const Buffer& buffer) const {
    return buffer.sent == buffer.header->dwBufferLength && buffer.end <= heard_;
}

void WaveOutput::plan() {
    if (queue_.empty()) {
        next_ = Deadline::after(idle_time);
        return;
    }
    const std::uint64_t end = std::max(queue_.front().end, heard_);
    const std::uint64_t time = (end - heard_) * 1000 / rate_ + 1;
    next_ = Deadline::after(static_cast<DWORD>(std::min<std::uint64_t>(time, longest_pause)));
}

} // namespace tarnel
