#include "tools/pseudo_terminal.h"

#include "tools/waiting.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

[[noreturn]] void fail_with(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

PseudoTerminal::PseudoTerminal(std::string link, int stop) : link_(std::move(link)), stop_(stop) {
    namespace files = std::filesystem;
    if (files::exists(files::symlink_status(link_)) && !files::is_symlink(link_)) {
        errno = EEXIST;
        fail_with(link_);
    }
    plug();
}

bool PseudoTerminal::wait_for_listener() const {
    return wait_ready(stop_, watch_, POLLIN);
}

bool PseudoTerminal::send(std::string_view bytes) {
    // A listener that was killed has left the port locked, which we hold open.
    ::ioctl(port_, TIOCNXCL);
    while (!bytes.empty()) {
        sent_ns_ =
            std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
        const ssize_t sent = ::write(master_, bytes.data(), bytes.size());
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno != EAGAIN) {
            fail_with("the pseudo terminal");
        } else if (!wait_ready(stop_, master_, POLLOUT)) {
            return false;
        }
    }
    return true;
}

bool PseudoTerminal::drain() const {
    constexpr int looks = 4; // a reader that is just fetching the next bytes makes it look empty
    for (int empty = 0; empty < looks; empty = has_unread() ? 0 : empty + 1) {
        if (!pause_until(stop_, std::chrono::steady_clock::now() + std::chrono::milliseconds(1))) {
            return false;
        }
    }
    return true;
}

bool PseudoTerminal::has_unread() const {
    int count = 0;
    ::ioctl(port_, FIONREAD, &count); // waits for a read that is under way
    pollfd entry{port_, POLLIN, 0};   // polling hands on what is still inside the line
    return count > 0 || ::poll(&entry, 1, 0) > 0;
}

void PseudoTerminal::replug() {
    unplug();
    plug();
}

void PseudoTerminal::plug() {
    try {
        open();
        if (!link_.empty()) {
            make_link();
        }
    } catch (...) {
        unplug();
        throw;
    }
}

void PseudoTerminal::open() {
    std::array<char, 64> name{};
    termios settings{};
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
        ::ptsname_r(master_, name.data(), name.size()) != 0 ||
        ::tcgetattr(master_, &settings) != 0) {
        fail_with("no pseudo terminal");
    }
    ::cfmakeraw(&settings); // a machine does not listen to what a terminal would echo
    ::tcsetattr(master_, TCSANOW, &settings);
    device_ = name.data();
    port_ = ::open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    watch_ = ::inotify_init1(IN_CLOEXEC);
    if (port_ < 0 || watch_ < 0 ||
        ::inotify_add_watch(watch_, device_.c_str(), IN_OPEN | IN_ONESHOT) < 0) {
        fail_with(device_);
    }
}

void PseudoTerminal::make_link() const {
    const std::string fresh = link_ + ".new"; // replaces what an earlier run has left
    ::unlink(fresh.c_str());
    if (::symlink(device_.c_str(), fresh.c_str()) != 0 ||
        ::rename(fresh.c_str(), link_.c_str()) != 0) {
        fail_with(link_);
    }
}

void PseudoTerminal::unplug() {
    std::error_code none;
    if (!link_.empty() && std::filesystem::read_symlink(link_, none) == device_) {
        ::unlink(link_.c_str());
    }
    for (int* const descriptor : {&watch_, &port_, &master_}) {
        if (*descriptor >= 0) {
            ::close(*descriptor);
        }
        *descriptor = -1;
    }
}
