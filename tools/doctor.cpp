#include "tools/doctor.h"

#include "platform/base/diagnostics.h"
#include "platform/registry/hive_condition.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

// `tarnel doctor` finds what keeps the library from working here, and says what helps.

std::atomic<bool> something_hangs = false;

namespace {

constexpr int exit_problem = 1;
constexpr std::chrono::seconds patience(12); // with one area

struct Area {
    const char* title;
    Diagnosis diagnosis;
};

/// What hangs is given up.
Area examine(const char* title, std::function<Diagnosis()> look) {
    if (auto diagnosis = within(patience, std::move(look))) {
        return {title, *std::move(diagnosis)};
    }
    Area hung{title, {}};
    hung.diagnosis.add(Level::problem, "The system does not answer when it is asked about this.",
                       "Look for a device, a folder in the network or a server that hangs");
    hung.diagnosis.fails(title, "the system does not answer");
    return hung;
}

const char* name_of(Level level) {
    return level == Level::ok ? "OK" : level == Level::warning ? "warning" : "PROBLEM";
}

void print_for_person(const std::vector<Area>& areas) {
    Table table({areas.front().title, ""});
    Table services({"Service", "State"});
    for (const auto& [title, diagnosis] : areas) {
        if (title != areas.front().title) {
            table.add({"", ""});
            table.add({title, ""});
        }
        for (const Finding& finding : diagnosis.findings) {
            table.add({name_of(finding.level), finding.what});
            if (!finding.cure.empty()) {
                table.add({"", "-> " + finding.cure});
            }
        }
        for (const Service& service : diagnosis.services) {
            services.add({service.name, service.state});
        }
    }
    table.print("table");
    fmt::print("\n");
    services.print("table");
}

void print_json(const std::vector<Area>& areas) {
    Table findings({"Area", "Level", "What", "Cure"});
    Table services({"Service", "State"});
    for (const auto& [title, diagnosis] : areas) {
        for (const auto& [level, what, cure] : diagnosis.findings) {
            findings.add({title, name_of(level), what, cure});
        }
        for (const auto& [name, state] : diagnosis.services) {
            services.add({name, state});
        }
    }
    findings.print("json");
    services.print("json");
}

bool has_problem(const std::vector<Area>& areas) {
    return std::ranges::any_of(areas, [](const Area& area) {
        const auto& findings = area.diagnosis.findings;
        return std::ranges::find(findings, Level::problem, &Finding::level) != findings.end();
    });
}

void end(int exit_code) {
    if (something_hangs) {
        // Its thread may still use what the orderly end of a program takes away.
        std::fflush(stdout);
        std::_Exit(exit_code);
    }
    if (exit_code != 0) {
        throw CLI::RuntimeError(exit_code);
    }
}

void examine_all(const std::vector<std::string>& ports, const std::string& format) {
    tarnel::keep_hives_as_they_are();
    // What the layer would report is what is found here, and said with its cure.
    tarnel::set_report_sink([](void*, std::string_view) {}, nullptr);
    const std::vector<Area> areas = {
        examine("Serial ports", [ports] { return examine_ports(ports); }),
        examine("Network", &examine_network),
        examine("Settings", &examine_settings),
        examine("Desktop", &examine_desktop),
        examine("Language", &examine_language),
        examine("Sound", &examine_sound),
        examine("Files", &examine_files),
    };
    format == "json" ? print_json(areas) : print_for_person(areas);
    end(has_problem(areas) ? exit_problem : 0);
}

} // namespace

void add_doctor_verb(CLI::App& tool) {
    auto ports = std::make_shared<std::vector<std::string>>();
    auto format = std::make_shared<std::string>("table");
    CLI::App* verb = tool.add_subcommand(
        "doctor", "Find what keeps the library from working here, and what helps");
    verb->add_option("PORT", *ports, "Ports to look at, as COM3: or a path; else all");
    verb->add_option("--format", *format, "How to print: table or json (an object a line)")
        ->check(CLI::IsMember({"table", "json"}))
        ->capture_default_str();
    verb->footer("It changes nothing, and opens no port.\n"
                 "Exit codes: 0 no problem, 1 a problem was found");
    verb->callback([ports, format] { examine_all(*ports, *format); });
}
