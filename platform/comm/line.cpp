#include "platform/comm/line.h"

#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"
#include "platform/comm/port_list.h"

#include <utility>

namespace tarnel {
namespace {

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
