#include "platform/messages/message.h"
#include "platform/messages/wait_messages.h"
#include "tests/support/allocations.h"
#include "tests/support/message_window.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

namespace {

/// Everything that a point's way to its client does with the queue, `rounds` times.
void exchange(HWND window, std::uint64_t rounds) {
    MSG message;
    for (std::uint64_t i = 0; i < rounds; ++i) {
        PostMessageA(window, WM_USER, i, 0);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
        PeekMessageA(&message, window, WM_APP, WM_APP, PM_REMOVE);
        GetMessageA(&message, nullptr, 0, 0);
        DispatchMessageA(&message);
        SendMessageA(window, WM_USER, i, 0);
    }
}

TEST(Allocation, AWarmQueueAllocatesNothing) {
    const support::MessageWindow window(support::ignore);
    exchange(window.handle, 100);
    const std::size_t before = support::allocations();
    exchange(window.handle, 50'000);
    EXPECT_EQ(support::allocations(), before);
    ASSERT_GT(before, 0U) << "allocations are not counted";

    std::size_t in_worker = 0;
    support::Worker worker([&] { // posts and sends from another thread, and its waits
        PostMessageA(window.handle, WM_USER, 0, 0);
        SendMessageA(window.handle, WM_USER, 0, 0);
        in_worker = support::allocations();
        for (int i = 0; i < 10'000; ++i) {
            PostMessageA(window.handle, WM_USER, 0, 0);
            SendMessageA(window.handle, WM_USER, 0, 0);
        }
        in_worker = support::allocations() - in_worker;
        return DWORD(PostMessageA(window.handle, WM_APP, 0, 0));
    });
    MSG message{};
    while (message.message != WM_APP && GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);
    }
    EXPECT_EQ(WaitForSingleObject(worker.handle, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(in_worker, 0U);
}

} // namespace
