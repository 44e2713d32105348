#include "platform/comm/port_names.h"

#include "platform/base/letter_case.h"
#include "platform/comm/port_map.h"

#include <unistd.h>

#include <charconv>
#include <vector>

namespace tarnel {

namespace {

constexpr std::string_view variable_prefix = "TARNEL_";

std::vector<MappedPort> ports_in_environment() {
    std::vector<MappedPort> ports;
    for (char** variable = ::environ; variable && *variable; ++variable) {
        const std::string_view text = *variable;
        const auto equals = text.find('=');
        if (!text.starts_with(variable_prefix) || equals == text.npos) {
            continue;
        }
        const auto name = text.substr(variable_prefix.size(), equals - variable_prefix.size());
        const auto number = com_number(name);
        if (number && equals + 1 < text.size()) {
            ports.push_back({*number, std::string(text.substr(equals + 1))});
        }
    }
    return ports;
}

} // namespace

std::optional<unsigned> com_number(std::string_view name) {
    constexpr std::string_view device_prefix = "\\\\.\\";
    constexpr std::string_view prefix = "COM";
    if (name.starts_with(device_prefix)) {
        name.remove_prefix(device_prefix.size());
    }
    if (!same_but_for_case(name.substr(0, prefix.size()), prefix)) {
        return std::nullopt;
    }
    name.remove_prefix(prefix.size());
    if (name.ends_with(':')) {
        name.remove_suffix(1);
    }
    unsigned number = 0;
    const char* end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data(), end, number);
    // COM01 is no port: each has one name only.
    if (error != std::errc() || stop != end || name.front() == '0') {
        return std::nullopt;
    }
    return number;
}

std::map<unsigned, std::string> mapped_ports() {
    std::map<unsigned, std::string> ports;
    for (const auto& source :
         {ports_in_environment(), ports_in(PortMap::user), ports_in(PortMap::machine)}) {
        for (const MappedPort& port : source) {
            ports.emplace(port.number, port.path); // what came first goes before
        }
    }
    return ports;
}

std::optional<std::string> resolve_port(std::string_view name) {
    if (name.find('/') != name.npos) {
        return std::string(name);
    }
    const auto number = com_number(name);
    if (!number) {
        return std::nullopt;
    }
    const auto ports = mapped_ports();
    const auto port = ports.find(*number);
    return port != ports.end() ? port->second : "/dev/ttyS" + std::to_string(*number - 1);
}

} // namespace tarnel
