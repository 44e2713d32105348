#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

// Serial ports have names as "COM3:". What such a name means is asked in this order: the
// environment variable TARNEL_COM3, the user's map, the machine's map; else it is /dev/ttyS2.

namespace tarnel {

enum class PortMap { user, machine };

/// The number in "COM3", "COM3:" or "\\.\COM3", in any case; nothing when `name` is no such name.
TARNEL_PLATFORM_API std::optional<unsigned> com_number(std::string_view name);

/// The device that `name` means, whether it is there or not. A name with a slash is taken as it
/// is; one that is neither such a path nor a COM name gives nothing.
TARNEL_PLATFORM_API std::optional<std::string> resolve_port(std::string_view name);

/// The numbers for which somebody has named a device, each with the device that is in force.
TARNEL_PLATFORM_API std::map<unsigned, std::string> mapped_ports();

/// Lets COM`number` mean `path`, in place of what `map` said of either before. 0 or an error:
/// ERROR_ACCESS_DENIED when the caller may not change this map.
TARNEL_PLATFORM_API DWORD map_port(unsigned number, const std::string& path, PortMap map);

/// Takes COM`number` out of `map`. 0 or an error: ERROR_FILE_NOT_FOUND when it was not there.
TARNEL_PLATFORM_API DWORD unmap_port(unsigned number, PortMap map);

} // namespace tarnel
