#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

// The top-level windows on the desktop, other programs' too. Their handles are good for the calls
// of this header alone.

using WNDENUMPROC = BOOL (*)(HWND window, LPARAM context);

/// Calls `visit` with each top-level window, the topmost first, until it returns FALSE. FALSE when
/// it did, or, with the last error, without an X server.
TARNEL_PLATFORM_API BOOL EnumWindows(WNDENUMPROC visit, LPARAM context);

/// The window's class (what its program calls its kind of windows), at most `size` - 1 bytes of it
/// and a zero. The number of bytes; 0, and an empty text, when the window is gone or has none.
TARNEL_PLATFORM_API int GetClassNameA(HWND window, LPSTR text, int size);

/// The same with the window's title, in UTF-8.
TARNEL_PLATFORM_API int GetWindowTextA(HWND window, LPSTR text, int size);
