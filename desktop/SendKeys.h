#pragma once

#include "core/export.h"
#include "platform/base/types.h"

// Keys typed into whichever window has the keyboard, as a person would. Nothing here waits for what
// the window makes of them. Without an X server nothing is typed. When a call returns, nothing that
// it has pressed is held.
//
// A Shift, Ctrl or Alt that a person holds meanwhile counts, as for the person's own keys: who
// types in answer to a hot key chooses one without modifiers, or waits until they are let go. The
// hot key itself may be held, unless another thread has registered it: what is typed is then lost.

/// Presses and releases one key (VK_).
TARNEL_API void SendKey(UINT virtual_key_code);

/// Types a string of keys: "A" to "Z" and "0" to "9" are the keys of these letters and digits, "~"
/// is Return, "{F5}" a key by its name. "+", "^" and "%" hold Shift, Ctrl and Alt for the next key,
/// or for all keys of the next group: "+(AB)". 0; or -1 when a "{" is not closed, -2 when a ")" has
/// no "(": then the keys before that place have been typed.
TARNEL_API int SendKeyString(LPCSTR keys);
