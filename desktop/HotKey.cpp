#include "desktop/HotKey.h"

#include "platform/base/virtual_keys.h"
#include "platform/desktop/hot_key.h"

#include <algorithm>
#include <array>

namespace {

struct KeyName {
    UINT code;
    LPCSTR name;
};

constexpr auto key_names = std::to_array<KeyName>({
    {VK_TAB, "TAB"},       {VK_RETURN, "ENTER"},    {VK_PAUSE, "PAUSE"}, {VK_CAPITAL, "CAPSLOCK"},
    {VK_ESCAPE, "ESC"},    {VK_SPACE, "SPACE"},     {VK_END, "END"},     {VK_HOME, "HOME"},
    {VK_LEFT, "LEFT"},     {VK_UP, "UP"},           {VK_RIGHT, "RIGHT"}, {VK_DOWN, "DOWN"},
    {VK_INSERT, "INSERT"}, {VK_F1, "F1"},           {VK_F1 + 1, "F2"},   {VK_F1 + 2, "F3"},
    {VK_F1 + 3, "F4"},     {VK_F1 + 4, "F5"},       {VK_F1 + 5, "F6"},   {VK_F1 + 6, "F7"},
    {VK_F1 + 7, "F8"},     {VK_F1 + 8, "F9"},       {VK_F1 + 9, "F10"},  {VK_F1 + 10, "F11"},
    {VK_F1 + 11, "F12"},   {VK_NUMLOCK, "NUMLOCK"},
});

struct ModifierName {
    UINT modifier;
    LPCSTR name;
};

constexpr auto modifier_names = std::to_array<ModifierName>({
    {MOD_CONTROL, "CTRL + "},
    {MOD_SHIFT, "SHIFT + "},
    {MOD_ALT, "ALT + "},
});

struct ModifierPair {
    WORD of_control;
    WORD of_system;
};

constexpr auto modifier_pairs = std::to_array<ModifierPair>({
    {HOTKEYF_SHIFT, MOD_SHIFT},
    {HOTKEYF_CONTROL, MOD_CONTROL},
    {HOTKEYF_ALT, MOD_ALT},
    {HOTKEYF_EXT, MOD_WIN},
});

} // namespace

int CHotKey::operator==(const CHotKey& other) const {
    return m_wVirtualKeyCode == other.m_wVirtualKeyCode && m_wModifiers == other.m_wModifiers &&
           m_bEnabled == other.m_bEnabled;
}

CString CHotKey::ToString() const {
    if (*this == tarnel::empty_hot_key()) {
        return "None";
    }
    CString text = ModifiersToString();
    text += KeyCodeToString();
    return text;
}

CString CHotKey::KeyCodeToString() const {
    const auto named = std::ranges::find(key_names, UINT{m_wVirtualKeyCode}, &KeyName::code);
    if (named != key_names.end()) {
        return named->name;
    }
    const char character = static_cast<char>(m_wVirtualKeyCode);
    return {&character, 1};
}

CString CHotKey::ModifiersToString() const {
    CString text;
    for (const auto& [modifier, name] : modifier_names) {
        if (m_wModifiers & modifier) {
            text += name;
        }
    }
    return text;
}

WORD TranslateModifier(WORD modifiers, ETranslate direction) {
    const bool to_control = direction == TRANSLATE_MOD_TO_HOTKEYF;
    unsigned translated = 0;
    for (const auto& [of_control, of_system] : modifier_pairs) {
        if (modifiers & (to_control ? of_system : of_control)) {
            translated |= to_control ? of_control : of_system;
        }
    }
    return static_cast<WORD>(translated);
}
