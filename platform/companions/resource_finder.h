#pragma once

#include "platform/base/types.h"

#include <string>

namespace tarnel {

/// The work of lmLocaleManagerBase::find_resource_dll, where it is told.
bool find_resource_script(HINSTANCE module, const std::string& name, std::string& path);

} // namespace tarnel
