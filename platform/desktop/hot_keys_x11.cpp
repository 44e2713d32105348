#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"
#include "platform/desktop/hot_key.h"
#include "platform/desktop/key_grab_x11.h"
#include "platform/desktop/thread_hot_keys_x11.h"
#include "platform/messages/queue.h"

#include <sys/epoll.h>

#include <algorithm>

namespace tarnel {

thread_local constinit ThreadHotKeys* ThreadHotKeys::own_ = nullptr;

namespace {

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

} // namespace

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

namespace {

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
