#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <string_view>

// What a person does, as a presenter brings it: on the thread of the windows concerned, inside a
// message of that thread. Where the state does not allow it (any more), nothing happens: the window
// is gone, hidden or disabled, or its dialog is.

namespace tarnel {

/// Sees a dialog for the first time, which gets WM_PAINT then.
TARNEL_PLATFORM_API void user_sees(HWND dialog);

/// Presses a button, or toggles a check box; the focus goes there.
TARNEL_PLATFORM_API void user_clicks(HWND button);

/// Chooses the entry at `position` of a drop-down list.
TARNEL_PLATFORM_API void user_chooses(HWND list, int position);

/// Changes the text of an edit box to `text`.
TARNEL_PLATFORM_API void user_types(HWND edit, std::string_view text);

/// Presses the arrows of an up-down control: `steps` upwards, or downwards when negative.
TARNEL_PLATFORM_API void user_steps(HWND up_down, int steps);

/// Moves the focus to a control.
TARNEL_PLATFORM_API void user_focuses(HWND control);

/// Presses a key (VK_) in the dialog; the control with the focus gets it.
TARNEL_PLATFORM_API void user_presses(HWND dialog, UINT key);

/// Closes a dialog by its frame, or a message box.
TARNEL_PLATFORM_API void user_closes(HWND window);

/// Answers a message box with one of its buttons (IDOK, ...).
TARNEL_PLATFORM_API void user_answers(HWND box, int button);

} // namespace tarnel
