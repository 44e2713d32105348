#include "tools/doctor.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

// Programs that take a serial port for something else than it is.

namespace {

constexpr const char* modem_manager = "ModemManager";
constexpr const char* braille = "brltty";

bool is_running(const std::string& program) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        std::ifstream file(entry->path() / "comm");
        std::string name;
        if (std::getline(file, name) && name == program) {
            return true;
        }
    }
    return false;
}

/// Has ModemManager pass over converters of this kind.
std::string rule_for(const tarnel::UsbIdentity& usb) {
    return fmt::format(
        R"(echo 'ACTION!="remove", SUBSYSTEM=="usb", ATTR{{idVendor}}=="{}", )"
        R"(ATTR{{idProduct}}=="{}", ENV{{ID_MM_DEVICE_IGNORE}}="1"' )"
        "| sudo tee -a /etc/udev/rules.d/77-measuring.rules; sudo udevadm control --reload; "
        "plug it in again",
        usb.vendor_id, usb.product_id);
}

} // namespace

void look_for_intruders(const std::vector<tarnel::PortInfo>& ports, Diagnosis& diagnosis) {
    if (is_running(modem_manager)) {
        diagnosis.add(Level::warning,
                      "ModemManager is running: it opens a port that appears and writes to it, to "
                      "find a modem.",
                      "sudo systemctl disable --now ModemManager");
        const auto usb = std::ranges::find_if(
            ports, [](const tarnel::PortInfo& port) { return !port.usb.vendor_id.empty(); });
        if (usb != ports.end()) {
            diagnosis.findings.back().cure += ", or for this converter: " + rule_for(usb->usb);
        }
    }
    if (is_running(braille)) {
        diagnosis.add(Level::warning,
                      "brltty is running: it takes some USB converters for Braille displays.",
                      "sudo apt-get remove brltty");
    }
}
