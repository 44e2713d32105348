#include "platform/desktop/hot_key.h"
#include "platform/desktop/key_grab_x11.h"
#include "platform/desktop/thread_hot_keys_x11.h"
#include "platform/messages/message.h"

#include <algorithm>

// What the server tells of the hot keys of a thread.

namespace tarnel {

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
    case XCB_KEY_PRESS: {
        const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
        if (held_.press(press)) {
            tell(press);
        }
        break;
    }
    case XCB_KEY_RELEASE:
        held_.release(reinterpret_cast<const xcb_key_release_event_t&>(event));
        break;
    case XCB_GE_GENERIC:
        held_.release_unseen(reinterpret_cast<const xcb_ge_generic_event_t&>(event), *connection_);
        break;
    case XCB_MAPPING_NOTIFY:
        keymap_changed_ = true;
        break;
    default:
        break;
    }
}

void ThreadHotKeys::tell(const xcb_key_press_event_t& event) {
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

void ThreadHotKeys::lend_keyboard() {
    if (held_ && connection_->is_ready()) {
        held_.lend_keyboard(*connection_);
        take_events(); // what has come while it waited for answers
    }
}

void lend_keyboard() {
    if (ThreadHotKeys* const hot_keys = ThreadHotKeys::existing()) {
        hot_keys->lend_keyboard();
    }
}

} // namespace tarnel
