#pragma once

#include "platform/desktop/held_key_x11.h"
#include "platform/desktop/keymap_x11.h"
#include "platform/threads/watch.h"

#include <list>

namespace tarnel {

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

    /// Has keys go to whichever window has the keyboard, also while a hot key is held.
    void lend_keyboard();

    ~ThreadHotKeys() { stop(); } // before the connection is closed

  private:
    bool open();
    void end();
    void lose_all();

    bool is_taken(const KeyCombination& combination) const;

    void take_events();
    void handle_event(const xcb_generic_event_t& event);
    void tell(const xcb_key_press_event_t& event);
    void follow_keymap();
    bool still_fits(const HotKey& hot_key, const Keymap& keymap) const;

    std::unique_ptr<X11Connection> connection_;
    Keymap keymap_;
    bool keymap_changed_ = false;
    std::list<HotKey> hot_keys_;
    HeldKey held_;

    static thread_local constinit ThreadHotKeys* own_;
};

/// Has what the calling thread types reach whichever window has the keyboard, also while one of its
/// hot keys is held.
void lend_keyboard();

} // namespace tarnel
