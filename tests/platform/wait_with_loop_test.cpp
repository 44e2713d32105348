#include "platform/base/last_error.h"
#include "platform/companions/wait_with_loop.h"
#include "platform/messages/message.h"
#include "platform/threads/clock.h"
#include "platform/threads/event.h"
#include "platform/windows/wnd.h"
#include "tests/support/message_window.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

namespace {

using support::MessageWindow;

DWORD wait(DWORD count, const HANDLE* handles, DWORD milliseconds) {
    return SafeWaitWithMessageLoop(count, handles, milliseconds, 1, nullptr);
}

TEST(WaitWithLoop, DispatchesUntilAnObjectIsSignalled) {
    CEvent first, second;
    const HANDLE events[] = {first, second};
    const MessageWindow window([&](UINT message, WPARAM, LPARAM) {
        if (message == WM_USER) {
            second.SetEvent();
        }
        return 0;
    });
    PostMessageA(window.handle, WM_USER, 0, 0);
    MSG seen;
    EXPECT_TRUE(PeekMessageA(&seen, nullptr, 0, 0, PM_NOREMOVE)); // no new input any more
    EXPECT_EQ(wait(2, events, INFINITE), WAIT_OBJECT_0 + 1);

    const support::Worker worker([&] {
        SendMessageA(window.handle, WM_USER, 0, 0);
        return 0U;
    });
    EXPECT_EQ(wait(2, events, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(wait(2, events, 0), WAIT_TIMEOUT);
    EXPECT_EQ(wait(64, events, 0), WAIT_FAILED);
    EXPECT_EQ(SafeWaitWithMessageLoop(0, nullptr, 0, 1, &first), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(WaitWithLoop, EndsInTimeUnderAFloodOfMessages) {
    unsigned count = 0;
    HWND own = nullptr;
    CEvent event;
    const MessageWindow window([&](UINT message, WPARAM, LPARAM) {
        if (message == WM_USER) {
            PostMessageA(own, WM_USER, 0, 0); // for ever
            if (++count == 1000) {
                event.SetEvent();
            }
        }
        return 0;
    });
    own = window.handle;
    PostMessageA(own, WM_USER, 0, 0);
    const HANDLE handle = event;
    EXPECT_EQ(wait(1, &handle, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(count, 1000U);

    const DWORD before = GetTickCount();
    EXPECT_EQ(wait(0, nullptr, 100), WAIT_TIMEOUT);
    EXPECT_GE(GetTickCount() - before, 90U);
    EXPECT_GT(count, 1001U);
}

TEST(WaitWithLoop, OffersMessagesToTheirWindowFirst) {
    struct Translating : CWnd {
        BOOL PreTranslateMessage(MSG* message) override { return message->message == WM_USER; }

        LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
            kept_back = kept_back && message != WM_USER;
            arrived = arrived || message == WM_USER + 1;
            return CWnd::WindowProc(message, wparam, lparam);
        }

        bool kept_back = true;
        bool arrived = false;
    } window;

    ASSERT_TRUE(window.CreateEx(0, "Static", "", WS_POPUP, {0, 0, 9, 9}, nullptr, 0));
    window.PostMessage(WM_USER);
    window.PostMessage(WM_USER + 1);
    EXPECT_EQ(wait(0, nullptr, 1), WAIT_TIMEOUT);
    EXPECT_TRUE(window.kept_back && window.arrived);
    window.DestroyWindow();
}

} // namespace
