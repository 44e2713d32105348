// The desktop against the same work done by hand with xcb, each on the same X server (the program's
// own Xvfb, without a window manager or any window):
// - i.keys, i.keys.string: key events a second by SendKey and by SendKeyString, a press and a
// release
//   of each key, until an onlooker is told of the last one. By hand a key is two XTEST requests and
//   a flush: nothing follows the layout or knows what is pressed.
// - i.hotkey.p50: from the press (XTEST, another connection) to OnHotKey in the message loop; by
//   hand to the event of the key that is grabbed, read by a loop that polls the connection.

#include "bench/report.h"
#include "desktop/HotKeys.h"
#include "desktop/SendKeys.h"
#include "platform/base/last_error.h"
#include "platform/base/virtual_keys.h"
#include "platform/desktop/hot_key.h"
#include "platform/messages/message.h"
#include "tests/support/x_server.h"

#include <poll.h>
#include <xcb/xtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

namespace {

constexpr unsigned keys = 5'000;
constexpr unsigned presses = 100;
constexpr xcb_keycode_t a_code = 38; // in the US layout
constexpr xcb_keycode_t f1_code = 67;
constexpr xcb_keycode_t f2_code = 68;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "desktop_bench: %s\n", what);
    std::exit(1);
}

/// A connection to the server as a program has that does its work by hand.
class Bare {
  public:
    ~Bare() { ::xcb_disconnect(server_); }

    void stroke(std::uint8_t event, xcb_keycode_t code) {
        ::xcb_test_fake_input(server_, event, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    }

    void type(xcb_keycode_t code) {
        stroke(XCB_KEY_PRESS, code);
        stroke(XCB_KEY_RELEASE, code);
        ::xcb_flush(server_);
    }

    void grab(xcb_keycode_t code) {
        ::xcb_grab_key(server_, 0, root(), XCB_NONE, code, XCB_GRAB_MODE_ASYNC,
                       XCB_GRAB_MODE_ASYNC);
        sync();
    }

    /// Until a key is pressed that is grabbed.
    void await_press() {
        for (;;) {
            std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
                ::xcb_poll_for_event(server_), &std::free);
            if (event && (event->response_type & 0x7F) == XCB_KEY_PRESS) {
                return;
            }
            if (!event) {
                pollfd entry{::xcb_get_file_descriptor(server_), POLLIN, 0};
                ::poll(&entry, 1, -1);
            }
        }
    }

    /// Until the server has taken what was sent to it, also by others.
    void sync() {
        std::free(::xcb_get_input_focus_reply(server_, ::xcb_get_input_focus(server_), nullptr));
    }

  private:
    xcb_window_t root() { return ::xcb_setup_roots_iterator(::xcb_get_setup(server_)).data->root; }

    xcb_connection_t* const server_ = ::xcb_connect(nullptr, nullptr);
};

class Keys : public CHotKeys {
  public:
    Keys() {
        Add(CHotKey(VK_F1, 0, 1, 1));
        Register();
    }

    void OnHotKey(CHotKey) override { pressed_ = true; }

    void await_press() {
        MSG message;
        while (!std::exchange(pressed_, false) && GetMessageA(&message, nullptr, 0, 0) > 0) {
            DispatchMessageA(&message);
        }
    }

  private:
    bool pressed_ = false;
};

/// Events a second until the onlooker has seen F2, which ends what is typed.
template <typename Type>
double rate(Bare& onlooker, Type type) {
    return 2.0 * keys / bench::seconds([&] {
               type();
               onlooker.await_press();
           });
}

void measure_typing() {
    Bare typist, onlooker;
    onlooker.grab(f2_code);
    const auto by_hand = [&] {
        return rate(onlooker, [&] {
            for (unsigned key = 1; key < keys; ++key) {
                typist.type(a_code);
            }
            typist.type(f2_code);
        });
    };
    const auto key_by_key = [&] {
        return rate(onlooker, [] {
            for (unsigned key = 1; key < keys; ++key) {
                SendKey('A');
            }
            SendKey(VK_F1 + 1);
        });
    };
    const std::string text = std::string(keys - 1, 'A') + "{F2}";
    const auto as_string = [&] { return rate(onlooker, [&] { SendKeyString(text.c_str()); }); };
    bench::report("i.keys", bench::compare(key_by_key, by_hand), "events/s");
    bench::report("i.keys.string", bench::compare(as_string, by_hand), "events/s");
}

/// The median time from the press to its being told, in microseconds.
template <typename Await>
double reaction(Bare& person, xcb_keycode_t code, Await await) {
    std::vector<double> times;
    for (unsigned press = 0; press < presses; ++press) {
        times.push_back(1e6 * bench::seconds([&] {
                            person.type(code);
                            await();
                        }));
        person.sync();
        // A press in the very millisecond of the last release is a held key that repeats itself.
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    return bench::median(times);
}

void measure_hot_keys() {
    Bare person, grabber;
    Keys hot_keys;
    grabber.grab(f2_code);
    bench::report(
        "i.hotkey.p50",
        bench::compare([&] { return reaction(person, f1_code, [&] { hot_keys.await_press(); }); },
                       [&] { return reaction(person, f2_code, [&] { grabber.await_press(); }); }),
        "us");
}

} // namespace

int main() {
    const support::XServer screen(false);
    SendKey('A');
    if (GetLastError() == ERROR_NOT_SUPPORTED) {
        fail("no X server");
    }
    measure_typing();
    measure_hot_keys();
}
