#include "platform/desktop/held_key_x11.h"

#include <xcb/xinput.h>

namespace tarnel {
namespace {

/// Whether there is the version that tells of keys also while somebody else has grabbed them.
bool tells_of_releases(X11Connection& connection) {
    const auto* const extension = ::xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (!extension || !extension->present) {
        return false;
    }
    const auto version = connection.reply<xcb_input_xi_query_version_reply_t>(
        ::xcb_input_xi_query_version(connection.get(), 2, 2));
    return version && (version->major_version > 2 || version->minor_version >= 1);
}

void have_releases_told(X11Connection& connection, bool told) {
    const struct {
        xcb_input_event_mask_t header;
        std::uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           told ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0U};

    ::xcb_input_xi_select_events(connection.get(), connection.root(), 1, &mask.header);
    connection.flush();
}

bool is_down(xcb_keycode_t code, X11Connection& connection) {
    const auto keys =
        connection.reply<xcb_query_keymap_reply_t>(::xcb_query_keymap(connection.get()));
    return keys && (keys->keys[code / 8] & 1 << code % 8) != 0;
}

} // namespace

bool HeldKey::press(const xcb_key_press_event_t& event) {
    const bool repeats = (lent_ && event.detail == code_) ||
                         (event.detail == released_ && event.time == released_at_);
    if (code_ == 0) {
        code_ = event.detail;
    }
    return !repeats;
}

void HeldKey::release(const xcb_key_release_event_t& event) {
    released_ = event.detail;
    released_at_ = event.time;
    if (event.detail == code_ && !lent_) {
        code_ = 0;
    }
}

void HeldKey::lend_keyboard(X11Connection& connection) {
    if (!lent_ && !tells_of_releases(connection)) {
        return;
    }
    if (!lent_) {
        have_releases_told(connection, true);
        lent_ = true;
    }
    ::xcb_ungrab_keyboard(connection.get(), XCB_CURRENT_TIME);
    if (!is_down(code_, connection)) {
        forget(connection);
    }
}

void HeldKey::release_unseen(const xcb_ge_generic_event_t& event, X11Connection& connection) {
    const auto& release = reinterpret_cast<const xcb_input_raw_key_release_event_t&>(event);
    if (lent_ && release.event_type == XCB_INPUT_RAW_KEY_RELEASE && release.detail == code_) {
        forget(connection);
    }
}

void HeldKey::forget(X11Connection& connection) {
    have_releases_told(connection, false);
    lent_ = false;
    code_ = 0;
}

} // namespace tarnel
