#pragma once

#include "core/export.h"
#include "platform/base/types.h"

// Windows of other programs, the topmost first. Letters count as they are.

/// The first top-level window whose class is `class_name`, or begins with it when `partial` is
/// nonzero; null when there is none.
TARNEL_API HWND GetWindowFromClass(LPCSTR class_name, int partial);

/// The same by the window's title.
TARNEL_API HWND GetWindowFromTitle(LPCSTR title, int partial);
