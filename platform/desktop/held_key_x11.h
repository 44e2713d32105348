#pragma once

#include "platform/desktop/x11_connection.h"

namespace tarnel {

/// The hot key that is held down: until it is released its grab has the server send every key to
/// the connection that made it, what is typed in a person's stead as well. The keyboard can be lent
/// to the others meanwhile; then the release is not reported as usual, and looked for elsewhere.
class HeldKey {
  public:
    explicit operator bool() const { return code_ != 0; }

    /// A key has been pressed; false when it was held before and repeats itself.
    bool press(const xcb_key_press_event_t& event);

    void release(const xcb_key_release_event_t& event);

    /// Waits until the keys go to whichever window has the keyboard. A server that does not tell of
    /// releases beside grabs keeps them.
    void lend_keyboard(X11Connection& connection);

    /// Perhaps the release of the key while the keyboard was lent.
    void release_unseen(const xcb_ge_generic_event_t& event, X11Connection& connection);

  private:
    void forget(X11Connection& connection);

    xcb_keycode_t code_ = 0;
    bool lent_ = false;
    xcb_keycode_t released_ = 0; ///< the last key that was, and when
    xcb_timestamp_t released_at_ = 0;
};

} // namespace tarnel
