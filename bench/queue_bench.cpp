// Posting messages to a window of another thread, against a queue written by hand for the purpose:
// a mutex, a deque and a condition variable, with the same limit and the same message, its time
// filled in as well.

#include "bench/report.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "platform/threads/clock.h"
#include "platform/threads/event.h"
#include "platform/threads/wait.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr WPARAM last = ~WPARAM{0};

double since(LPARAM stamp) {
    return 1e-3 * static_cast<double>(Clock::now().time_since_epoch().count() - stamp);
}

LPARAM stamp() {
    return Clock::now().time_since_epoch().count();
}

/// What the receiving thread does with a message: counts it, and notes how long it was on its way.
struct Receiver {
    std::atomic<std::uint64_t> handled = 0;
    std::vector<double> delays; // microseconds
    bool timed = false;

    LRESULT handle(LPARAM posted) {
        if (timed) {
            delays.push_back(since(posted));
        }
        handled.fetch_add(1, std::memory_order_release);
        return 0;
    }
};

/// The layer's queue.
class Messages {
  public:
    explicit Messages(Receiver& receiver) : thread_([this, &receiver] { receive(receiver); }) {
        WaitForSingleObject(ready_, INFINITE);
    }

    ~Messages() { thread_.join(); }

    bool post(WPARAM value, LPARAM posted) {
        return PostMessageA(window_, WM_USER, value, posted) != FALSE;
    }

  private:
    static LRESULT handle(void* receiver, HWND, UINT message, WPARAM, LPARAM posted) {
        return message == WM_USER ? static_cast<Receiver*>(receiver)->handle(posted) : 0;
    }

    void receive(Receiver& receiver) {
        window_ = tarnel::create_window(&handle, &receiver);
        ready_.SetEvent();
        MSG message;
        while (GetMessageA(&message, nullptr, 0, 0) > 0 && message.wParam != last) {
            DispatchMessageA(&message);
        }
        DestroyWindow(window_);
    }

    CEvent ready_;
    HWND window_ = nullptr;
    std::thread thread_;
};

class ByHand {
  public:
    explicit ByHand(Receiver& receiver) : thread_([this, &receiver] { receive(receiver); }) {}

    ~ByHand() { thread_.join(); }

    bool post(WPARAM value, LPARAM posted) {
        bool wake = false;
        const DWORD now = GetTickCount();
        {
            const std::lock_guard guard(lock_);
            if (queue_.size() == 10'000) {
                return false;
            }
            wake = queue_.empty();
            queue_.push_back({nullptr, WM_USER, value, posted, now, {}});
        }
        if (wake) {
            filled_.notify_one();
        }
        return true;
    }

  private:
    MSG take() {
        std::unique_lock guard(lock_);
        filled_.wait(guard, [this] { return !queue_.empty(); });
        const MSG message = queue_.front();
        queue_.pop_front();
        return message;
    }

    void receive(Receiver& receiver) {
        for (MSG message = take(); message.wParam != last; message = take()) {
            receiver.handle(message.lParam);
        }
    }

    std::mutex lock_;
    std::condition_variable filled_;
    std::deque<MSG> queue_;
    std::thread thread_;
};

/// Posts a second, from the first post to the last message handled.
template <typename Queue>
double posts_a_second() {
    constexpr int count = 400'000;
    Receiver receiver;
    Queue queue(receiver);
    const double time = bench::seconds([&] {
        for (int i = 0; i < count; ++i) {
            while (!queue.post(0, 0)) {
                std::this_thread::yield();
            }
        }
        while (receiver.handled.load(std::memory_order_acquire) < count) {
            std::this_thread::yield();
        }
    });
    queue.post(last, 0);
    return count / time;
}

/// How long a message is on its way to a sleeping thread, in microseconds: the given part of all
/// is faster.
template <typename Queue>
double wake_up(double part) {
    constexpr std::uint64_t count = 3'000;
    Receiver receiver;
    receiver.timed = true;
    receiver.delays.reserve(count);
    {
        Queue queue(receiver);
        for (std::uint64_t i = 0; i < count; ++i) {
            queue.post(0, stamp());
            while (receiver.handled.load(std::memory_order_acquire) <= i) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(std::chrono::microseconds(50)); // it goes back to sleep
        }
        queue.post(last, 0);
    }
    const auto place = static_cast<std::ptrdiff_t>(part * static_cast<double>(count));
    std::nth_element(receiver.delays.begin(), receiver.delays.begin() + place,
                     receiver.delays.end());
    return receiver.delays[static_cast<std::size_t>(place)];
}

} // namespace

int main() {
    bench::report("d.queue.posts",
                  bench::compare(&posts_a_second<Messages>, &posts_a_second<ByHand>), "posts/s");
    for (const auto& [name, part] : {std::pair{"p50", 0.5}, std::pair{"p99", 0.99}}) {
        const auto comparison = bench::compare([part = part] { return wake_up<Messages>(part); },
                                               [part = part] { return wake_up<ByHand>(part); }, 7);
        bench::report(std::string("d.queue.wake.") + name, comparison, "us");
    }
}
