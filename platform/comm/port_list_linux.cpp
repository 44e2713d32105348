#include "platform/comm/folder.h"
#include "platform/comm/port_list.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace tarnel {

namespace {

using std::filesystem::path;

/// What `link` leads to in the end; empty when it leads nowhere.
path target(const path& link) {
    std::error_code error;
    return std::filesystem::canonical(link, error);
}

/// The driver of the hardware at `place`. Between an on-board port and its driver the kernel has
/// (since 6.5) two levels of its own.
std::string driver_of(path place) {
    while (target(place / "subsystem").filename() == "serial-base") {
        place = place.parent_path();
    }
    return target(place / "driver").filename();
}

/// The device above the hardware of a port.
UsbIdentity usb_identity(path place) {
    const std::string port = first_line(place / "port_number");
    std::string channel;
    for (; place.has_relative_path(); place = place.parent_path()) {
        if (channel.empty()) {
            channel = first_line(place / "bInterfaceNumber");
        }
        const std::string vendor_id = first_line(place / "idVendor");
        if (!vendor_id.empty()) {
            return {vendor_id,
                    first_line(place / "idProduct"),
                    first_line(place / "manufacturer"),
                    first_line(place / "product"),
                    first_line(place / "serial"),
                    channel.append(port.empty() ? "" : ".").append(port)};
        }
    }
    return {};
}

/// The first link in `folder` that leads to `device`.
std::string link_to(const path& device, const path& folder) {
    for (const std::string& name : names_in(folder)) {
        if (target(folder / name) == target(device)) {
            return folder / name;
        }
    }
    return {};
}

/// A kernel makes places for on-board ports in advance; those without hardware have the type 0.
bool is_placeholder(const path& entry) {
    return first_line(entry / "type") == "0";
}

} // namespace

std::vector<PortInfo> list_ports(const SystemRoots& roots) {
    std::vector<PortInfo> ports;
    const path devices = roots.devices;
    const path entries = path(roots.sysfs) / "class/tty";
    for (const std::string& name : names_in(entries)) {
        // Consoles and pseudo terminals have no hardware behind them.
        const path hardware = target(entries / name / "device");
        const std::string driver = hardware.empty() ? "" : driver_of(hardware);
        const path device = devices / name;
        if (driver.empty() || is_placeholder(entries / name) || target(device).empty()) {
            continue;
        }
        ports.push_back({device, link_to(device, devices / "serial/by-id"),
                         link_to(device, devices / "serial/by-path"), driver,
                         usb_identity(hardware)});
    }
    std::sort(ports.begin(), ports.end(), [](const PortInfo& left, const PortInfo& right) {
        return ::strverscmp(left.device.c_str(), right.device.c_str()) < 0;
    });
    return ports;
}

std::string port_identity(const std::string& device, const std::string& sysfs) {
    struct stat status;
    if (::stat(device.c_str(), &status) < 0 || !S_ISCHR(status.st_mode)) {
        return {};
    }
    // By number, for in a container the device may have any name.
    const std::string number =
        std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
    const path hardware = target(path(sysfs) / "dev/char" / number / "device");
    const UsbIdentity usb = usb_identity(hardware);
    if (usb.vendor_id.empty()) {
        return {};
    }
    return usb.maker + " " + usb.product + " " + usb.serial + " (" + usb.vendor_id + ":" +
           usb.product_id + ", channel " + usb.channel + ")";
}

} // namespace tarnel
