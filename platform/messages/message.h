#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

// Messages between windows and threads. Each window belongs to the thread that made it, and its
// procedure runs on that thread alone; each thread has one queue, made at the first need. Posted
// messages are retrieved in the order of posting; a filter may overtake.

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; ///< GetTickCount() when it was posted
    POINT pt;   ///< not filled: there is no cursor here
};

static_assert(sizeof(MSG) == 48);

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_CREATE = 0x0001;
constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_MOVE = 0x0003;
constexpr UINT WM_SIZE = 0x0005;
constexpr UINT WM_ENABLE = 0x000A;
constexpr UINT WM_SETTEXT = 0x000C;
constexpr UINT WM_GETTEXT = 0x000D;
constexpr UINT WM_GETTEXTLENGTH = 0x000E;
constexpr UINT WM_PAINT = 0x000F; ///< to a dialog, when it is seen for the first time
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_SHOWWINDOW = 0x0018;
constexpr UINT WM_NEXTDLGCTL = 0x0028;
constexpr UINT WM_SETFONT = 0x0030;
constexpr UINT WM_NOTIFY = 0x004E;
constexpr UINT WM_NCCREATE = 0x0081;
constexpr UINT WM_NCDESTROY = 0x0082;
constexpr UINT WM_NCCALCSIZE = 0x0083;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_INITDIALOG = 0x0110;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_HOTKEY = 0x0312; ///< as of RegisterHotKey
constexpr UINT WM_USER = 0x0400;
constexpr UINT WM_APP = 0x8000;

constexpr UINT PM_NOREMOVE = 0;
constexpr UINT PM_REMOVE = 1;

/// Queues `message` for the window's thread, or with a null window for the calling thread, and
/// returns at once. FALSE and ERROR_INVALID_WINDOW_HANDLE when there is no such window, FALSE and
/// ERROR_NOT_ENOUGH_QUOTA while 10,000 messages are queued there.
TARNEL_PLATFORM_API BOOL PostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

/// Runs the window's procedure and returns its result: directly in the window's own thread, else
/// by having that thread run it in its next retrieval call or while it sends itself. The waiting
/// sender meanwhile runs what is sent to its own windows. 0 when there is no such window, and when
/// the window or its thread ends before it has run the message. Without time limit otherwise.
TARNEL_PLATFORM_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

/// Runs what was sent to the calling thread, then gives the first posted message that passes the
/// filter: of `window` and its children (null: any of the thread), numbered `first` to `last`
/// (both 0: any). With PM_REMOVE it leaves the queue. FALSE when there is none. WM_QUIT passes
/// every filter. For a window of another thread it looks into that thread's queue, so that a
/// worker can take back what it has posted before.
TARNEL_PLATFORM_API BOOL PeekMessageA(MSG* message, HWND window, UINT first, UINT last,
                                      UINT remove);

/// Waits for a message that passes the filter and removes it: 1, 0 for WM_QUIT, -1 on error.
/// `window` must be null or belong to the calling thread. A nested loop that meets WM_QUIT must
/// post it again.
TARNEL_PLATFORM_API BOOL GetMessageA(MSG* message, HWND window, UINT first, UINT last);

/// Runs the procedure of the message's window, which must belong to the calling thread; 0 when it
/// does not, or is gone.
TARNEL_PLATFORM_API LRESULT DispatchMessageA(const MSG* message);

/// Has the calling thread retrieve WM_QUIT, with `exit_code` as wParam, once no other posted
/// message is left for its filter.
TARNEL_PLATFORM_API void PostQuitMessage(int exit_code);

/// The number, 0xC000 to 0xFFFF, that goes with `name` in this process, in any case of letters;
/// 0 for an empty name, and when all numbers are in use.
TARNEL_PLATFORM_API UINT RegisterWindowMessageA(LPCSTR name);
