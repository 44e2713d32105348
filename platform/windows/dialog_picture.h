#pragma once

#include "platform/base/export.h"
#include "platform/windows/presenter.h"

#include <optional>

// Dialogs drawn without a screen, by the program that shows them on one. Each call waits for it.

namespace tarnel {

/// Draws the dialog, as wide and high as its client area, into the PNG file `path`; false when that
/// cannot be.
TARNEL_PLATFORM_API bool draw_dialog(const DialogView& dialog, const std::string& path);

/// The controls whose texts do not fit into them; nothing when nobody can tell.
TARNEL_PLATFORM_API std::optional<std::vector<HWND>> clipped_controls(const DialogView& dialog);

} // namespace tarnel
