// An asio program hosts the library: one io_context runs its own timer and the library's messages.

#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"

#include <asio.hpp>

#include <cstdio>
#include <thread>

namespace {

using namespace std::chrono_literals;

class LibraryInAsio {
  public:
    explicit LibraryInAsio(asio::io_context& context)
        : context_(context), descriptor_(context, tarnel::message_descriptor()) {
        tarnel::set_host_wait({&LibraryInAsio::wait, this});
        listen();
    }

    ~LibraryInAsio() {
        tarnel::set_host_wait({});
        descriptor_.release(); // it is the library's
    }

  private:
    void listen() {
        descriptor_.async_wait(descriptor_.wait_read, [this](const std::error_code& error) {
            if (error) {
                return;
            }
            listen(); // first: a nested loop may run in one of the messages
            if (!tarnel::run_pending_messages()) {
                context_.stop();
            }
        });
    }

    /// What the library's nested loops sleep in: a turn of asio's.
    static void wait(void* library, int, int milliseconds) {
        asio::io_context& context = static_cast<LibraryInAsio*>(library)->context_;
        milliseconds < 0 ? context.run_one() : context.run_one_for(milliseconds * 1ms);
    }

    asio::io_context& context_;
    asio::posix::stream_descriptor descriptor_;
};

} // namespace

int main() {
    asio::io_context context;
    const LibraryInAsio library(context);
    int points = 0;
    const auto handle = [](void* seen, HWND, UINT, WPARAM, LPARAM) -> LRESULT {
        if (++*static_cast<int*>(seen) == 50) {
            PostQuitMessage(0);
        }
        return 0;
    };
    const HWND window = tarnel::create_window(handle, &points);
    std::thread machine([window] {
        for (int i = 0; i < 50; ++i) {
            PostMessageA(window, WM_USER, 0, 0);
            std::this_thread::sleep_for(2ms);
        }
    });
    asio::steady_timer timer(context, 20ms);
    bool rang = false;
    timer.async_wait([&](const std::error_code& error) { rang = !error; });
    context.run();
    machine.join();
    std::printf("%d points, and asio's own timer %s\n", points, rang ? "rang" : "did not ring");
    return points == 50 && rang ? 0 : 1;
}
