#include "platform/base/last_error.h"
#include "platform/comm/port_holder.h"
#include "platform/comm/port_list.h"
#include "platform/comm/port_names.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

// `tarnel ports` lists the serial ports and gives them COM names.

namespace {

constexpr int exit_bad_argument = 2;
constexpr int exit_no_rights = 3;
constexpr int exit_not_mapped = 4;
constexpr int exit_not_stored = 5;

constexpr const char* exit_codes =
    "Exit codes: 0 done, 2 bad name or path, 3 no right to change the "
    "map, 4 was not mapped, 5 could not be stored";

struct MapArguments {
    std::string name;
    std::string path;
    bool machine = false;

    tarnel::PortMap map() const {
        return machine ? tarnel::PortMap::machine : tarnel::PortMap::user;
    }
};

/// The device behind a link, as far as there is one.
std::string real_device(const std::string& path) {
    std::error_code error;
    const auto device = std::filesystem::canonical(path, error);
    return error ? path : device.string();
}

/// The number of the COM name that means `device` unless it is mapped; 0 when none.
unsigned default_number(std::string_view device) {
    constexpr std::string_view prefix = "/dev/ttyS";
    unsigned index = 0;
    if (!device.starts_with(prefix)) {
        return 0;
    }
    device.remove_prefix(prefix.size());
    const char* end = device.data() + device.size();
    const auto [stop, error] = std::from_chars(device.data(), end, index);
    return error == std::errc() && stop == end ? index + 1 : 0;
}

/// The COM names of each device that has one.
std::map<std::string, std::string> names_of_devices(const std::vector<tarnel::PortInfo>& ports) {
    std::map<std::string, std::string> names;
    const auto mapped = tarnel::mapped_ports();
    const auto add = [&](unsigned number, const std::string& path) {
        std::string& text = names[real_device(path)];
        text += fmt::format("{}COM{}:", text.empty() ? "" : ", ", number);
    };
    for (const auto& [number, path] : mapped) {
        add(number, path);
    }
    for (const tarnel::PortInfo& port : ports) {
        const unsigned number = default_number(port.device);
        if (number && !mapped.contains(number)) {
            add(number, port.device);
        }
    }
    return names;
}

std::string holders_of(const std::string& device) {
    std::string text;
    for (const tarnel::PortHolder& holder : tarnel::port_holders(device)) {
        text += fmt::format("{}{} ({})", text.empty() ? "" : ", ", holder.program, holder.process);
    }
    return text;
}

std::string usb_id(const tarnel::UsbIdentity& usb) {
    return usb.vendor_id.empty() ? "" : usb.vendor_id + ":" + usb.product_id;
}

void list(const std::string& format) {
    auto ports = tarnel::list_ports();
    auto names = names_of_devices(ports);
    Table table({"Device", "COM name", "By id", "By path", "Driver", "USB ID", "Maker", "Product",
                 "Held by"});
    for (const tarnel::PortInfo& port : ports) {
        table.add({port.device, names[port.device], port.by_id, port.by_path, port.driver,
                   usb_id(port.usb), port.usb.maker, port.usb.product, holders_of(port.device)});
        names.erase(port.device);
    }
    // What is mapped and has no hardware of its own, or is not plugged in.
    for (const auto& [device, name] : names) {
        table.add({device, name, "", "", "", "", "", "", holders_of(device)});
    }
    if (ports.empty()) {
        fmt::print(stderr, "No serial port found.\n");
    }
    table.print(format);
}

unsigned number_of(const std::string& name) {
    const auto number = tarnel::com_number(name);
    if (!number) {
        fail(exit_bad_argument,
             fmt::format("'{}' is no port name: it is COM and a number from 1, as COM3:", name));
    }
    return *number;
}

void check_stored(DWORD error, const MapArguments& arguments) {
    switch (error) {
    case ERROR_SUCCESS:
        return;
    case ERROR_ACCESS_DENIED:
        fail(exit_no_rights, arguments.machine
                                 ? "You may not change the machine's map: run the command as root "
                                   "(sudo), or leave out --machine for a map of your own."
                                 : "You may not write to your own map: look at the owner and the "
                                   "rights of the settings' folder.");
    default:
        fail(exit_not_stored, fmt::format("The map could not be stored (error {}).", error));
    }
}

void map(const MapArguments& arguments) {
    const unsigned number = number_of(arguments.name);
    const std::string& path = arguments.path;
    if (!path.starts_with('/')) {
        fail(exit_bad_argument, fmt::format("'{}' is no absolute path: give the device in full, as "
                                            "/dev/serial/by-id/NAME",
                                            path));
    }
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        fmt::print(stderr, "Warning: {} does not exist now.\n", path);
    }
    check_stored(tarnel::map_port(number, path, arguments.map()), arguments);
    fmt::print("COM{}: is {}\n", number, path);
    std::fflush(stdout); // before what is said to standard error
    const auto in_force = tarnel::resolve_port(arguments.name);
    if (in_force != path) {
        fmt::print(stderr, "Warning: COM{}: still means {}, which goes before.\n", number,
                   in_force.value_or(""));
    }
}

void unmap(const MapArguments& arguments) {
    const unsigned number = number_of(arguments.name);
    const DWORD error = tarnel::unmap_port(number, arguments.map());
    if (error == ERROR_FILE_NOT_FOUND) {
        fail(exit_not_mapped, fmt::format("COM{}: is not in the {} map.", number,
                                          arguments.machine ? "machine's" : "user's"));
    }
    check_stored(error, arguments);
}

CLI::App* add_change(CLI::App& ports, const char* name, const char* help,
                     const std::shared_ptr<MapArguments>& arguments) {
    CLI::App* verb = ports.add_subcommand(name, help);
    verb->add_option("NAME", arguments->name, "Port name, as COM3:")->required();
    verb->add_flag("--machine", arguments->machine, "The map of all users of this machine");
    verb->footer(exit_codes);
    return verb;
}

} // namespace

void add_ports_verb(CLI::App& tool) {
    auto format = std::make_shared<std::string>("table");
    auto arguments = std::make_shared<MapArguments>();
    CLI::App* ports =
        tool.add_subcommand("ports", "List the serial ports, who holds them, and their COM names");
    Table::add_format_option(*ports, *format);
    ports->callback([ports, format] {
        if (ports->get_subcommands().empty()) {
            list(*format);
        }
    });
    CLI::App* to_map =
        add_change(*ports, "map", "Let a COM name mean a device, in your own map", arguments);
    to_map->add_option("PATH", arguments->path, "Device, best /dev/serial/by-id/...")->required();
    to_map->callback([arguments] { map(*arguments); });
    add_change(*ports, "unmap", "Take a COM name out of your own map", arguments)
        ->callback([arguments] { unmap(*arguments); });
}
