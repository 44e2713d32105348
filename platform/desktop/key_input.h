#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <cstdint>

// Keys pressed in a person's stead, for whichever window has the keyboard.

struct KEYBDINPUT {
    WORD wVk;
    WORD wScan;
    DWORD dwFlags; ///< 0 presses the key, KEYEVENTF_KEYUP releases it
    DWORD time;
    std::uint64_t dwExtraInfo;
};

struct INPUT {
    DWORD type; ///< INPUT_KEYBOARD

    union {
        KEYBDINPUT ki;
        BYTE largest[32];
    };
};

static_assert(sizeof(KEYBDINPUT) == 24 && sizeof(INPUT) == 40);

constexpr DWORD INPUT_KEYBOARD = 1;
constexpr DWORD KEYEVENTF_KEYUP = 0x0002;
constexpr UINT MAPVK_VK_TO_VSC = 0;

/// Types `count` records of `size` bytes each, no other program's keys between them; how many were
/// typed. A key that the layout lacks is lent a place on the keyboard until the process ends; what
/// is no key of a keyboard is passed over. What is pressed and not released here stays pressed
/// until a later call, or the end of the process, releases it. Keys that a person holds count as
/// they do for the person's own. While a hot key of another thread is held, everything goes to that
/// thread, and is lost. 0 with the last error without an X server.
TARNEL_PLATFORM_API UINT SendInput(UINT count, const INPUT* inputs, int size);

/// The scan code of a key (VK_), 0 for none; `type` is MAPVK_VK_TO_VSC.
TARNEL_PLATFORM_API UINT MapVirtualKeyA(UINT code, UINT type);
