#include "platform/base/last_error.h"
#include "platform/comm/line.h"
#include "platform/threads/handle_table.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

// Operations on a line, from their start to their end.

namespace tarnel {
namespace {

constexpr DWORD no_interval = std::numeric_limits<DWORD>::max();

/// When an operation on `size` bytes ends at the latest; no time-outs at all: never.
Deadline total_deadline(DWORD multiplier, DWORD constant, DWORD size) {
    const std::uint64_t total = std::uint64_t{multiplier} * size + constant;
    const auto limited = static_cast<DWORD>(std::min<std::uint64_t>(total, INFINITE - 1));
    return total == 0 ? Deadline() : Deadline::after(limited);
}

} // namespace

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

} // namespace tarnel
