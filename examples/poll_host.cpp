// A program that owns a poll loop hosts the library's messages in it, and its own timer goes on
// while one of the library's loops is nested inside.

#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "platform/threads/thread.h"
#include "platform/threads/wait.h"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

namespace {

constexpr UINT point_measured = WM_USER + 1;
constexpr UINT confirm = WM_USER + 2;
constexpr UINT confirmed = WM_USER + 3;
constexpr int points = 50;

struct Host {
    int timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    int ticks = 0;
    int ticks_while_nested = 0;
    bool nested = false;
    int points_seen = 0;

    /// One turn of the program's own loop: whether `descriptor` became readable.
    bool turn(int descriptor, int milliseconds) {
        pollfd watched[] = {{descriptor, POLLIN, 0}, {timer, POLLIN, 0}};
        ::poll(watched, 2, milliseconds);
        if (watched[1].revents) {
            std::uint64_t expired = 0;
            if (::read(timer, &expired, sizeof expired) > 0) {
                ++(nested ? ticks_while_nested : ticks);
            }
        }
        return watched[0].revents != 0;
    }

    /// What the library's nested loops sleep in.
    static void wait(void* host, int descriptor, int milliseconds) {
        while (!static_cast<Host*>(host)->turn(descriptor, milliseconds) && milliseconds < 0) {
        }
    }
};

/// A question that stays open for 100 ms, with a message loop of its own: as a modal dialog has.
void ask(Host& host, HWND window) {
    host.nested = true;
    MSG message;
    do {
        if (GetMessageA(&message, nullptr, 0, 0) <= 0) {
            PostQuitMessage(0);
            break;
        }
        DispatchMessageA(&message);
    } while (message.hwnd != window || message.message != confirmed);
    host.nested = false;
}

LRESULT handle(void* context, HWND window, UINT message, WPARAM, LPARAM) {
    Host& host = *static_cast<Host*>(context);
    if (message == point_measured && ++host.points_seen == points) {
        PostMessageA(window, confirm, 0, 0);
    } else if (message == confirm) {
        ask(host, window);
        PostQuitMessage(0);
    }
    return 0;
}

/// The machine: a thread that reports points, and answers the question a little later.
DWORD measure(void* window) {
    for (int i = 0; i < points; ++i) {
        PostMessageA(static_cast<HWND>(window), point_measured, 0, 0);
        ::usleep(1'000);
    }
    ::usleep(100'000);
    PostMessageA(static_cast<HWND>(window), confirmed, 0, 0);
    return 0;
}

} // namespace

int main() {
    Host host;
    const itimerspec every_5_ms{{0, 5'000'000}, {0, 5'000'000}};
    ::timerfd_settime(host.timer, 0, &every_5_ms, nullptr);

    const HWND window = tarnel::create_window(&handle, &host);
    tarnel::set_host_wait({&Host::wait, &host});
    const int descriptor = tarnel::message_descriptor();
    HANDLE machine = CreateThread(nullptr, 0, &measure, window, 0, nullptr);

    while (!host.turn(descriptor, -1) || tarnel::run_pending_messages()) {
    }

    WaitForSingleObject(machine, INFINITE);
    CloseHandle(machine);
    DestroyWindow(window);
    std::printf("%d points, %d ticks, %d of them while a nested loop ran\n", host.points_seen,
                host.ticks + host.ticks_while_nested, host.ticks_while_nested);
    return host.points_seen == points && host.ticks > 0 && host.ticks_while_nested > 0 ? 0 : 1;
}
