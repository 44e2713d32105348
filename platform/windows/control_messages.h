#pragma once

#include "platform/base/types.h"
#include "platform/base/virtual_keys.h"

#include <cstdint>

// The messages of the standard controls and what they notify with. A control runs them on its own
// thread; sent from another thread they wait for it.

// Buttons and check boxes.
constexpr UINT BM_GETCHECK = 0xF0;
constexpr UINT BM_SETCHECK = 0xF1; ///< wParam a state; notifies nobody
constexpr UINT BM_CLICK = 0xF5;
constexpr int BST_UNCHECKED = 0;
constexpr int BST_CHECKED = 1;
constexpr int BST_INDETERMINATE = 2;
constexpr WORD BN_CLICKED = 0;

// Edit boxes.
constexpr UINT EM_GETSEL =
    0xB0; ///< low word the first selected character, high word behind the last
constexpr UINT EM_SETSEL = 0xB1; ///< wParam from, lParam to (-1: the end), in bytes
constexpr WORD EN_CHANGE = 0x300;

// Drop-down lists. Positions count from 0; CB_ERR where there is no such entry.
constexpr UINT CB_ADDSTRING = 0x143; ///< lParam the text; the new position
constexpr UINT CB_DELETESTRING = 0x144;
constexpr UINT CB_GETCOUNT = 0x146;
constexpr UINT CB_GETCURSEL = 0x147;
constexpr UINT CB_GETLBTEXT = 0x148; ///< lParam a buffer for the text and its zero; the length
constexpr UINT CB_GETLBTEXTLEN = 0x149;
constexpr UINT CB_INSERTSTRING = 0x14A; ///< wParam the position, -1 for the end
constexpr UINT CB_RESETCONTENT = 0x14B;
constexpr UINT CB_FINDSTRING = 0x14C;   ///< the first entry after wParam that begins with lParam
constexpr UINT CB_SELECTSTRING = 0x14D; ///< the same, and selects it
constexpr UINT CB_SETCURSEL = 0x14E;
constexpr UINT CB_FINDSTRINGEXACT = 0x158;
constexpr int CB_ERR = -1;
constexpr WORD CBN_SELCHANGE = 1;

// Progress bars.
constexpr UINT PBM_SETRANGE = 0x401; ///< lParam low word the minimum, high word the maximum
constexpr UINT PBM_SETPOS = 0x402;   ///< the old position
constexpr UINT PBM_SETRANGE32 = 0x406;
constexpr UINT PBM_GETPOS = 0x408;

// Up-down controls.
constexpr UINT UDM_SETRANGE = 0x465; ///< lParam low word the maximum, high word the minimum
constexpr UINT UDM_GETRANGE = 0x466;
constexpr UINT UDM_SETPOS = 0x467;
constexpr UINT UDM_GETPOS = 0x468; ///< high word nonzero when the buddy's text is no position
constexpr UINT UDM_SETBUDDY = 0x469;
constexpr UINT UDM_SETRANGE32 = 0x46F; ///< wParam the minimum, lParam the maximum
constexpr UINT UDM_SETPOS32 = 0x471;
constexpr UINT UDM_GETPOS32 = 0x472; ///< lParam null or a BOOL: nonzero as above

/// Comes by WM_NOTIFY, as NMUPDOWN, before a step; a nonzero answer keeps the position.
constexpr UINT UDN_DELTAPOS = static_cast<UINT>(-722);

/// What every WM_NOTIFY points to in its lParam, or begins with.
struct NMHDR {
    HWND hwndFrom;
    std::uint64_t idFrom;
    UINT code;
};

struct NMUPDOWN {
    NMHDR hdr;
    int iPos;   ///< before the step
    int iDelta; ///< to be added
};

static_assert(sizeof(NMHDR) == 24 && sizeof(NMUPDOWN) == 32);
