#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"
#include "platform/desktop/hot_key.h"
#include "platform/desktop/key_grab_x11.h"
#include "platform/desktop/keymap_x11.h"
#include "platform/messages/message.h"
#include "platform/messages/queue.h"
#include "platform/threads/watch.h"

#include <sys/epoll.h>

#include <algorithm>
#include <list>

namespace tarnel {
namespace {

class ThreadHotKeys;

/// It lives as long as its anchor, a child of the window that is told: so it ends with the window
/// and with the thread.
struct HotKey {
    ThreadHotKeys& owner;
    HWND window;
    int id;
    UINT modifiers;
    UINT key;
    KeyCombination grabbed{}; ///< code 0: none, the present layout lacks it
    HWND anchor = nullptr;
};

/// The hot keys of one thread; there as long as there are any. The server reports what is grabbed
/// to the connection that did it, which therefore is the thread's own.
class ThreadHotKeys final : public Watch {
  public:
    /// The calling thread's. Null, with the last error, without an X server.
    static ThreadHotKeys* current();

    /// The same without making it.
    static ThreadHotKeys* existing() { return own_; }

    /// ERROR_SUCCESS or why not; to be followed by serve().
    DWORD add(HWND window, int id, UINT modifiers, UINT key);

    /// False when there is none.
    bool remove(HWND window, int id);

    /// The anchor of the hot key is gone.
    void drop(const HotKey& hot_key);

    void serve(std::uint32_t events) override;

    ~ThreadHotKeys() { stop(); } // before the connection is closed

  private:
    bool open();
    void end();
    void lose_all();

    bool is_taken(const KeyCombination& combination) const;

    void take_events();
    void handle_event(const xcb_generic_event_t& event);
    void press(const xcb_key_press_event_t& event);
    void follow_keymap();
    bool still_fits(const HotKey& hot_key, const Keymap& keymap) const;

    std::unique_ptr<X11Connection> connection_;
    Keymap keymap_;
    bool keymap_changed_ = false;
    std::list<HotKey> hot_keys_;
    xcb_keycode_t released_ = 0; ///< the last key that was, and when
    xcb_timestamp_t released_at_ = 0;

    static thread_local constinit ThreadHotKeys* own_;
};

thread_local constinit ThreadHotKeys* ThreadHotKeys::own_ = nullptr;

void drop_hot_key(void* context) {
    const auto& hot_key = *static_cast<HotKey*>(context);
    hot_key.owner.drop(hot_key);
}

LRESULT handle_anchor(void* context, HWND, UINT message, WPARAM, LPARAM) {
    if (message == WM_NCDESTROY) {
        drop_hot_key(context);
    }
    return 0;
}

// Beginning and end.

ThreadHotKeys* ThreadHotKeys::current() {
    if (own_ && !own_->connection_->is_own()) {
        own_ = nullptr; // a forked child; what is the parent's stays untouched
    }
    if (!own_) {
        auto made = std::make_unique<ThreadHotKeys>();
        own_ = made->open() ? made.release() : nullptr;
    }
    return own_;
}

bool ThreadHotKeys::open() {
    if (!renew(connection_) || !start(connection_->descriptor(), EPOLLIN)) {
        return false;
    }
    const bool loaded = keymap_.load(*connection_);
    if (!loaded) {
        SetLastError(ERROR_NOT_SUPPORTED);
    }
    return loaded;
}

void ThreadHotKeys::end() {
    if (own_ == this) {
        own_ = nullptr;
    }
    delete this;
}

void ThreadHotKeys::lose_all() {
    report("Hot keys: the X server is gone, and what was registered with it.");
    std::vector<HWND> anchors;
    for (const HotKey& hot_key : hot_keys_) {
        anchors.push_back(hot_key.anchor);
    }
    for (const HWND anchor : anchors) {
        DestroyWindow(anchor); // the last one ends this
    }
}

// The list.

DWORD ThreadHotKeys::add(HWND window, int id, UINT modifiers, UINT key) {
    const auto combination = keymap_.combination(key, modifiers);
    if (!combination) {
        return ERROR_INVALID_PARAMETER;
    }
    if (is_taken(*combination) || !grab_key(*connection_, *combination, keymap_.locks())) {
        return ERROR_HOTKEY_ALREADY_REGISTERED;
    }
    HotKey& added = hot_keys_.emplace_back(HotKey{*this, window, id, modifiers, key, *combination});
    added.anchor = create_window(&handle_anchor, &added, window, &drop_hot_key);
    if (!added.anchor) {
        ungrab_key(*connection_, added.grabbed, keymap_.locks());
        hot_keys_.pop_back();
        return GetLastError();
    }
    return ERROR_SUCCESS;
}

bool ThreadHotKeys::remove(HWND window, int id) {
    std::vector<HWND> anchors; // several when more than one was registered under the id
    for (const HotKey& hot_key : hot_keys_) {
        if (hot_key.window == window && hot_key.id == id) {
            anchors.push_back(hot_key.anchor);
        }
    }
    for (const HWND anchor : anchors) {
        DestroyWindow(anchor);
    }
    return !anchors.empty();
}

void ThreadHotKeys::drop(const HotKey& hot_key) {
    if (connection_->is_ready()) {
        ungrab_key(*connection_, hot_key.grabbed, keymap_.locks());
        connection_->sync(); // others may have it as soon as this is done
    }
    hot_keys_.remove_if([&](const HotKey& listed) { return &listed == &hot_key; });
    if (!connection_->is_own()) {
        return;
    }
    take_events();
    if (hot_keys_.empty()) {
        end();
    }
}

bool ThreadHotKeys::is_taken(const KeyCombination& combination) const {
    return std::ranges::find(hot_keys_, combination, &HotKey::grabbed) != hot_keys_.end();
}

// What the server tells.

void ThreadHotKeys::serve(std::uint32_t) {
    if (!connection_->is_own()) {
        return;
    }
    take_events();
    if (hot_keys_.empty()) {
        end();
    } else if (connection_->is_broken()) {
        lose_all();
    }
}

void ThreadHotKeys::take_events() {
    for (;;) {
        while (const auto event = connection_->next_event()) {
            handle_event(*event);
        }
        if (!keymap_changed_) {
            return;
        }
        follow_keymap();
    }
}

void ThreadHotKeys::handle_event(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_KEY_PRESS:
        press(reinterpret_cast<const xcb_key_press_event_t&>(event));
        break;
    case XCB_KEY_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_key_release_event_t&>(event);
        released_ = release.detail;
        released_at_ = release.time;
        break;
    }
    case XCB_MAPPING_NOTIFY:
        keymap_changed_ = true;
        break;
    default:
        break;
    }
}

void ThreadHotKeys::press(const xcb_key_press_event_t& event) {
    if (event.detail == released_ && event.time == released_at_) {
        return; // a key that is held repeats itself
    }
    const KeyCombination pressed{event.detail,
                                 static_cast<std::uint16_t>(event.state & 0xFF & ~keymap_.locks())};
    const auto hot_key = std::ranges::find(hot_keys_, pressed, &HotKey::grabbed);
    if (hot_key != hot_keys_.end()) {
        PostMessageA(
            hot_key->window, WM_HOTKEY, static_cast<WPARAM>(hot_key->id),
            MAKELPARAM(static_cast<int>(hot_key->modifiers), static_cast<int>(hot_key->key)));
    }
}

/// Another layout: what lies elsewhere there is grabbed anew, all of it first let go.
void ThreadHotKeys::follow_keymap() {
    keymap_changed_ = false;
    Keymap next;
    if (!next.load(*connection_)) {
        return;
    }
    if (std::ranges::all_of(hot_keys_, [&](const auto& key) { return still_fits(key, next); })) {
        keymap_ = std::move(next);
        return;
    }
    for (const HotKey& hot_key : hot_keys_) {
        ungrab_key(*connection_, hot_key.grabbed, keymap_.locks());
    }
    keymap_ = std::move(next);
    for (HotKey& hot_key : hot_keys_) {
        hot_key.grabbed = {};
        const auto combination = keymap_.combination(hot_key.key, hot_key.modifiers);
        if (combination && !is_taken(*combination) &&
            grab_key(*connection_, *combination, keymap_.locks())) {
            hot_key.grabbed = *combination;
        }
    }
}

bool ThreadHotKeys::still_fits(const HotKey& hot_key, const Keymap& keymap) const {
    return keymap.locks() == keymap_.locks() &&
           keymap.combination(hot_key.key, hot_key.modifiers).value_or(KeyCombination{}) ==
               hot_key.grabbed;
}

DWORD check_window(HWND window) {
    if (window && !IsWindow(window)) {
        return ERROR_INVALID_WINDOW_HANDLE;
    }
    const bool own = !window || owner_of(window) == MessageQueue::existing();
    return own ? ERROR_SUCCESS : ERROR_WINDOW_OF_OTHER_THREAD;
}

constexpr UINT all_modifiers = MOD_ALT | MOD_CONTROL | MOD_SHIFT | MOD_WIN;

} // namespace
} // namespace tarnel

BOOL RegisterHotKey(HWND window, int id, UINT modifiers, UINT key) {
    DWORD error = tarnel::check_window(window);
    if (error == ERROR_SUCCESS && (modifiers & ~tarnel::all_modifiers)) {
        error = ERROR_INVALID_PARAMETER;
    }
    if (error == ERROR_SUCCESS) {
        tarnel::ThreadHotKeys* const hot_keys = tarnel::ThreadHotKeys::current();
        if (!hot_keys) {
            return FALSE;
        }
        error = hot_keys->add(window, id, modifiers, key);
        hot_keys->serve(0); // what has come while it waited for answers
    }
    SetLastError(error);
    return error == ERROR_SUCCESS;
}

BOOL UnregisterHotKey(HWND window, int id) {
    tarnel::ThreadHotKeys* const hot_keys = tarnel::ThreadHotKeys::existing();
    if (!hot_keys || !hot_keys->remove(window, id)) {
        SetLastError(ERROR_HOTKEY_NOT_REGISTERED);
        return FALSE;
    }
    return TRUE;
}
