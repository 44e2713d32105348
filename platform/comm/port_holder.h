#pragma once

#include "platform/base/export.h"

#include <string>
#include <vector>

namespace tarnel {

struct PortHolder {
    int process;
    std::string program; ///< up to 15 characters; others than printable ASCII are shown as '?'
};

/// Which processes have `device` open, under this or any other name. Other users' processes are
/// seen by root alone.
TARNEL_PLATFORM_API std::vector<PortHolder> port_holders(const std::string& device);

} // namespace tarnel
