#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/messages/wait_messages.h"
#include "platform/threads/clock.h"
#include "platform/threads/event.h"
#include "tests/support/message_window.h"
#include "tests/support/process_facts.h"
#include "tests/support/worker.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <array>
#include <atomic>
#include <memory>
#include <random>

// Two threads that do everything to each other at once: post, send, destroy windows under the
// other's feet, look into the other's queue, and wait for handles and messages together.

namespace {

using support::MessageWindow;
using support::Worker;

constexpr std::uint32_t rounds_each = 500'000;
constexpr UINT numbered = WM_USER + 1; // wParam counts up without a gap, to the lasting window
constexpr UINT question = WM_USER + 2; // sent; the answer is made from wParam
constexpr UINT latest = WM_USER + 3;   // posted and taken back by the poster, to the lasting window
constexpr UINT lost = WM_USER + 4;     // posted to the window that comes and goes

LRESULT answer_to(WPARAM value) {
    return static_cast<LRESULT>(value * 2 + 1);
}

class Side {
  public:
    /// Shared with the other side.
    std::atomic<HWND> lasting = nullptr;
    std::atomic<HWND> fleeting = nullptr;
    std::atomic<bool> done = false;
    CEvent event;

    Side* peer = nullptr;

    void run(std::uint32_t seed) {
        random_.seed(seed);
        const MessageWindow lasting_window([this](UINT m, WPARAM w, LPARAM) { return take(m, w); });
        lasting = lasting_window.handle;
        renew_fleeting();
        while (!peer->fleeting) {
            Sleep(0);
        }
        for (std::uint32_t round = 0; round < rounds_each; ++round) {
            step();
        }
        done = true;
        peer->event.SetEvent();
        finish();
        fleeting_window_.reset();
    }

    std::uint64_t posted = 0;
    std::uint64_t received = 0;
    std::uint64_t events = 0;
    std::uint64_t signals = 0;

  private:
    LRESULT take(UINT message, WPARAM value) {
        if (message == numbered) {
            EXPECT_EQ(value, received) << "lost or out of order";
            received = value + 1;
        }
        return message == question ? answer_to(value) : 0;
    }

    void renew_fleeting() {
        fleeting_window_ = std::make_unique<MessageWindow>([](UINT message, WPARAM value, LPARAM) {
            return message == question ? answer_to(value) : 0;
        });
        fleeting = fleeting_window_->handle;
    }

    void step() {
        const auto choice = random_() % 16;
        if (choice == 0) {
            ask(peer->lasting, true);
        } else if (choice == 1) {
            ask(peer->fleeting, false);
        } else if (choice == 2) {
            renew_fleeting();
        } else if (choice == 3) {
            replace_latest();
        } else if (choice == 4) {
            ++signals;
            peer->event.SetEvent();
        } else if (choice == 5) {
            wait_for_both();
        } else if (choice == 6) {
            PostMessageA(peer->fleeting, lost, 0, 0);
        } else if (choice < 10) {
            drain();
        } else {
            post_number();
        }
    }

    void post_number() {
        // A full queue refuses, and the same number is tried again in a later round.
        posted += PostMessageA(peer->lasting, numbered, posted, 0) ? 1 : 0;
    }

    void ask(HWND window, bool must_live) {
        const WPARAM value = random_();
        const LRESULT result = SendMessageA(window, question, value, 0);
        EXPECT_TRUE(result == answer_to(value) || (!must_live && result == 0));
    }

    void replace_latest() {
        MSG message;
        while (PeekMessageA(&message, peer->lasting, latest, latest, PM_REMOVE)) {
            EXPECT_EQ(message.message, latest);
        }
        PostMessageA(peer->lasting, latest, 0, 0);
    }

    void wait_for_both() {
        const HANDLE handles[] = {event};
        // The other side may be waiting as well, so not for ever.
        const DWORD result = MsgWaitForMultipleObjects(1, handles, FALSE, 1, QS_ALLINPUT);
        EXPECT_TRUE(result == WAIT_OBJECT_0 || result == WAIT_OBJECT_0 + 1 ||
                    result == WAIT_TIMEOUT);
        events += result == WAIT_OBJECT_0 ? 1 : 0;
        drain();
    }

    void drain() {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageA(&message);
        }
    }

    /// Serves the other side until it is done as well, and then takes what is left.
    void finish() {
        const HANDLE handles[] = {event};
        while (!peer->done) {
            MsgWaitForMultipleObjects(1, handles, FALSE, INFINITE, QS_ALLINPUT);
            drain();
        }
        drain();
    }

    std::mt19937 random_;
    std::unique_ptr<MessageWindow> fleeting_window_;
};

TEST(MessagesStress, TwoThreadsLoseNothingAndKeepTheOrder) {
    const auto before = support::process_facts();
    {
        std::array<Side, 2> sides;
        sides[0].peer = &sides[1];
        sides[1].peer = &sides[0];
        {
            const auto run = [](Side& side, std::uint32_t seed) {
                return [&side, seed] {
                    side.run(seed);
                    return 0U;
                };
            };
            Worker first(run(sides[0], 1)), second(run(sides[1], 2));
        }
        for (const Side& side : sides) {
            EXPECT_EQ(side.received, side.peer->posted);
            EXPECT_GT(side.received, rounds_each / 4);
            EXPECT_GT(side.events, 0U);
            EXPECT_LE(side.events, side.peer->signals + 1);
        }
    }
    EXPECT_TRUE(support::back_to(before));
}

/// A thread whose own poll loop hosts the queue, with waits of the layer nested in its handlers.
/// Every message that comes while such a wait holds the bell must still reach the loop.
TEST(MessagesStress, AHostIsWokenForEveryMessage) {
    constexpr WPARAM count = 100'000;
    std::atomic<WPARAM> progress = 0;
    CEvent never;
    std::mt19937 random(3);
    const auto nest = [&] {
        MSG message;
        const auto choice = random() % 32;
        if (choice == 0) {
            WaitForSingleObject(never, 1);
        } else if (choice == 1) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 1, QS_SENDMESSAGE);
        } else if (choice == 2) {
            PeekMessageA(&message, nullptr, latest, latest, PM_REMOVE);
        }
    };
    const MessageWindow window([&](UINT message, WPARAM value, LPARAM) -> LRESULT {
        if (message == numbered) {
            EXPECT_EQ(value, progress++);
            nest();
        }
        return message == question ? answer_to(value) : 0;
    });
    pollfd entry{tarnel::message_descriptor(), POLLIN, 0};
    Worker poster([&] {
        for (WPARAM i = 0; i < count;) {
            i += PostMessageA(window.handle, numbered, i, 0) ? 1 : 0;
            if (i % 7 == 0) { // mostly the host is asleep by then
                EXPECT_EQ(SendMessageA(window.handle, question, i, 0), answer_to(i));
            }
        }
        return 0U;
    });
    while (progress < count) {
        EXPECT_EQ(::poll(&entry, 1, 60'000), 1) << "nothing has come for a minute";
        EXPECT_TRUE(tarnel::run_pending_messages());
    }
    while (WaitForSingleObject(poster.handle, 0) == WAIT_TIMEOUT) {
        tarnel::run_pending_messages();
    }
}

} // namespace
