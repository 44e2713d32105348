#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

namespace tarnel {

/// Handles one message of the window made with `context`; runs on the window's thread. An exception
/// passes through the call that ran it, but none may leave WM_DESTROY and WM_NCDESTROY.
using WindowProcedure = LRESULT (*)(void* context, HWND window, UINT message, WPARAM wparam,
                                    LPARAM lparam);

/// Makes a window that exists for its messages alone, owned by the calling thread; no message is
/// sent for it. `parent` must be null or a window of the same thread. Null with the last error
/// on failure. A window that is left when its thread ends vanishes without a message; `abandon`,
/// unless null, is then called with the context.
TARNEL_PLATFORM_API HWND create_window(WindowProcedure procedure, void* context,
                                       HWND parent = nullptr,
                                       void (*abandon)(void* context) = nullptr);

/// The context of a window of the calling thread that was made with `procedure`; null for others.
void* own_window_context(HWND window, WindowProcedure procedure);

} // namespace tarnel

TARNEL_PLATFORM_API BOOL IsWindow(HWND window);

/// Sends WM_DESTROY to the window, destroys its children, and sends WM_NCDESTROY; what is posted
/// for it vanishes, what is being sent to it from other threads returns 0. Only on the window's
/// own thread: FALSE and ERROR_ACCESS_DENIED elsewhere.
TARNEL_PLATFORM_API BOOL DestroyWindow(HWND window);
