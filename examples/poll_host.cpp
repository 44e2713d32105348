// A program that owns a poll loop hosts the library's messages in it, and its own timer goes on
// while one of the library's loops is nested inside.

#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <thread>

namespace {

enum : UINT { measured = WM_USER + 1, confirmed }; // what the machine's thread tells

struct Host {
    int timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    int points = 0;
    int ticks = 0;
    bool nested = false;

    /// One turn of the program's own loop.
    void turn(int descriptor, int milliseconds) {
        pollfd watched[] = {{descriptor, POLLIN, 0}, {timer, POLLIN, 0}};
        ::poll(watched, 2, milliseconds);
        std::uint64_t expired = 0;
        ticks += nested && watched[1].revents && ::read(timer, &expired, sizeof expired) > 0;
    }

    /// A question with a message loop of its own, as a modal dialog has, until it is confirmed.
    void ask() {
        nested = true;
        for (MSG message{}; message.message != confirmed;) {
            GetMessageA(&message, nullptr, 0, 0);
            DispatchMessageA(&message);
        }
        nested = false;
        PostQuitMessage(0);
    }
};

LRESULT handle(void* context, HWND, UINT message, WPARAM, LPARAM) {
    Host& host = *static_cast<Host*>(context);
    if (message == measured && ++host.points == 50) {
        host.ask();
    }
    return 0;
}

void measure(HWND window) {
    for (int i = 0; i < 50; ++i) {
        PostMessageA(window, measured, 0, 0);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    PostMessageA(window, confirmed, 0, 0);
}

} // namespace

int main() {
    Host host;
    const itimerspec every_5_ms{{0, 5'000'000}, {0, 5'000'000}};
    ::timerfd_settime(host.timer, 0, &every_5_ms, nullptr);
    tarnel::set_host_wait({[](void* passed, int descriptor, int milliseconds) {
                               static_cast<Host*>(passed)->turn(descriptor, milliseconds);
                           },
                           &host}); // what nested loops sleep in
    std::thread machine(measure, tarnel::create_window(&handle, &host));
    while (tarnel::run_pending_messages()) {
        host.turn(tarnel::message_descriptor(), -1);
    }
    machine.join();
    std::printf("%d points, and %d ticks while a nested loop ran\n", host.points, host.ticks);
    return host.points == 50 && host.ticks > 0 ? 0 : 1;
}
