#include "tests/support/pty.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace support {

Pty::Pty() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    char name[64];
    termios settings{};
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
        ::ptsname_r(master_, name, sizeof name) != 0 || ::tcgetattr(master_, &settings) != 0) {
        throw std::runtime_error("no pseudo terminal");
    }
    // A machine does not listen to what a terminal would echo.
    ::cfmakeraw(&settings);
    ::tcsetattr(master_, TCSANOW, &settings);
    path_ = name;
}

bool Pty::send(std::string_view bytes) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::minutes(1); // somebody takes it by then
    while (!bytes.empty()) {
        const auto sent = ::write(master_, bytes.data(), bytes.size());
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN && Clock::now() < deadline) {
            pollfd entry{master_, POLLOUT, 0};
            ::poll(&entry, 1, 1'000);
        } else {
            return false;
        }
    }
    return true;
}

std::string Pty::receive(std::size_t count) {
    std::string received;
    pollfd entry{master_, POLLIN, 0};
    while (received.size() < count && ::poll(&entry, 1, 10'000) > 0) {
        char bytes[4096];
        const auto got = ::read(master_, bytes, std::min(sizeof bytes, count - received.size()));
        if (got <= 0) {
            break;
        }
        received.append(bytes, static_cast<std::size_t>(got));
    }
    return received;
}

void Pty::unplug() {
    if (master_ >= 0) {
        ::close(master_);
        master_ = -1;
    }
}

} // namespace support
