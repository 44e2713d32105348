#pragma once

#include "platform/comm/comm.h"

#include <optional>

// The system calls on a tty that is open, each as the lines want it. All go through one seam, so
// that tests can play a port with modem lines and error counters on a machine that has none.

namespace tarnel {

using TtyControl = int (*)(int descriptor, unsigned long request, void* argument);

/// For tests: null switches back to the system.
TARNEL_PLATFORM_API void set_tty_control(TtyControl control);

/// Line errors since the system started.
struct TtyCounts {
    DWORD parity = 0;
    DWORD frame = 0;
    DWORD overrun = 0;
    DWORD brk = 0;
};

namespace tty {

/// Opens a device as no controlling terminal, without waiting; -1 with errno.
int open(const char* path);

/// Keeps other programs out; false when another one holds it, or it is no tty (errno ENOTTY).
bool claim(int descriptor);

/// Lets them in again, also where something else holds the device open.
void release(int descriptor);

/// A pseudo terminal has no frame and no rate, and says nothing when it is asked for one.
bool is_pseudo(int descriptor);

/// What the tty does now; nothing when it is none.
std::optional<DCB> settings(int descriptor);

/// Makes the tty raw. A `real` port marks line errors in its stream, and must really take the frame
/// and a rate within 2 %: false otherwise, and the old settings are back. A pseudo terminal has no
/// line errors, takes anything, and would pass bytes on much more slowly if it had to mark.
bool apply(int descriptor, const DCB& settings, bool real);

enum class ModemLine { dtr, rts };

/// Without effect where there are no modem lines.
void set_modem_line(int descriptor, ModemLine line, bool on);

/// Nothing where there are no modem lines.
std::optional<bool> is_data_set_ready(int descriptor);

/// Nothing where the driver does not count.
std::optional<TtyCounts> counts(int descriptor);

void flush_input(int descriptor);
void flush_output(int descriptor);
DWORD unsent(int descriptor);

} // namespace tty
} // namespace tarnel
