#pragma once

#include "platform/base/export.h"

#include <string>
#include <vector>

namespace tarnel {

/// What a USB device says about itself; all empty for a port that is none.
struct UsbIdentity {
    std::string vendor_id; ///< four hexadecimal digits
    std::string product_id;
    std::string maker;
    std::string product;
    std::string serial;
    std::string channel; ///< which port of the device it is: interface, and port of the interface
};

struct PortInfo {
    std::string device;  ///< "/dev/ttyUSB0"
    std::string by_id;   ///< link named after maker, product and serial number; "" when none
    std::string by_path; ///< link named after the socket that it is plugged into; "" when none
    std::string driver;
    UsbIdentity usb;
};

/// Where the system shows its devices.
struct SystemRoots {
    std::string sysfs = "/sys";
    std::string devices = "/dev";
};

/// Every serial port with hardware behind it, sorted by number. Opens none of them.
TARNEL_PLATFORM_API std::vector<PortInfo> list_ports(const SystemRoots& roots = {});

/// One line that tells a USB port from every other: maker, product, serial number, numbers and
/// channel. "" for a device that is no USB port, or is not there.
TARNEL_PLATFORM_API std::string port_identity(const std::string& device,
                                              const std::string& sysfs = "/sys");

} // namespace tarnel
