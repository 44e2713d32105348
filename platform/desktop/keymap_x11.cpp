#include "platform/desktop/keymap_x11.h"

#include "platform/base/virtual_keys.h"
#include "platform/desktop/hot_key.h"
#include "platform/desktop/key_input.h"

#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <span>

namespace tarnel {
namespace {

struct Symbol {
    UINT key;
    xcb_keysym_t symbol;
};

constexpr auto named_symbols = std::to_array<Symbol>({
    {VK_CANCEL, XK_Cancel},
    {VK_BACK, XK_BackSpace},
    {VK_TAB, XK_Tab},
    {VK_CLEAR, XK_Clear},
    {VK_RETURN, XK_Return},
    {VK_SHIFT, XK_Shift_L},
    {VK_CONTROL, XK_Control_L},
    {VK_MENU, XK_Alt_L},
    {VK_PAUSE, XK_Pause},
    {VK_CAPITAL, XK_Caps_Lock},
    {VK_ESCAPE, XK_Escape},
    {VK_SPACE, XK_space},
    {VK_PRIOR, XK_Prior},
    {VK_NEXT, XK_Next},
    {VK_END, XK_End},
    {VK_HOME, XK_Home},
    {VK_LEFT, XK_Left},
    {VK_UP, XK_Up},
    {VK_RIGHT, XK_Right},
    {VK_DOWN, XK_Down},
    {VK_SELECT, XK_Select},
    {VK_PRINT, XK_Print},
    {VK_EXECUTE, XK_Execute},
    {VK_SNAPSHOT, XK_Print},
    {VK_INSERT, XK_Insert},
    {VK_DELETE, XK_Delete},
    {VK_HELP, XK_Help},
    {VK_LWIN, XK_Super_L},
    {VK_RWIN, XK_Super_R},
    {VK_APPS, XK_Menu},
    {VK_MULTIPLY, XK_KP_Multiply},
    {VK_ADD, XK_KP_Add},
    {VK_SEPARATOR, XK_KP_Separator},
    {VK_SUBTRACT, XK_KP_Subtract},
    {VK_DECIMAL, XK_KP_Decimal},
    {VK_DIVIDE, XK_KP_Divide},
    {VK_NUMLOCK, XK_Num_Lock},
    {VK_SCROLL, XK_Scroll_Lock},
});

struct SymbolRange {
    UINT first;
    UINT last;
    xcb_keysym_t symbol; ///< of the first
};

constexpr auto symbol_ranges = std::to_array<SymbolRange>({
    {'0', '9', XK_0},
    {'A', 'Z', XK_a},
    {VK_NUMPAD0, VK_NUMPAD0 + 9, XK_KP_0},
    {VK_F1, VK_F1 + 23, XK_F1},
});

/// Scan codes count from the same key as codes of the X server, which keeps the first 8 free.
constexpr UINT first_scan_code = 8;

/// The first symbols of a key are those of the first layout, without and with Shift, and those of
/// the second one.
constexpr std::size_t group_width = 2;

bool is_character(UINT key) {
    return (key >= '0' && key <= '9') || (key >= 'A' && key <= 'Z');
}

} // namespace

xcb_keysym_t symbol_of(UINT key) {
    for (const auto& [first, last, symbol] : symbol_ranges) {
        if (key >= first && key <= last) {
            return symbol + (key - first);
        }
    }
    const auto named = std::ranges::find(named_symbols, key, &Symbol::key);
    return named == named_symbols.end() ? XCB_NO_SYMBOL : named->symbol;
}

bool Keymap::load(X11Connection& connection) {
    const auto& setup = *::xcb_get_setup(connection.get());
    const auto count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    const auto mapping_request =
        ::xcb_get_keyboard_mapping(connection.get(), setup.min_keycode, count);
    const auto modifier_request = ::xcb_get_modifier_mapping(connection.get());
    const auto mapping = connection.reply<xcb_get_keyboard_mapping_reply_t>(mapping_request);
    const auto modifiers = connection.reply<xcb_get_modifier_mapping_reply_t>(modifier_request);
    if (!mapping || !modifiers || mapping->keysyms_per_keycode == 0) {
        return false;
    }

    first_ = setup.min_keycode;
    width_ = mapping->keysyms_per_keycode;
    const std::span symbols(::xcb_get_keyboard_mapping_keysyms(mapping.get()), count * width_);
    symbols_.assign(symbols.begin(), symbols.end());
    has_groups_ = differ_in_groups();
    modifier_width_ = modifiers->keycodes_per_modifier;
    const std::span keys(::xcb_get_modifier_mapping_keycodes(modifiers.get()), 8 * modifier_width_);
    modifier_keys_.assign(keys.begin(), keys.end());
    locks_ = static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK | modifier_with({XK_Num_Lock}) |
                                        modifier_with({XK_Scroll_Lock}));
    return true;
}

std::optional<KeyCombination> Keymap::combination(UINT key, UINT modifiers) const {
    const struct {
        UINT asked;
        std::uint16_t found;
    } all[] = {
        {MOD_SHIFT, XCB_MOD_MASK_SHIFT},
        {MOD_CONTROL, XCB_MOD_MASK_CONTROL},
        {MOD_ALT, modifier_with({XK_Alt_L, XK_Alt_R})},
        {MOD_WIN, modifier_with({XK_Super_L, XK_Super_R})},
    };

    KeyCombination combination{carrier(key, 0), 0};
    bool complete = combination.code != 0; // which would mean every key
    for (const auto& [asked, found] : all) {
        if (modifiers & asked) {
            complete = complete && found != 0;
            combination.modifiers |= found;
        }
    }
    return complete ? std::optional(combination) : std::nullopt;
}

xcb_keycode_t Keymap::typed(UINT key, unsigned group) const {
    const std::size_t column = has_groups_ ? group * group_width : 0;
    if (is_character(key)) {
        return carrier(key, column);
    }
    const xcb_keycode_t found = find(symbol_of(key), column, 1);
    return found ? found : find(symbol_of(key), 0, 1);
}

/// In a layout without this letter, or behind the second one, the key that has it on most
/// keyboards.
xcb_keycode_t Keymap::carrier(UINT key, std::size_t column) const {
    const std::size_t columns = has_groups_ ? group_width : width_;
    const xcb_keycode_t found =
        column < 2 * group_width ? find(symbol_of(key), column, columns) : xcb_keycode_t{0};
    if (found || !is_character(key)) {
        return found;
    }
    const auto usual =
        static_cast<xcb_keycode_t>(MapVirtualKeyA(key, MAPVK_VK_TO_VSC) + first_scan_code);
    const bool used =
        usual >= first_ && row(usual) < symbols_.size() && symbol(usual) != XCB_NO_SYMBOL;
    return used ? usual : xcb_keycode_t{0};
}

/// A single layout is repeated in the columns of the second one.
bool Keymap::differ_in_groups() const {
    for (std::size_t at = 0; width_ > group_width && at < symbols_.size(); at += width_) {
        const xcb_keysym_t second = symbols_[at + group_width];
        if (second != XCB_NO_SYMBOL && second != symbols_[at]) {
            return true;
        }
    }
    return false;
}

/// The key that has the symbol foremost, among `columns` of them on each; 0 for none.
xcb_keycode_t Keymap::find(xcb_keysym_t symbol, std::size_t column, std::size_t columns) const {
    const std::size_t end = std::min(column + columns, width_);
    for (; symbol != XCB_NO_SYMBOL && column < end; ++column) {
        for (std::size_t at = column; at < symbols_.size(); at += width_) {
            if (symbols_[at] == symbol) {
                return static_cast<xcb_keycode_t>(first_ + at / width_);
            }
        }
    }
    return 0;
}

std::vector<xcb_keycode_t> Keymap::spare() const {
    std::vector<xcb_keycode_t> codes;
    for (std::size_t at = 0; at < symbols_.size(); at += width_) {
        const std::span symbols = std::span(symbols_).subspan(at, width_);
        if (std::ranges::count(symbols, XCB_NO_SYMBOL) == std::ssize(symbols)) {
            codes.push_back(static_cast<xcb_keycode_t>(first_ + at / width_));
        }
    }
    return codes;
}

bool Keymap::stands_for(xcb_keycode_t code, xcb_keysym_t symbol) const {
    if (code < first_) {
        return false;
    }
    const std::span symbols = std::span(symbols_).subspan(row(code), width_);
    return std::ranges::find(symbols, symbol) != symbols.end();
}

/// The modifier that one of the keys with these symbols switches; 0 for none.
std::uint16_t Keymap::modifier_with(std::initializer_list<xcb_keysym_t> symbols) const {
    for (const xcb_keysym_t symbol : symbols) {
        for (std::size_t at = 0; at < modifier_keys_.size(); ++at) {
            if (stands_for(modifier_keys_[at], symbol)) {
                return static_cast<std::uint16_t>(1U << at / modifier_width_);
            }
        }
    }
    return 0;
}

} // namespace tarnel
