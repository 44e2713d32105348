#pragma once

#include <cstddef>
#include <cstdint>

// The system's type names at the widths of its 64-bit interfaces. `long` is 64 bits wide here, so
// an interface that says long or unsigned long uses LONG, DWORD or ULONG.

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = unsigned int;
using BOOL = int;
using WPARAM = std::uint64_t;
using LPARAM = std::int64_t;
using LRESULT = std::int64_t;
using INT_PTR = std::int64_t;
using LPVOID = void*;
using LPSTR = char*;
using LPCSTR = const char*;

using HANDLE = void*;
using HWND = struct HWND__*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;

/// Screen position in pixels.
struct POINT {
    LONG x;
    LONG y;
};

/// Right and bottom lie just outside.
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;

    friend bool operator==(const RECT&, const RECT&) = default;
};

/// The lower half of a message's parameter, unsigned.
template <typename Parameter>
constexpr WORD LOWORD(Parameter value) {
    return static_cast<WORD>(static_cast<std::uint64_t>(value) & 0xFFFF);
}

/// The half above it.
template <typename Parameter>
constexpr WORD HIWORD(Parameter value) {
    return static_cast<WORD>(static_cast<std::uint64_t>(value) >> 16 & 0xFFFF);
}

/// A parameter of two halves, of which the lower 16 bits count.
constexpr LPARAM MAKELPARAM(int low, int high) {
    return static_cast<LPARAM>(static_cast<std::uint32_t>(high) << 16 |
                               (static_cast<std::uint32_t>(low) & 0xFFFF));
}

constexpr WPARAM MAKEWPARAM(int low, int high) {
    return static_cast<WPARAM>(MAKELPARAM(low, high));
}

static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(BOOL) == 4);
static_assert(sizeof(WPARAM) == 8 && sizeof(LPARAM) == 8 && sizeof(HANDLE) == 8);
static_assert(sizeof(POINT) == 8 && sizeof(RECT) == 16);
