#include "tools/waiting.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

bool pause_until(int stop, Deadline deadline) {
    using namespace std::chrono;
    const auto left = std::max(nanoseconds(0), nanoseconds(deadline - steady_clock::now()));
    const timespec time{duration_cast<seconds>(left).count(), (left % seconds(1)).count()};
    pollfd entry{stop, POLLIN, 0};
    return ::ppoll(&entry, 1, &time, nullptr) == 0;
}

bool wait_ready(int stop, int descriptor, short events) {
    pollfd entries[] = {{stop, POLLIN, 0}, {descriptor, events, 0}};
    ::poll(entries, 2, -1);
    return entries[0].revents == 0;
}

void wait_for_end(int stop, std::optional<double> seconds) {
    if (seconds) {
        using namespace std::chrono;
        pause_until(stop, steady_clock::now() + round<nanoseconds>(duration<double>(*seconds)));
    } else {
        wait_ready(stop, -1, 0);
    }
}

void ask_to_stop() {
    ::kill(::getpid(), SIGTERM);
}
