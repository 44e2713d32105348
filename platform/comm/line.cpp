#include "platform/comm/line.h"

#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"
#include "platform/comm/port_list.h"
#include "platform/threads/handle_table.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tarnel {
namespace {

constexpr DWORD no_interval = std::numeric_limits<DWORD>::max();

/// When an operation on `size` bytes ends at the latest; no time-outs at all: never.
Deadline total_deadline(DWORD multiplier, DWORD constant, DWORD size) {
    const std::uint64_t total = std::uint64_t{multiplier} * size + constant;
    const auto limited = static_cast<DWORD>(std::min<std::uint64_t>(total, INFINITE - 1));
    return total == 0 ? Deadline() : Deadline::after(limited);
}

bool makes_sense(const DCB& s) {
    const bool frame = s.ByteSize >= 5 && s.ByteSize <= 8 && s.Parity <= 4 && s.StopBits <= 2 &&
                       (s.ByteSize == 5 ? s.StopBits != 2 : s.StopBits != 1);
    const bool rate = s.BaudRate != 0 && s.BaudRate <= 100'000'000;
    return frame && rate && s.fBinary && s.XonChar != s.XoffChar;
}

/// For a person, as far as a port can refuse it.
std::string shown(const DCB& s) {
    return std::to_string(s.BaudRate) + " bit/s, " + std::to_string(s.ByteSize) +
           " bits, parity code " + std::to_string(s.Parity) + ", stop-bit code " +
           std::to_string(s.StopBits);
}

} // namespace

Line::Line(std::string name, const std::string& path, Descriptor descriptor, const DCB& settings)
    : name_(std::move(name)), identity_(port_identity(path)), descriptor_(std::move(descriptor)),
      real_(!tty::is_pseudo(descriptor_.get())), settings_(settings), input_(real_),
      counts_(tty::counts(descriptor_.get())) {
    for (const Kind kind : {reading, writing, waiting}) {
        servers_[kind].line = this;
        servers_[kind].kind = kind;
    }
}

DCB Line::settings() {
    const std::lock_guard guard(line_lock_);
    return settings_;
}

DWORD Line::set_settings(const DCB& settings) {
    if (!makes_sense(settings)) {
        report(name_ + ": a line cannot be set up as " + shown(settings));
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD error = take_settings(settings);
    if (error != ERROR_SUCCESS) {
        report(name_ + ": the port cannot be set up as " + shown(settings));
    }
    return error;
}

DWORD Line::take_settings(const DCB& settings) {
    const std::lock_guard guard(line_lock_);
    if (!lost_ && !tty::apply(descriptor_.get(), settings, real_)) {
        return ERROR_INVALID_PARAMETER;
    }
    settings_ = settings;
    dtr_ = settings.fDtrControl != DTR_CONTROL_DISABLE;
    rts_ = settings.fRtsControl != RTS_CONTROL_DISABLE;
    if (!lost_) {
        put_lines_back();
    }
    return ERROR_SUCCESS;
}

COMMTIMEOUTS Line::timeouts() {
    const std::lock_guard guard(line_lock_);
    return timeouts_;
}

void Line::set_timeouts(const COMMTIMEOUTS& timeouts) {
    const std::lock_guard guard(line_lock_);
    timeouts_ = timeouts;
}

void Line::put_lines_back() {
    tty::set_modem_line(descriptor_.get(), tty::ModemLine::dtr, dtr_);
    if (settings_.fRtsControl != RTS_CONTROL_HANDSHAKE) { // else the driver moves it
        tty::set_modem_line(descriptor_.get(), tty::ModemLine::rts, rts_);
    }
}

void Line::escape(DWORD function) {
    const std::lock_guard guard(line_lock_);
    if (function == SETDTR || function == CLRDTR) {
        dtr_ = function == SETDTR;
    } else {
        rts_ = function == SETRTS;
    }
    if (!lost_) {
        put_lines_back();
    }
}

void Line::set_mask(DWORD events) {
    const std::lock_guard guard(line_lock_);
    remembered_ = 0;
    mask_ = events;
    if (operations_[waiting].overlapped) {
        *operations_[waiting].events = 0;
        finish(waiting, ERROR_SUCCESS);
    }
}

DWORD Line::start(Kind kind, OVERLAPPED* overlapped) {
    if (!open_) {
        return ERROR_INVALID_HANDLE;
    }
    auto event = overlapped ? find_handle_as<Event>(overlapped->hEvent) : nullptr;
    if (!event || operations_[kind].overlapped) {
        return ERROR_INVALID_PARAMETER;
    }
    event->reset();
    operations_[kind] = {};
    operations_[kind].overlapped = overlapped;
    operations_[kind].event = std::move(event);
    return ERROR_SUCCESS;
}

/// What a call that has started an operation answers.
DWORD Line::pending_or_done(Kind kind, const OVERLAPPED& overlapped) {
    if (!operations_[kind].overlapped) {
        return static_cast<DWORD>(overlapped.Internal);
    }
    operations_[kind].event->attach(std::shared_ptr<Source>(shared_from_this(), &servers_[kind]));
    return ERROR_IO_PENDING;
}

void Line::finish(Kind kind, DWORD error) {
    Operation operation = std::move(operations_[kind]);
    operations_[kind] = {};
    operation.overlapped->Internal = error;
    operation.overlapped->InternalHigh = operation.done;
    operation.event->attach(nullptr);
    operation.event->set();
}

DWORD Line::read(char* buffer, DWORD size, OVERLAPPED* overlapped) {
    const std::lock_guard guard(line_lock_);
    if (const DWORD error = start(reading, overlapped)) {
        return error;
    }
    Operation& operation = operations_[reading];
    operation.target = buffer;
    operation.size = size;
    const COMMTIMEOUTS& t = timeouts_;
    if (t.ReadIntervalTimeout != no_interval) {
        operation.deadline =
            total_deadline(t.ReadTotalTimeoutMultiplier, t.ReadTotalTimeoutConstant, size);
        operation.interval = t.ReadIntervalTimeout;
    } else if (t.ReadTotalTimeoutMultiplier == no_interval) {
        operation.deadline = Deadline::after(t.ReadTotalTimeoutConstant);
        operation.first_bytes_do = true;
    } else {
        operation.deadline =
            Deadline::after(t.ReadTotalTimeoutMultiplier * size + t.ReadTotalTimeoutConstant);
        operation.first_bytes_do = true;
    }
    if (input_.available() < size) {
        receive();
    }
    advance_read();
    return pending_or_done(reading, *overlapped);
}

void Line::advance_read() {
    Operation& operation = operations_[reading];
    if (!operation.overlapped) {
        return;
    }
    const DWORD before = operation.done;
    for (std::size_t count = 1; count > 0;) {
        count = input_.take(operation.target + operation.done, operation.size - operation.done);
        operation.done += static_cast<DWORD>(count);
    }
    if (operation.done > before && operation.interval > 0) {
        operation.interval_end = Deadline::after(operation.interval);
    }
    if (operation.done == operation.size || (operation.first_bytes_do && operation.done > 0) ||
        operation.deadline.passed() || operation.interval_end.passed()) {
        finish(reading, ERROR_SUCCESS);
    }
}

DWORD Line::write(const char* data, DWORD size, OVERLAPPED* overlapped) {
    const std::lock_guard guard(line_lock_);
    if (const DWORD error = start(writing, overlapped)) {
        return error;
    }
    Operation& operation = operations_[writing];
    operation.data = data;
    operation.size = size;
    operation.deadline = total_deadline(timeouts_.WriteTotalTimeoutMultiplier,
                                        timeouts_.WriteTotalTimeoutConstant, size);
    advance_write();
    return pending_or_done(writing, *overlapped);
}

DWORD Line::wait_events(DWORD* events, OVERLAPPED* overlapped) {
    const std::lock_guard guard(line_lock_);
    if (mask_ == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    if (const DWORD error = start(waiting, overlapped)) {
        return error;
    }
    operations_[waiting].events = events;
    advance_wait();
    return pending_or_done(waiting, *overlapped);
}

void Line::advance_wait() {
    const DWORD due = remembered_ & mask_;
    if (operations_[waiting].overlapped && due != 0) {
        remembered_ = 0;
        *operations_[waiting].events = due;
        finish(waiting, ERROR_SUCCESS);
    }
}

DWORD Line::outcome(const OVERLAPPED& overlapped, DWORD& count) {
    const std::lock_guard guard(line_lock_);
    for (const Operation& operation : operations_) {
        if (operation.overlapped == &overlapped) {
            count = operation.done;
            return ERROR_IO_INCOMPLETE;
        }
    }
    count = static_cast<DWORD>(overlapped.InternalHigh);
    return static_cast<DWORD>(overlapped.Internal);
}

void Line::serve_operation(const OVERLAPPED& overlapped) {
    for (const Kind kind : {reading, writing, waiting}) {
        std::unique_lock guard(line_lock_);
        if (operations_[kind].overlapped == &overlapped) {
            guard.unlock();
            serve(kind);
        }
    }
}

void Line::serve(Kind kind) {
    const std::lock_guard guard(line_lock_);
    if (!operations_[kind].overlapped) {
        return;
    }
    if (lost_) {
        look_for_return();
    }
    if (kind == writing) {
        advance_write();
        return;
    }
    receive();
    advance_read();
    advance_wait();
}

DWORD Line::take_errors(COMSTAT& status) {
    const std::lock_guard guard(line_lock_);
    status = {};
    status.cbInQue = static_cast<DWORD>(input_.available());
    return std::exchange(errors_, 0);
}

bool Line::take_break() {
    const std::lock_guard guard(line_lock_);
    return input_.take_break();
}

DWORD Line::unsent() {
    const std::lock_guard guard(line_lock_);
    return lost_ ? 0 : tty::unsent(descriptor_.get());
}

void Line::purge(DWORD flags) {
    const std::lock_guard guard(line_lock_);
    if ((flags & PURGE_TXABORT) && operations_[writing].overlapped) {
        finish(writing, ERROR_OPERATION_ABORTED);
    }
    if ((flags & PURGE_RXABORT) && operations_[reading].overlapped) {
        finish(reading, ERROR_OPERATION_ABORTED);
    }
    if (flags & PURGE_TXCLEAR) {
        drop_unsent();
    }
    if (flags & PURGE_RXCLEAR) {
        if (!lost_) {
            tty::flush_input(descriptor_.get());
        }
        input_.clear();
    }
}

void Line::handle_closed() {
    const std::lock_guard guard(line_lock_);
    open_ = false;
    for (const Kind kind : {reading, writing, waiting}) {
        if (operations_[kind].overlapped) {
            finish(kind, ERROR_OPERATION_ABORTED);
        }
    }
    // Closing waits until all is sent, on a port that sends nothing for 30 seconds.
    drop_unsent();
    tty::release(descriptor_.get());
    descriptor_ = Descriptor();
}

/// What a pseudo terminal has taken has been sent, though its reader may not have seen it yet.
void Line::drop_unsent() {
    if (real_ && !lost_) {
        tty::flush_output(descriptor_.get());
    }
}

} // namespace tarnel
