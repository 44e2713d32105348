#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnel {

/// One control of a dialog template. Position and size are in dialog units, relative to the
/// dialog's client area.
struct ControlTemplate {
    std::string class_name; ///< in the platform's own spelling, such as "Button"
    std::string text;
    DWORD style = 0;
    DWORD ex_style = 0;
    WORD id = 0; ///< 0xFFFF for what needs no identifier
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0; ///< of a drop-down list, with the list dropped
};

/// A dialog as a resource script describes it, in dialog units of its font.
struct DialogTemplate {
    std::string caption;
    std::string font;
    int font_size = 0; ///< in points, 0 without FONT
    DWORD style = 0;
    DWORD ex_style = 0;
    int x = 0;
    int y = 0;
    int width = 0; ///< of the client area
    int height = 0;
    std::vector<ControlTemplate> controls; ///< in template order, which is the tab order
};

/// Dialog template `id` of the calling thread's current resource handle, else of the first
/// extension library of the chain that has it; null when none has.
TARNEL_PLATFORM_API std::shared_ptr<const DialogTemplate> find_dialog(UINT id);

} // namespace tarnel
