#include "tools/protocol_choice.h"
#include "tools/simulated_machine.h"
#include "tools/stop_signal.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <system_error>

// `tarnel simulate` is a measuring machine on a pseudo terminal.

namespace {

constexpr int exit_bad_choice = 3;
constexpr int exit_no_line = 4;

struct Arguments {
    std::string protocol;
    std::string rate = "10";
    std::string line_end;
    std::vector<std::string> faults;
    Simulation simulation;
};

const MachineKind& kind_called(const std::string& protocol) {
    const std::string_view name = protocol_called(protocol).name;
    const auto kinds = machine_kinds();
    const auto kind =
        std::find_if(kinds.begin(), kinds.end(), [&](const auto& k) { return k.protocol == name; });
    if (kind == kinds.end()) {
        fail(exit_bad_choice, fmt::format("No machine is known that speaks {}.", name));
    }
    return *kind;
}

double parse_rate(const std::string& text) {
    double rate = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, rate);
    if (text != "max" &&
        (result.ec != std::errc() || result.ptr != end || !(rate >= 0 && rate <= 1e6))) {
        fail(exit_bad_choice,
             fmt::format("'{}' is no rate: points a second up to 1000000, or 'max'.", text));
    }
    return rate;
}

std::vector<Fault> parse_faults(const std::vector<std::string>& names) {
    std::vector<Fault> faults;
    for (const std::string& name : names) {
        const auto found = std::find(fault_names.begin(), fault_names.end(), name);
        faults.push_back(static_cast<Fault>(found - fault_names.begin()));
    }
    return faults;
}

/// Some damage has no outcome that the machine's rules would settle.
void check_faults(const Simulation& simulation) {
    const auto wants = [&](Fault fault) {
        return std::count(simulation.faults.begin(), simulation.faults.end(), fault) > 0;
    };
    if (wants(Fault::unplug) && simulation.link.empty()) {
        fail(exit_bad_choice,
             "A port that is plugged in again has another name: give it a --link.");
    }
    if ((wants(Fault::flip) || wants(Fault::cut)) && !simulation.kind->by_lines &&
        simulation.line_end.size() == 1) {
        fail(exit_bad_choice, fmt::format("{} needs '--end crlf' for the faults flip and cut.",
                                          simulation.kind->protocol));
    }
}

Simulation prepare(const Arguments& arguments) {
    Simulation simulation = arguments.simulation;
    simulation.kind = &kind_called(arguments.protocol);
    const bool crlf =
        arguments.line_end.empty() ? simulation.kind->crlf : arguments.line_end == "crlf";
    simulation.line_end = crlf ? "\r\n" : "\r";
    simulation.rate = parse_rate(arguments.rate);
    simulation.faults = parse_faults(arguments.faults);
    check_faults(simulation);
    return simulation;
}

void simulate(const Arguments& arguments) {
    const StopSignal stop;
    const Simulation simulation = prepare(arguments);
    try {
        SimulatedMachine machine(simulation, stop.descriptor());
        fmt::print("{}\n", machine.port());
        std::fflush(stdout);
        fmt::print(stderr,
                   "{} measures a {} as soon as somebody listens, for instance\n"
                   "  tarnel monitor '{}' --port {}\n",
                   simulation.kind->protocol, simulation.shape, simulation.kind->protocol,
                   machine.port());
        machine.run();
        fmt::print(stderr, "{} records, {} points, {} without a point, {} bytes\n",
                   machine.records(), machine.points(), machine.records() - machine.points(),
                   machine.bytes());
    } catch (const std::system_error& error) {
        fail(exit_no_line, error.what());
    }
}

} // namespace

void add_simulate_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    Simulation& what = arguments->simulation;
    CLI::App* verb =
        tool.add_subcommand("simulate", "Be a measuring machine, at a port of its own");
    verb->add_option("PROTOCOL", arguments->protocol, "As in 'tarnel protocols'")->required();
    verb->add_option("--rate", arguments->rate, "Points a second; 'max': as fast as the line goes")
        ->capture_default_str();
    verb->add_option("--pace", what.baud, "The line's pace in bit/s (10 a byte); else it has none")
        ->check(CLI::Range(50U, 100'000'000U));
    verb->add_option("--count", what.count, "Records until it ends by itself")
        ->default_str("no end")
        ->check(CLI::PositiveNumber);
    verb->add_option("--shape", what.shape, "What is measured: grid, plane, sphere")
        ->capture_default_str()
        ->check(CLI::IsMember(std::vector<std::string>(shape_names.begin(), shape_names.end())));
    verb->add_option("--seed", what.seed, "The same seed sends the same bytes")
        ->capture_default_str();
    verb->add_option("--fault", arguments->faults,
                     "What happens to one record in twenty: split, merge, flip, cut, flood, unplug")
        ->delimiter(',')
        ->check(CLI::IsMember(std::vector<std::string>(fault_names.begin(), fault_names.end())));
    verb->add_option("--truth", what.truth, "A CSV file of the points that must come, in mm");
    verb->add_option("--link", what.link, "A symbolic link to make, as a name that stays");
    verb->add_option("--end", arguments->line_end, "Line end: cr or crlf; else the machine's usual")
        ->check(CLI::IsMember({"cr", "crlf"}));
    verb->footer(
        "Prints the port to connect to, waits until it is opened, and at the end until all "
        "has been read.\nCtrl+C ends it at once.\n"
        "Example: tarnel simulate 'PERCEVAL MICRON' --rate 5 --link ./machine\n"
        "Exit codes: 0 done, 3 a choice that cannot be, 4 no line, link or truth, 5 no such "
        "protocol");
    verb->callback([arguments] { simulate(*arguments); });
}
