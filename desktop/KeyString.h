#pragma once

#include "core/export.h"
#include "platform/base/types.h"

#include <string>
#include <vector>

namespace tarnel {

/// Keys (VK_) that are typed one after the other while the modifiers are held.
struct KeyGroup {
    bool shift = false;
    bool control = false;
    bool alt = false;
    std::vector<UINT> keys;
};

constexpr int key_string_unclosed_brace = -1;
constexpr int key_string_unopened_group = -2;

/// Takes a key string apart: "+", "^" and "%" hold Shift, Ctrl and Alt for the next key or group,
/// "(...)" is a group, "{NAME}" a key by its name, "~" Return, and any other character the key that
/// has the character as its code. The result is 0, or what is wrong with the string; the groups
/// before that place are there all the same.
TARNEL_API int parse_key_string(LPCSTR text, std::vector<KeyGroup>& groups);

/// What stands in braces for a key, its character, or its code in hexadecimal: "F5", "A", "0x61".
TARNEL_API std::string key_name(UINT code);

} // namespace tarnel
