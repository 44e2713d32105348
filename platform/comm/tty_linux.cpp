#include "platform/base/descriptor.h"
#include "platform/comm/tty.h"

#include <asm/termbits.h>
#include <asm/termios.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <atomic>
#include <cstdlib>

extern "C" int ioctl(int, unsigned long, ...) noexcept; // <sys/ioctl.h> collides with termbits.h

namespace tarnel {
namespace {

int system_control(int descriptor, unsigned long request, void* argument) {
    return ::ioctl(descriptor, request, argument);
}

std::atomic<TtyControl> control = &system_control;

bool call(int descriptor, unsigned long request, void* argument) {
    return control.load(std::memory_order_relaxed)(descriptor, request, argument) == 0;
}

bool call_with(int descriptor, unsigned long request, std::uintptr_t number) {
    return call(descriptor, request, reinterpret_cast<void*>(number));
}

constexpr tcflag_t frame_flags = CSIZE | CSTOPB | PARENB | PARODD | CMSPAR;

tcflag_t frame_of(const DCB& settings) {
    constexpr tcflag_t sizes[] = {CS5, CS6, CS7, CS8};
    constexpr tcflag_t parities[] = {0, PARENB | PARODD, PARENB, PARENB | PARODD | CMSPAR,
                                     PARENB | CMSPAR};
    return sizes[settings.ByteSize - 5] | parities[settings.Parity] |
           (settings.StopBits != 0 ? tcflag_t{CSTOPB} : 0);
}

BYTE parity_of(tcflag_t flags) {
    if (!(flags & PARENB)) {
        return 0;
    }
    const bool odd = flags & PARODD;
    const bool stick = flags & CMSPAR;
    return static_cast<BYTE>(stick ? (odd ? 3 : 4) : (odd ? 1 : 2));
}

bool is_near(DWORD rate, DWORD wanted) {
    const std::int64_t difference = std::int64_t{rate} - wanted;
    return std::llabs(difference) * 50 <= wanted;
}

} // namespace

void set_tty_control(TtyControl replacement) {
    control = replacement ? replacement : &system_control;
}

int tty::open(const char* path) {
    return retry_on_signal(
        [path] { return ::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC); });
}

bool tty::claim(int descriptor) {
    termios2 now{};
    // The lock keeps out those who ask, and root as well; the tty's own flag all others.
    return call(descriptor, TCGETS2, &now) && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 &&
           call(descriptor, TIOCEXCL, nullptr);
}

void tty::release(int descriptor) {
    call(descriptor, TIOCNXCL, nullptr);
}

bool tty::is_pseudo(int descriptor) {
    constexpr unsigned first_major = 136, last_major = 143; // of the slaves, by the kernel's list

    struct stat status {};

    return ::fstat(descriptor, &status) == 0 && major(status.st_rdev) >= first_major &&
           major(status.st_rdev) <= last_major;
}

std::optional<DCB> tty::settings(int descriptor) {
    termios2 now{};
    if (!call(descriptor, TCGETS2, &now)) {
        return std::nullopt;
    }
    DCB result{};
    result.DCBlength = sizeof result;
    result.BaudRate = now.c_ospeed;
    result.fBinary = 1;
    result.fParity = (now.c_cflag & PARENB) != 0;
    result.fOutxCtsFlow = (now.c_cflag & CRTSCTS) != 0;
    result.fRtsControl = result.fOutxCtsFlow ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
    result.fDtrControl = DTR_CONTROL_ENABLE;
    result.fOutX = (now.c_iflag & IXON) != 0;
    result.fInX = (now.c_iflag & IXOFF) != 0;
    result.XonChar = static_cast<char>(now.c_cc[VSTART]);
    result.XoffChar = static_cast<char>(now.c_cc[VSTOP]);
    result.ByteSize = static_cast<BYTE>(5 + ((now.c_cflag & CSIZE) >> 4));
    result.Parity = parity_of(now.c_cflag);
    result.StopBits = now.c_cflag & CSTOPB ? (result.ByteSize == 5 ? 1 : 2) : 0;
    return result;
}

bool tty::apply(int descriptor, const DCB& settings, bool real) {
    termios2 before{};
    if (!call(descriptor, TCGETS2, &before)) {
        return false;
    }
    termios2 wanted = before;
    // PARMRK always with INPCK: without it a byte with a parity error would arrive as zero.
    wanted.c_iflag = (real ? tcflag_t{INPCK | PARMRK} : 0) | (settings.fOutX ? tcflag_t{IXON} : 0) |
                     (settings.fInX ? tcflag_t{IXOFF} : 0);
    wanted.c_oflag = 0;
    wanted.c_lflag = 0;
    wanted.c_cflag =
        (before.c_cflag & HUPCL) | CREAD | CLOCAL | BOTHER | (tcflag_t{BOTHER} << IBSHIFT) |
        frame_of(settings) |
        (settings.fOutxCtsFlow || settings.fRtsControl == RTS_CONTROL_HANDSHAKE ? tcflag_t{CRTSCTS}
                                                                                : 0);
    wanted.c_ispeed = wanted.c_ospeed = settings.BaudRate;
    wanted.c_cc[VMIN] = 1;
    wanted.c_cc[VTIME] = 0;
    wanted.c_cc[VSTART] = static_cast<cc_t>(settings.XonChar);
    wanted.c_cc[VSTOP] = static_cast<cc_t>(settings.XoffChar);
    if (!call(descriptor, TCSETS2, &wanted)) {
        return false;
    }
    termios2 taken{};
    const bool good = !real || (call(descriptor, TCGETS2, &taken) &&
                                (taken.c_cflag & frame_flags) == (wanted.c_cflag & frame_flags) &&
                                is_near(taken.c_ospeed, settings.BaudRate));
    if (!good) {
        call(descriptor, TCSETS2, &before);
    }
    return good;
}

void tty::set_modem_line(int descriptor, ModemLine line, bool on) {
    int bit = line == ModemLine::dtr ? TIOCM_DTR : TIOCM_RTS;
    call(descriptor, on ? TIOCMBIS : TIOCMBIC, &bit);
}

std::optional<bool> tty::is_data_set_ready(int descriptor) {
    int lines = 0;
    return call(descriptor, TIOCMGET, &lines) ? std::optional((lines & TIOCM_DSR) != 0)
                                              : std::nullopt;
}

std::optional<TtyCounts> tty::counts(int descriptor) {
    serial_icounter_struct now{};
    if (!call(descriptor, TIOCGICOUNT, &now)) {
        return std::nullopt;
    }
    const auto number = [](int count) { return static_cast<DWORD>(count); };
    return TtyCounts{number(now.parity), number(now.frame),
                     number(now.overrun) + number(now.buf_overrun), number(now.brk)};
}

void tty::flush_input(int descriptor) {
    call_with(descriptor, TCFLSH, TCIFLUSH);
}

void tty::flush_output(int descriptor) {
    call_with(descriptor, TCFLSH, TCOFLUSH);
}

DWORD tty::unsent(int descriptor) {
    int count = 0;
    return call(descriptor, TIOCOUTQ, &count) ? static_cast<DWORD>(count) : 0;
}

} // namespace tarnel
