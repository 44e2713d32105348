#pragma once

#include "platform/base/types.h"

// Codes of keys, by what a key means and not where it lies. Letters and digits have the codes of
// their characters: 'A' to 'Z' and '0' to '9'.

constexpr UINT VK_LBUTTON = 0x01;
constexpr UINT VK_RBUTTON = 0x02;
constexpr UINT VK_CANCEL = 0x03;
constexpr UINT VK_MBUTTON = 0x04;
constexpr UINT VK_BACK = 0x08;
constexpr UINT VK_TAB = 0x09;
constexpr UINT VK_CLEAR = 0x0C;
constexpr UINT VK_RETURN = 0x0D;
constexpr UINT VK_SHIFT = 0x10;
constexpr UINT VK_CONTROL = 0x11;
constexpr UINT VK_MENU = 0x12; ///< Alt
constexpr UINT VK_PAUSE = 0x13;
constexpr UINT VK_CAPITAL = 0x14;
constexpr UINT VK_ESCAPE = 0x1B;
constexpr UINT VK_SPACE = 0x20;
constexpr UINT VK_PRIOR = 0x21;
constexpr UINT VK_NEXT = 0x22;
constexpr UINT VK_END = 0x23;
constexpr UINT VK_HOME = 0x24;
constexpr UINT VK_LEFT = 0x25;
constexpr UINT VK_UP = 0x26;
constexpr UINT VK_RIGHT = 0x27;
constexpr UINT VK_DOWN = 0x28;
constexpr UINT VK_SELECT = 0x29;
constexpr UINT VK_PRINT = 0x2A;
constexpr UINT VK_EXECUTE = 0x2B;
constexpr UINT VK_SNAPSHOT = 0x2C;
constexpr UINT VK_INSERT = 0x2D;
constexpr UINT VK_DELETE = 0x2E;
constexpr UINT VK_HELP = 0x2F;
constexpr UINT VK_LWIN = 0x5B;
constexpr UINT VK_RWIN = 0x5C;
constexpr UINT VK_APPS = 0x5D;
constexpr UINT VK_NUMPAD0 = 0x60; ///< to VK_NUMPAD0 + 9
constexpr UINT VK_MULTIPLY = 0x6A;
constexpr UINT VK_ADD = 0x6B;
constexpr UINT VK_SEPARATOR = 0x6C;
constexpr UINT VK_SUBTRACT = 0x6D;
constexpr UINT VK_DECIMAL = 0x6E;
constexpr UINT VK_DIVIDE = 0x6F;
constexpr UINT VK_F1 = 0x70; ///< to VK_F1 + 23
constexpr UINT VK_NUMLOCK = 0x90;
constexpr UINT VK_SCROLL = 0x91;
