#pragma once

#include "core/export.h"
#include "platform/companions/resource_finder.h"

namespace tarnel {

/// Where the library's dialogs and texts come from, as the environment has it now.
TARNEL_API LanguageChoice library_language();

} // namespace tarnel
