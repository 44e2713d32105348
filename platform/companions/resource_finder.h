#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <string>
#include <vector>

namespace tarnel {

/// Where the texts and dialogs of a module come from.
struct LanguageChoice {
    std::vector<std::string> wanted; ///< the first first; none: what is built in
    std::string folder;              ///< that of the languages' folders; "" when there is none
    std::string script;              ///< that serves; "": what is built in
};

/// As the environment has it now. An empty name is the module's own.
TARNEL_PLATFORM_API LanguageChoice language_choice(HINSTANCE module, const std::string& name = {});

/// The work of lmLocaleManagerBase::find_resource_dll, where it is told.
bool find_resource_script(HINSTANCE module, const std::string& name, std::string& path);

} // namespace tarnel
