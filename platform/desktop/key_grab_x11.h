#pragma once

#include "platform/desktop/keymap_x11.h"

namespace tarnel {

/// Has the server report the key to this connection, with exactly these modifiers and whichever of
/// `locks`. False, and nothing is grabbed, when somebody else has any of it.
bool grab_key(X11Connection& connection, const KeyCombination& combination, unsigned locks);

/// Lets go of it, without waiting; of no key (0) nothing.
void ungrab_key(X11Connection& connection, const KeyCombination& combination, unsigned locks);

} // namespace tarnel
