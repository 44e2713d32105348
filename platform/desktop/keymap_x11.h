#pragma once

#include "platform/base/types.h"
#include "platform/desktop/x11_connection.h"

#include <optional>
#include <vector>

namespace tarnel {

/// A key on the keyboard with modifiers, as the X server names both.
struct KeyCombination {
    xcb_keycode_t code;
    std::uint16_t modifiers;

    friend bool operator==(const KeyCombination&, const KeyCombination&) = default;
};

/// What the keys of the keyboard stand for in its present layout. It does not follow changes: load
/// it again when the server tells of one.
class Keymap {
  public:
    /// False, and nothing changed, when the server does not answer.
    bool load(X11Connection& connection);

    /// The key VK_... with MOD_... ; none when the layout has no such key or modifier.
    std::optional<KeyCombination> combination(UINT key, UINT modifiers) const;

    /// Whether there are several layouts that a person switches between.
    bool has_groups() const { return has_groups_; }

    /// The key to be pressed for VK_... in the layout `group`, counted from 0, with no modifier
    /// held: a letter's or digit's wherever it carries it, any other where it is the first thing on
    /// it. 0 for none.
    xcb_keycode_t typed(UINT key, unsigned group) const;

    /// Num Lock and the like, which do not make a combination another one.
    std::uint16_t locks() const { return locks_; }

    /// What stands first on the key; 0 for nothing.
    xcb_keysym_t symbol(xcb_keycode_t code) const { return symbols_[row(code)]; }

    /// Keys that stand for nothing.
    std::vector<xcb_keycode_t> spare() const;

  private:
    std::size_t row(xcb_keycode_t code) const {
        return static_cast<std::size_t>(code - first_) * width_;
    }

    bool differ_in_groups() const;
    xcb_keycode_t find(xcb_keysym_t symbol, std::size_t column, std::size_t columns) const;
    xcb_keycode_t carrier(UINT key, std::size_t column) const;
    bool stands_for(xcb_keycode_t code, xcb_keysym_t symbol) const;
    std::uint16_t modifier_with(std::initializer_list<xcb_keysym_t> symbols) const;

    xcb_keycode_t first_ = 0;
    std::size_t width_ = 0;             ///< symbols a key
    std::vector<xcb_keysym_t> symbols_; ///< from the key `first_` on
    std::size_t modifier_width_ = 0;    ///< keys a modifier
    std::vector<xcb_keycode_t> modifier_keys_;
    std::uint16_t locks_ = 0;
    bool has_groups_ = false;
};

/// What a key VK_... stands for; 0 for none on a keyboard.
xcb_keysym_t symbol_of(UINT key);

} // namespace tarnel
