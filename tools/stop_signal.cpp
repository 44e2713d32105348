#include "tools/stop_signal.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace {

int open_signals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

StopSignal::StopSignal() : descriptor_(open_signals()) {
    if (descriptor_ < 0) {
        throw std::system_error(errno, std::generic_category(), "no signals");
    }
}

StopSignal::~StopSignal() {
    ::close(descriptor_);
}
