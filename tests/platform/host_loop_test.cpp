#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/threads/event.h"
#include "tests/support/message_window.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>
#include <poll.h>

namespace {

using support::MessageWindow;
using support::Worker;

bool readable(int descriptor, int milliseconds = 0) {
    pollfd entry{descriptor, POLLIN, 0};
    return ::poll(&entry, 1, milliseconds) == 1;
}

/// Runs `test` as the application's loop of a thread of its own, with nothing pending.
void as_host(const std::function<void(int descriptor)>& test) {
    Worker([&] {
        const int descriptor = tarnel::message_descriptor();
        tarnel::run_pending_messages();
        EXPECT_FALSE(readable(descriptor));
        test(descriptor);
        return 0U;
    });
}

TEST(HostLoop, IsReadableWhileThereIsSomethingToRun) {
    as_host([](int descriptor) {
        int handled = 0, exit_code = 0;
        HWND self = nullptr;
        const MessageWindow window([&](UINT message, WPARAM, LPARAM) -> LRESULT {
            if (message == WM_USER && ++handled < 4) { // each posts the next one
                PostMessageA(self, WM_USER, 0, 0);
            }
            return 7;
        });
        self = window.handle;
        PostMessageA(window.handle, WM_USER, 0, 0);
        while (readable(descriptor)) {
            EXPECT_TRUE(tarnel::run_pending_messages());
        }
        EXPECT_EQ(handled, 4);

        Worker sender([&] { return DWORD(SendMessageA(self, WM_USER + 1, 0, 0)); });
        EXPECT_TRUE(readable(descriptor, -1));
        EXPECT_TRUE(tarnel::run_pending_messages());
        EXPECT_EQ(WaitForSingleObject(sender.handle, INFINITE), WAIT_OBJECT_0);

        PostQuitMessage(3);
        EXPECT_TRUE(readable(descriptor));
        EXPECT_FALSE(tarnel::run_pending_messages(&exit_code));
        EXPECT_EQ(exit_code, 3);
    });
}

TEST(HostLoop, HearsOfMessagesThatCameWhileAnotherWaitHeldTheBell) {
    as_host([](int descriptor) {
        const MessageWindow window(support::ignore);
        CEvent event;
        PostMessageA(window.handle, WM_USER, 0, 0);
        EXPECT_EQ(WaitForSingleObject(event, 10), WAIT_TIMEOUT);
        EXPECT_TRUE(readable(descriptor));

        // A nested loop that sleeps, takes one message of two and ends.
        tarnel::run_pending_messages();
        Worker poster([&] {
            PostMessageA(window.handle, WM_USER, 1, 0);
            return DWORD(PostMessageA(window.handle, WM_USER, 2, 0));
        });
        MSG message{};
        EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 1);
        EXPECT_EQ(WaitForSingleObject(poster.handle, INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(readable(descriptor));
        EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 1);
        EXPECT_EQ(message.wParam, 2U);
    });
}

TEST(HostLoop, LeavesTheMessagesToTheLoopThatWaitsInTheHost) {
    as_host([](int) {
        int handled = 0;
        const MessageWindow window(
            [&](UINT message, WPARAM, LPARAM) -> LRESULT { return handled += message == WM_USER; });
        struct Host {
            HWND window;
            int turns = 0;

            static void wait(void* self, int, int milliseconds) {
                Host& host = *static_cast<Host*>(self);
                EXPECT_EQ(milliseconds, -1);
                if (++host.turns == 2) {
                    PostMessageA(host.window, WM_USER, 0, 0);
                }
                EXPECT_TRUE(tarnel::run_pending_messages()); // from some watch of its own
            }
        } host{window.handle};
        tarnel::set_host_wait({&Host::wait, &host});
        MSG message{};
        EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 1);
        EXPECT_EQ(host.turns, 2); // the first turn ended early, for no reason
        EXPECT_EQ(handled, 0);
        tarnel::set_host_wait({});
    });
}

} // namespace
