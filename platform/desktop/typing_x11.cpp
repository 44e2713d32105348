#include "platform/base/last_error.h"
#include "platform/base/never_destroyed.h"
#include "platform/desktop/key_input.h"
#include "platform/desktop/keymap_x11.h"
#include "platform/desktop/thread_hot_keys_x11.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <span>
#include <thread>
#include <utility>

namespace tarnel {
namespace {

using Clock = std::chrono::steady_clock;

/// A program looks up what a key stands for a while after it was told of the key, and nothing tells
/// when it has done so: what was lent stays for that long.
constexpr std::chrono::milliseconds look_up_time(250);

/// Types for the whole process, through a connection of its own.
class Typist {
  public:
    Typist() { std::atexit(&Typist::at_exit); }

    UINT type(std::span<const INPUT> inputs);

  private:
    /// A key that stood for nothing, and what it stands for meanwhile: until it is needed for
    /// something else, or the process ends.
    struct Loan {
        xcb_keycode_t code;
        xcb_keysym_t symbol;
        Clock::time_point used;
    };

    struct Stroke {
        std::uint8_t event;
        xcb_keycode_t code;
    };

    static void at_exit();
    void give_all_back();

    bool prepare();
    bool follow_keymap();
    unsigned present_group();
    Stroke stroke_of(const KEYBDINPUT& input);
    xcb_keycode_t code_of(UINT key);
    xcb_keycode_t borrow(xcb_keysym_t symbol);
    Loan* new_loan();
    void assign(xcb_keycode_t code, xcb_keysym_t symbol);
    bool send(std::span<const Stroke> strokes);

    std::mutex typing_lock_;
    std::unique_ptr<X11Connection> connection_;
    std::uint8_t xtest_opcode_ = 0;
    Keymap keymap_;
    bool keymap_is_stale_ = true;
    unsigned group_ = 0;    ///< of the keymap's layouts the one that is switched on
    Clock::time_point now_; ///< when the present call began
    std::vector<Loan> loans_;
    std::array<xcb_keycode_t, 256> pressed_{}; ///< by virtual key; 0 for those that are not
};

Typist& typist() {
    static NeverDestroyed<Typist> instance;
    return instance.get();
}

UINT Typist::type(std::span<const INPUT> inputs) {
    const std::lock_guard guard(typing_lock_);
    if (!prepare()) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return 0;
    }
    group_ = present_group();
    std::vector<Stroke> strokes;
    for (const INPUT& input : inputs) {
        const bool known = input.type == INPUT_KEYBOARD && input.ki.wVk < pressed_.size();
        const Stroke stroke = known ? stroke_of(input.ki) : Stroke{};
        if (stroke.code != 0) {
            strokes.push_back(stroke);
        }
    }
    if (!send(strokes)) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return 0;
    }
    return static_cast<UINT>(strokes.size());
}

/// Connected, and with the present layout.
bool Typist::prepare() {
    now_ = Clock::now();
    if (connection_ && !keymap_is_stale_ && connection_->is_idle()) {
        return true;
    }
    const X11Connection* const before = connection_.get();
    if (!renew(connection_)) {
        return false;
    }
    if (connection_.get() != before) { // another server, or a forked child: whose parent's they are
        keymap_is_stale_ = true;
        loans_.clear();
        pressed_ = {};
    }
    const auto* const xtest = ::xcb_get_extension_data(connection_->get(), &xcb_test_id);
    if (!xtest || !xtest->present) {
        return false;
    }
    xtest_opcode_ = xtest->major_opcode;
    return follow_keymap();
}

bool Typist::follow_keymap() {
    while (const auto event = connection_->next_event()) {
        keymap_is_stale_ = keymap_is_stale_ || event->response_type == XCB_MAPPING_NOTIFY;
    }
    if (keymap_is_stale_ && keymap_.load(*connection_)) {
        keymap_is_stale_ = false;
        // Another layout takes the keys for itself.
        std::erase_if(
            loans_, [this](const Loan& loan) { return keymap_.symbol(loan.code) != loan.symbol; });
    }
    return !keymap_is_stale_;
}

/// The server knows it as a part of the modifiers, and is asked only where there are several.
unsigned Typist::present_group() {
    if (!keymap_.has_groups()) {
        return 0;
    }
    const auto pointer = connection_->reply<xcb_query_pointer_reply_t>(
        ::xcb_query_pointer(connection_->get(), connection_->root()));
    return pointer ? pointer->mask >> 13 & 3 : 0;
}

Typist::Stroke Typist::stroke_of(const KEYBDINPUT& input) {
    xcb_keycode_t& pressed = pressed_[input.wVk];
    const bool release = (input.dwFlags & KEYEVENTF_KEYUP) != 0;
    const xcb_keycode_t code = pressed ? pressed : code_of(input.wVk);
    pressed = release ? xcb_keycode_t{0} : code;
    return {static_cast<std::uint8_t>(release ? XCB_KEY_RELEASE : XCB_KEY_PRESS), code};
}

xcb_keycode_t Typist::code_of(UINT key) {
    const xcb_keysym_t symbol = symbol_of(key);
    const auto lent = std::ranges::find(loans_, symbol, &Loan::symbol);
    if (lent != loans_.end()) {
        lent->used = now_;
        return lent->code;
    }
    const xcb_keycode_t code = keymap_.typed(key, group_);
    return code || symbol == XCB_NO_SYMBOL ? code : borrow(symbol);
}

/// 0 when there is no key to be had.
xcb_keycode_t Typist::borrow(xcb_keysym_t symbol) {
    Loan* const loan = new_loan();
    if (!loan) {
        return 0;
    }
    loan->symbol = symbol;
    loan->used = now_;
    assign(loan->code, symbol);
    return loan->code;
}

/// A key that nothing stands on, else the one that was lent for the longest time.
Typist::Loan* Typist::new_loan() {
    for (const xcb_keycode_t code : keymap_.spare()) {
        if (std::ranges::find(loans_, code, &Loan::code) == loans_.end()) {
            return &loans_.emplace_back(Loan{code, XCB_NO_SYMBOL, now_});
        }
    }
    const auto rank = [this](const Loan& loan) {
        const bool held = std::ranges::find(pressed_, loan.code) != pressed_.end();
        return held ? now_ : loan.used;
    };
    const auto oldest = std::ranges::min_element(loans_, {}, rank);
    if (oldest == loans_.end() || rank(*oldest) == now_) {
        return nullptr;
    }
    std::this_thread::sleep_until(oldest->used + look_up_time);
    return &*oldest;
}

void Typist::assign(xcb_keycode_t code, xcb_keysym_t symbol) {
    ::xcb_change_keyboard_mapping(connection_->get(), 1, code, 1, &symbol);
    connection_->flush();
}

/// A request as it is sent.
template <typename Request>
std::string_view bytes_of(const Request& request) {
    return {reinterpret_cast<const char*>(&request), sizeof request};
}

/// In pieces that the server answers for, before their numbers come round.
bool Typist::send(std::span<const Stroke> strokes) {
    constexpr std::size_t piece = 10'000;
    constexpr xcb_grab_server_request_t grab{XCB_GRAB_SERVER, 0, 1};
    constexpr xcb_ungrab_server_request_t ungrab{XCB_UNGRAB_SERVER, 0, 1};
    xcb_test_fake_input_request_t fake{};
    fake.major_opcode = xtest_opcode_;
    fake.minor_opcode = XCB_TEST_FAKE_INPUT;
    fake.length = sizeof fake / 4;

    const bool several = strokes.size() > 2; // a key's two strokes are read in one go
    std::string requests;
    unsigned count = 0;
    const auto add = [&](const auto& request) {
        requests += bytes_of(request);
        ++count;
    };
    const auto flush = [&] {
        return connection_->send(std::exchange(requests, {}), std::exchange(count, 0));
    };
    if (several) {
        add(grab); // nobody else's keys come between
    }
    for (const auto& [event, code] : strokes) {
        fake.type = event;
        fake.detail = code;
        add(fake);
        if (count >= piece && !flush()) {
            return false;
        }
    }
    if (several) {
        add(ungrab);
    }
    return flush();
}

void Typist::at_exit() {
    Typist& leaving = typist();
    const std::unique_lock lock(leaving.typing_lock_, std::try_to_lock);
    if (lock && leaving.connection_ && leaving.connection_->is_ready()) {
        leaving.give_all_back();
    }
}

/// Presses nothing any more, and leaves the keyboard as it was.
void Typist::give_all_back() {
    std::vector<Stroke> releases;
    for (const xcb_keycode_t code : pressed_) {
        if (code != 0) {
            releases.push_back({XCB_KEY_RELEASE, code});
        }
    }
    send(releases);
    for (const Loan& loan : loans_) {
        std::this_thread::sleep_until(loan.used + look_up_time);
        assign(loan.code, XCB_NO_SYMBOL);
    }
    connection_->sync(); // the server drops what it has not read when a program leaves
}

} // namespace
} // namespace tarnel

UINT SendInput(UINT count, const INPUT* inputs, int size) {
    if (size != static_cast<int>(sizeof(INPUT))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    tarnel::lend_keyboard();
    return tarnel::typist().type({inputs, count});
}
