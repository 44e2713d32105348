#pragma once

#include "platform/modules/rc_parser.h"
#include "platform/modules/rc_reader.h"

namespace tarnel {

/// Reads `ID DIALOG` or `ID DIALOGEX` up to its END; they are written alike here. A control has
/// the styles of its keyword, those given are added and those behind NOT taken out.
void read_dialog(ScriptReader& reader, ResourceScript& script);

} // namespace tarnel
