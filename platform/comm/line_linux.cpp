#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"
#include "platform/base/system_error.h"
#include "platform/comm/line.h"
#include "platform/comm/port_holder.h"
#include "platform/comm/port_list.h"
#include "platform/comm/port_names.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

// What lines do with their descriptors, and how they are lost and found.

namespace tarnel {
namespace {

constexpr DWORD first_pause = 100; // milliseconds between two looks for a lost line
constexpr DWORD longest_pause = 2'000;
constexpr DWORD data_set_pause = 10; // there is no event for DSR that does not block

/// Why a port cannot be had, for a person.
std::string reason(int error, const std::string& path) {
    if (error == ENOTTY) {
        return "is no serial port";
    }
    if (error != EBUSY && error != EWOULDBLOCK) {
        return std::strerror(error);
    }
    std::string text = "is in use";
    for (const PortHolder& holder : port_holders(path)) {
        if (holder.process != ::getpid()) {
            text += " by " + holder.program + " (process " + std::to_string(holder.process) + ")";
        }
    }
    return text;
}

/// A port that is ours alone; none with errno.
Descriptor open_port(const std::string& path) {
    Descriptor descriptor(tty::open(path.c_str()));
    return descriptor && tty::claim(descriptor.get()) ? std::move(descriptor) : Descriptor();
}

} // namespace

std::shared_ptr<Line> Line::open(const std::string& name) {
    const auto path = resolve_port(name);
    if (!path) {
        report(name + ": is neither a COM port nor the path of a device");
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    Descriptor descriptor = open_port(*path);
    const int error = descriptor ? ENOTTY : errno; // one that cannot be set up is none
    auto settings = descriptor ? tty::settings(descriptor.get()) : std::nullopt;
    // Raw at once: a tty that edits lines would change what arrives, and echo it.
    if (!settings || !tty::apply(descriptor.get(), *settings, !tty::is_pseudo(descriptor.get()))) {
        const std::string shown = *path == name ? name : name + " (" + *path + ")";
        report(shown + ": " + reason(error, *path));
        SetLastError(error_from_errno(error));
        return nullptr;
    }
    return std::make_shared<Line>(name, *path, std::move(descriptor), *settings);
}

void Line::receive() {
    const std::size_t room = lost_ ? 0 : input_.room();
    if (room == 0) {
        return;
    }
    char bytes[LineInput::capacity];
    const auto count = retry_on_signal([&] { return ::read(descriptor_.get(), bytes, room); });
    if (count > 0) {
        remembered_ |= EV_RXCHAR;
        const std::uint64_t place = input_.received();
        const bool damaged = input_.add(std::span(bytes).first(static_cast<std::size_t>(count)));
        if (damaged || counts_) {
            note_line_errors(damaged, place);
        }
    } else if (count == 0 || errno != EAGAIN) {
        lose();
    }
}

void Line::note_line_errors(bool damaged, std::uint64_t place) {
    DWORD errors = 0;
    if (const auto now = counts_ ? tty::counts(descriptor_.get()) : std::nullopt) {
        errors = (now->parity != counts_->parity ? CE_RXPARITY : 0) |
                 (now->frame != counts_->frame ? CE_FRAME : 0) |
                 (now->brk != counts_->brk ? CE_BREAK : 0) |
                 (now->overrun != counts_->overrun ? CE_OVERRUN : 0);
        counts_ = now;
    }
    if (errors & CE_OVERRUN) {
        input_.spoil_since(place); // the port does not say where the bytes are missing
    }
    if (damaged && errors == 0) {
        errors = settings_.Parity != 0 ? CE_RXPARITY : CE_FRAME;
    }
    errors_ |= errors;
    remembered_ |= errors != 0 ? EV_ERR : 0;
}

/// With the DTR/DSR handshake a write waits for the other side's line, where there is one.
bool Line::may_send() const {
    return !settings_.fOutxDsrFlow || tty::is_data_set_ready(descriptor_.get()).value_or(true);
}

void Line::advance_write() {
    Operation& operation = operations_[writing];
    while (!lost_ && operation.done < operation.size && may_send()) {
        const auto count = retry_on_signal([&] {
            return ::write(descriptor_.get(), operation.data + operation.done,
                           operation.size - operation.done);
        });
        if (count >= 0) {
            operation.done += static_cast<DWORD>(count);
        } else if (errno == EAGAIN) {
            break;
        } else {
            lose();
            return; // which has ended the operation
        }
    }
    if (lost_) {
        finish(writing, ERROR_GEN_FAILURE);
    } else if (operation.done == operation.size || operation.deadline.passed()) {
        finish(writing, ERROR_SUCCESS);
    }
}

Source::Watch Line::watch(Kind kind) {
    const std::lock_guard guard(line_lock_);
    const Operation& operation = operations_[kind];
    if (!operation.overlapped) {
        return {};
    }
    Source::Watch watch{.descriptor = descriptor_.get(),
                        .events = static_cast<short>(kind == writing ? POLLOUT : POLLIN),
                        .deadline = Deadline::earlier(operation.deadline, operation.interval_end)};
    if (lost_) {
        // The descriptor of a line that has hung up is always readable.
        watch.descriptor = -1;
        watch.deadline = Deadline::earlier(watch.deadline, next_look_);
    } else if (kind == writing && !may_send()) {
        watch.descriptor = -1;
        watch.deadline = Deadline::earlier(watch.deadline, Deadline::after(data_set_pause));
    } else if (kind != writing && input_.room() == 0) {
        watch.descriptor = -1;
    }
    return watch;
}

void Line::lose() {
    lost_ = true;
    pause_ = first_pause;
    next_look_ = Deadline::after(pause_);
    input_.forget_half_mark();
    if (operations_[writing].overlapped) {
        finish(writing, ERROR_GEN_FAILURE);
    }
    report(name_ + ": the line is lost, waiting for it to come back");
}

void Line::look_for_return() {
    if (!next_look_.passed()) {
        return;
    }
    pause_ = std::min(pause_ * 2, longest_pause);
    next_look_ = Deadline::after(pause_);
    const auto path = resolve_port(name_);
    if (!path || port_identity(*path) != identity_) {
        return; // not there, or another device in its place
    }
    // The old descriptor is held until now: the number of a dead pseudo terminal is given again at
    // once, and must not be taken for the old one.
    const Descriptor found = open_port(*path);
    if (!found || !tty::apply(found.get(), settings_, real_) ||
        ::dup3(found.get(), descriptor_.get(), O_CLOEXEC) < 0) {
        return;
    }
    lost_ = false;
    counts_ = tty::counts(descriptor_.get());
    put_lines_back();
    input_.add_break();
    remembered_ |= EV_ERR;
    report(name_ + ": the line is back");
}

} // namespace tarnel
