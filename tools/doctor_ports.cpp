#include "platform/comm/port_holder.h"
#include "platform/comm/port_list.h"
#include "platform/comm/port_map.h"
#include "platform/registry/registry.h"
#include "tools/doctor.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

// Ports are looked at from outside: opening one would raise its modem lines.

namespace {

using tarnel::PortMap;

/// A port to look at.
struct Port {
    std::string name;    ///< as the user knows it
    std::string path;    ///< "" when the name is none
    bool wanted = false; ///< named by the user: it must be there, and free
};

std::string shown(const Port& port) {
    return port.path.empty() || port.path == port.name
               ? port.name
               : fmt::format("{} ({})", port.name, port.path);
}

bool stands_in(PortMap map, unsigned number) {
    const auto ports = tarnel::ports_in(map);
    return std::ranges::find(ports, number, &tarnel::MappedPort::number) != ports.end();
}

/// The command that takes COM`number` off its device; "" when nobody has named one.
std::string give_up(unsigned number) {
    const std::string variable = fmt::format("TARNEL_COM{}", number);
    if (const char* const device = std::getenv(variable.c_str()); device && *device) {
        return "unset " + variable;
    }
    return stands_in(PortMap::user, number) ? fmt::format("tarnel ports unmap COM{}:", number)
           : stands_in(PortMap::machine, number)
               ? fmt::format("sudo tarnel ports unmap --machine COM{}:", number)
               : "";
}

std::string cure_of_absence(const std::string& name) {
    const auto number = tarnel::com_number(name);
    if (!number) {
        return "Plug it in; tarnel ports shows those that there are";
    }
    const std::string command = give_up(*number);
    return command.empty()
               ? fmt::format("tarnel ports map COM{}: DEVICE; tarnel ports shows the devices",
                             *number)
               : "Plug it in, or give the name up: " + command;
}

std::vector<tarnel::PortHolder> other_holders(const std::string& path) {
    auto holders = tarnel::port_holders(path);
    std::erase_if(holders, [](const auto& holder) { return holder.process == ::getpid(); });
    return holders;
}

/// As the system shows it; of pseudo terminals, it shows nothing.
bool is_terminal(const struct stat& status) {
    std::error_code error;
    const std::string subsystem = std::filesystem::canonical(
        fmt::format("/sys/dev/char/{}:{}/subsystem", major(status.st_rdev), minor(status.st_rdev)),
        error);
    return S_ISCHR(status.st_mode) && (error || subsystem.ends_with("/tty"));
}

Finding held(const Port& port, const std::vector<tarnel::PortHolder>& holders) {
    std::string programs;
    std::string processes;
    for (const auto& [process, program] : holders) {
        programs += fmt::format("{}{}", programs.empty() ? "" : ", ", program);
        processes += fmt::format(" {}", process);
    }
    return {port.wanted ? Level::problem : Level::warning,
            fmt::format("{} is in use by {}.", shown(port), programs),
            "End the program, or: kill" + processes};
}

Finding examine(const Port& port) {
    struct stat status {};

    if (::stat(port.path.c_str(), &status) != 0) {
        return {port.wanted ? Level::problem : Level::warning,
                fmt::format("{} cannot be found: {}.", shown(port),
                            std::generic_category().message(errno)),
                cure_of_absence(port.name)};
    }
    if (!is_terminal(status)) {
        return {Level::problem, shown(port) + " is no serial port.",
                "tarnel ports shows those that there are"};
    }
    if (::access(port.path.c_str(), R_OK | W_OK) != 0) {
        return {Level::problem,
                fmt::format("{} may not be opened by you ({}).", shown(port), user_name()),
                cure_of_rights(port.path)};
    }
    if (const auto holders = other_holders(port.path); !holders.empty()) {
        return held(port, holders);
    }
    // Who is not root sees no programs of others.
    return {Level::ok,
            shown(port) + " may be opened" +
                (::geteuid() == 0 ? ", and is not in use." : ", and no program of yours uses it."),
            {}};
}

std::vector<Port> all_ports(const std::vector<tarnel::PortInfo>& listed) {
    std::vector<Port> ports;
    ports.reserve(listed.size());
    for (const tarnel::PortInfo& port : listed) {
        ports.push_back({port.device, port.device});
    }
    for (const auto& [number, path] : tarnel::mapped_ports()) {
        std::error_code error;
        const std::string device = std::filesystem::canonical(path, error);
        if (std::ranges::find(listed, device, &tarnel::PortInfo::device) == listed.end()) {
            ports.push_back({fmt::format("COM{}:", number), path});
        }
    }
    return ports;
}

} // namespace

Diagnosis examine_ports(const std::vector<std::string>& names) {
    Diagnosis diagnosis;
    const auto listed = tarnel::list_ports();
    std::vector<Port> ports = names.empty() ? all_ports(listed) : std::vector<Port>();
    for (const std::string& name : names) {
        ports.push_back({name, tarnel::resolve_port(name).value_or(""), true});
    }
    for (const Port& port : ports) {
        diagnosis.findings.push_back(examine(port));
    }
    if (ports.empty()) {
        diagnosis.add(Level::warning, "There is no serial port.",
                      "Plug a converter in; without a machine, try tarnel simulate");
    }
    const auto is_usable = [](const Finding& finding) { return finding.level == Level::ok; };
    const auto& found = diagnosis.findings;
    const auto fault = std::ranges::find_if_not(found, is_usable);
    const bool good =
        fault == found.end() || (names.empty() && std::ranges::any_of(found, is_usable));
    for (const char* service : {"serial ports", "points"}) {
        good ? diagnosis.works(service) : diagnosis.fails(service, fault->what);
    }
    look_for_intruders(listed, diagnosis);
    tarnel::close_registry(); // no file of it stays behind
    return diagnosis;
}
