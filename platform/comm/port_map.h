#pragma once

#include "platform/base/export.h"
#include "platform/comm/port_names.h"

#include <string>
#include <vector>

namespace tarnel {

/// COM`number` means `path`.
struct MappedPort {
    unsigned number;
    std::string path;
};

/// What stands in `map`; nothing when it cannot be read.
TARNEL_PLATFORM_API std::vector<MappedPort> ports_in(PortMap map);

} // namespace tarnel
