#pragma once

#include "platform/base/types.h"

#include <string>

namespace tarnel {

struct ScriptFile {
    DWORD error; ///< 0, or the last error to set
    std::string text;
};

/// Reads the regular file at `path`. Of a file longer than any script it reads just so much that
/// the parser sees it.
ScriptFile read_script_file(const std::string& path);

} // namespace tarnel
