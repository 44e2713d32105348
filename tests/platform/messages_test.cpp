#include "platform/base/last_error.h"
#include "platform/messages/message.h"
#include "platform/messages/wait_messages.h"
#include "platform/messages/window.h"
#include "platform/threads/event.h"
#include "tests/support/message_window.h"
#include "tests/support/process_facts.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

namespace {

using support::ignore;
using support::MessageWindow;
using support::Worker;

/// What a filter finds in the calling thread's queue, taken out of it.
std::vector<UINT> take_all(HWND window = nullptr, UINT first = 0, UINT last = 0) {
    std::vector<UINT> numbers;
    MSG message;
    while (PeekMessageA(&message, window, first, last, PM_REMOVE)) {
        numbers.push_back(message.message);
    }
    return numbers;
}

/// A thread with one window that serves its messages until told to quit.
class WindowThread {
  public:
    explicit WindowThread(MessageWindow::Handler handler)
        : worker_([this, handler] {
              const MessageWindow made(handler);
              window = made.handle;
              ready_.SetEvent();
              MSG message;
              while (GetMessageA(&message, nullptr, 0, 0) > 0) {
                  DispatchMessageA(&message);
              }
              return 0U;
          }) {
        WaitForSingleObject(ready_, INFINITE);
    }

    HWND window = nullptr;

  private:
    CEvent ready_;
    Worker worker_;
};

constexpr UINT quit_thread = WM_USER + 99;

LRESULT quit_on_request(UINT message, WPARAM, LPARAM) {
    if (message == quit_thread) {
        PostQuitMessage(0);
    }
    return static_cast<LRESULT>(message);
}

TEST(Queue, GivesPostedMessagesInOrderAndFiltersMayOvertake) {
    const MessageWindow parent(ignore), other(ignore), child(ignore, parent.handle);
    PostMessageA(parent.handle, WM_USER + 1, 7, -1);
    PostMessageA(other.handle, WM_USER + 2, 0, 0);
    PostMessageA(child.handle, WM_USER + 3, 0, 0);
    PostMessageA(parent.handle, WM_USER + 4, 0, 0);
    PostMessageA(nullptr, WM_USER + 5, 0, 0);
    PostMessageA(other.handle, WM_USER + 7, 0, 0);

    MSG message{};
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(message.hwnd, parent.handle);
    EXPECT_EQ(message.wParam, 7U);
    EXPECT_EQ(message.lParam, -1);

    EXPECT_EQ(take_all(child.handle, WM_USER + 4, WM_USER + 9), std::vector<UINT>{});
    EXPECT_EQ(take_all(nullptr, WM_USER + 3, WM_USER + 3), std::vector<UINT>{WM_USER + 3});
    EXPECT_EQ(take_all(other.handle), (std::vector<UINT>{WM_USER + 2, WM_USER + 7}));
    PostMessageA(child.handle, WM_USER + 6, 0, 0);
    EXPECT_EQ(take_all(parent.handle), (std::vector<UINT>{WM_USER + 1, WM_USER + 4, WM_USER + 6}));
    EXPECT_EQ(take_all(), std::vector<UINT>{WM_USER + 5});
}

TEST(Queue, RefusesTheMessageAfterTenThousandAndTakesItWhenThereIsRoom) {
    const MessageWindow window(ignore);
    for (WPARAM i = 0; i < 10'000; ++i) {
        ASSERT_TRUE(PostMessageA(window.handle, WM_USER + UINT(i % 2), i, 0));
    }
    EXPECT_FALSE(PostMessageA(window.handle, WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_QUOTA);

    // From the middle, too, the rest keeps its order, round the end of the ring.
    MSG message{};
    for (WPARAM next = 1; next < 10'000; next += 2) {
        ASSERT_TRUE(PeekMessageA(&message, window.handle, WM_USER + 1, WM_USER + 1, PM_REMOVE));
        ASSERT_EQ(message.wParam, next);
        ASSERT_TRUE(PostMessageA(window.handle, WM_USER + 9, next, 0));
    }
    for (WPARAM next = 0; next < 10'000; next += 2) {
        ASSERT_TRUE(PeekMessageA(&message, nullptr, WM_USER, WM_USER + 1, PM_REMOVE));
        ASSERT_EQ(message.wParam, next);
    }
    EXPECT_EQ(take_all().size(), 5'000U);
}

TEST(Queue, QuitComesWhenNothingElseIsLeft) {
    const MessageWindow window(ignore);
    PostQuitMessage(5);
    PostMessageA(window.handle, WM_USER, 0, 0);
    MSG message{};
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 1);
    EXPECT_EQ(message.message, WM_USER);
    EXPECT_TRUE(PeekMessageA(&message, window.handle, WM_APP, WM_APP, PM_NOREMOVE));
    EXPECT_EQ(GetMessageA(&message, nullptr, WM_APP, WM_APP), 0);
    EXPECT_EQ(message.wParam, 5U);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(Windows, TakeTheirMessagesAndChildrenWithThem) {
    std::vector<std::string> order;
    const auto note = [&](const char* name) {
        return [&order, name](UINT message, WPARAM, LPARAM) -> LRESULT {
            order.push_back(name + std::string(message == WM_DESTROY ? " destroy" : " ncdestroy"));
            return 0;
        };
    };
    const MessageWindow parent(note("parent")), child(note("child"), parent.handle), kept(ignore);
    for (const HWND window : {parent.handle, kept.handle, child.handle}) {
        PostMessageA(window, WM_USER, 0, 0);
    }
    EXPECT_TRUE(DestroyWindow(parent.handle));
    EXPECT_EQ(order, (std::vector<std::string>{"parent destroy", "child destroy", "child ncdestroy",
                                               "parent ncdestroy"}));
    EXPECT_EQ(take_all(), std::vector<UINT>{WM_USER});
    EXPECT_FALSE(IsWindow(child.handle));

    for (const HWND dead : {parent.handle, child.handle, HWND(nullptr), HWND(~0ULL)}) {
        MSG message{};
        EXPECT_FALSE(DestroyWindow(dead));
        EXPECT_TRUE(dead == nullptr || !PostMessageA(dead, WM_USER, 0, 0));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
        EXPECT_EQ(SendMessageA(dead, WM_USER, 0, 0), 0);
        EXPECT_TRUE(dead == nullptr || GetMessageA(&message, dead, 0, 0) == -1);
    }
}

TEST(Windows, AreNotMistakenForTheirSuccessors) {
    std::vector<HWND> stale;
    for (int i = 0; i < 300; ++i) {
        stale.push_back(MessageWindow(ignore).handle);
    }
    std::deque<MessageWindow> successors; // in every place used before
    for (int i = 0; i < 600; ++i) {
        successors.emplace_back([](UINT message, WPARAM, LPARAM) {
            EXPECT_NE(message, WM_USER);
            return LRESULT{1};
        });
    }
    for (const HWND window : stale) {
        const MSG message{window, WM_USER, 0, 0, 0, {}};
        EXPECT_FALSE(IsWindow(window));
        EXPECT_FALSE(PostMessageA(window, WM_USER, 0, 0));
        EXPECT_EQ(SendMessageA(window, WM_USER, 0, 0), 0);
        EXPECT_EQ(DispatchMessageA(&message), 0);
        EXPECT_FALSE(DestroyWindow(window));
    }
    EXPECT_EQ(take_all(), std::vector<UINT>{});
}

TEST(Windows, BelongToTheirThread) {
    WindowThread other(quit_on_request);
    EXPECT_FALSE(DestroyWindow(other.window));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(tarnel::create_window([](void*, HWND, UINT, WPARAM, LPARAM) { return LRESULT{}; },
                                    nullptr, other.window),
              nullptr);
    MSG message{other.window, WM_USER, 0, 0, 0, {}};
    EXPECT_EQ(DispatchMessageA(&message), 0);
    EXPECT_EQ(SendMessageA(other.window, WM_USER, 0, 0), WM_USER);
    PostMessageA(other.window, quit_thread, 0, 0);
}

TEST(Sending, NestsBetweenThreadsThatWaitForEachOther) {
    // Each level is answered while both threads are inside a send of their own.
    HWND own = nullptr;
    const auto pass_on = [](HWND peer, WPARAM depth) {
        return depth == 0 ? 1 : 1 + SendMessageA(peer, WM_USER, depth - 1, 0);
    };
    WindowThread other([&](UINT message, WPARAM depth, LPARAM) {
        quit_on_request(message, 0, 0);
        return message == WM_USER ? pass_on(own, depth) : 0;
    });
    const MessageWindow window([&](UINT message, WPARAM depth, LPARAM) {
        return message == WM_USER ? pass_on(other.window, depth) : 0;
    });
    own = window.handle;
    EXPECT_EQ(SendMessageA(other.window, WM_USER, 40, 0), 41);
    PostMessageA(other.window, quit_thread, 0, 0);
}

TEST(Sending, EndsWithZeroWhenWindowOrThreadDies) {
    const auto answer = [](void*, HWND, UINT, WPARAM, LPARAM) { return LRESULT{77}; };
    for (const bool whole_thread : {false, true}) {
        CEvent ready;
        HWND window = nullptr;
        Worker receiver([&] {
            window = tarnel::create_window(answer, nullptr);
            ready.SetEvent();
            // Waits until the message has arrived, and does not run it.
            MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_SENDMESSAGE);
            return DWORD(whole_thread || DestroyWindow(window));
        });
        WaitForSingleObject(ready, INFINITE);
        EXPECT_EQ(SendMessageA(window, WM_USER, 0, 0), 0);
        EXPECT_FALSE(IsWindow(window) && !whole_thread);
    }
}

TEST(WaitingWithMessages, OnlyNewInputCounts) {
    CEvent event;
    const HANDLE handles[] = {event};
    const auto wait = [&](DWORD milliseconds) {
        return MsgWaitForMultipleObjects(1, handles, FALSE, milliseconds, QS_ALLINPUT);
    };
    const MessageWindow window(ignore);
    take_all();
    EXPECT_EQ(wait(10), WAIT_TIMEOUT);
    PostMessageA(window.handle, WM_USER, 0, 0);
    PostMessageA(window.handle, WM_USER, 0, 0);
    EXPECT_EQ(wait(INFINITE), WAIT_OBJECT_0 + 1);
    MSG message{};
    PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);
    EXPECT_EQ(wait(10), WAIT_TIMEOUT); // the second message has been seen
    PostMessageA(window.handle, WM_USER, 0, 0);
    event.SetEvent();
    EXPECT_EQ(wait(INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(wait(INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_SENDMESSAGE), WAIT_TIMEOUT);
    EXPECT_EQ(take_all().size(), 2U);
}

TEST(Queue, ThreadsComeAndGoWithTheirWindows) {
    const auto before = support::process_facts();
    HWND last = nullptr;
    for (int round = 0; round < 300; ++round) {
        Worker worker([&] {
            // A window that its thread leaves behind goes without a message.
            last = tarnel::create_window(
                [](void*, HWND, UINT, WPARAM, LPARAM) -> LRESULT { std::abort(); }, nullptr);
            return DWORD(PostMessageA(last, WM_USER, 0, 0));
        });
    }
    EXPECT_FALSE(PostMessageA(last, WM_USER, 0, 0));
    EXPECT_TRUE(support::back_to(before));
}

} // namespace
