#pragma once

#include "platform/base/types.h"
#include "platform/modules/rc_reader.h"

#include <string_view>

namespace tarnel {

/// Takes a number or the name of a known style or identifier; `what` names it in the fault.
DWORD expect_constant(ScriptReader& reader, std::string_view what);

/// Takes a style: constants joined by `|`, parentheses where one likes. From the left to the right
/// each one is added to `style`, or with NOT before it taken out.
DWORD expect_style(ScriptReader& reader, DWORD style);

/// Takes a control's identifier; -1 becomes 0xFFFF.
WORD expect_control_id(ScriptReader& reader);

} // namespace tarnel
