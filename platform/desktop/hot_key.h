#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

// Key combinations that are reported whichever program has the keyboard.

constexpr UINT MOD_ALT = 0x0001;
constexpr UINT MOD_CONTROL = 0x0002;
constexpr UINT MOD_SHIFT = 0x0004;
constexpr UINT MOD_WIN = 0x0008;

/// The same as a control for hot keys has them.
constexpr WORD HOTKEYF_SHIFT = 0x01;
constexpr WORD HOTKEYF_CONTROL = 0x02;
constexpr WORD HOTKEYF_ALT = 0x04;
constexpr WORD HOTKEYF_EXT = 0x08;

/// Has `window`, one of the calling thread's, told by WM_HOTKEY whenever the key (VK_) is pressed
/// with exactly these modifiers: once a press, however long it is held. WM_HOTKEY comes with the id
/// in wparam; in lparam the modifiers are the low word, the key the high one. The combination is
/// free again when the window or the process is gone. FALSE, with the last error:
/// ERROR_HOTKEY_ALREADY_REGISTERED when anybody has it, ERROR_INVALID_PARAMETER when the keyboard
/// has no such key, ERROR_WINDOW_OF_OTHER_THREAD, or ERROR_NOT_SUPPORTED without an X server.
TARNEL_PLATFORM_API BOOL RegisterHotKey(HWND window, int id, UINT modifiers, UINT key);

/// Frees what was registered for that window under `id`; ERROR_HOTKEY_NOT_REGISTERED when there is
/// nothing.
TARNEL_PLATFORM_API BOOL UnregisterHotKey(HWND window, int id);
