#include "tools/verbs.h"

#include <fmt/core.h>

#include <cstdio>

void fail(int exit_code, const std::string& why) {
    fmt::print(stderr, "{}\n", why);
    throw CLI::RuntimeError(exit_code);
}

std::vector<const CLI::Option*> options_of(const CLI::App& verb) {
    std::vector<const CLI::Option*> options = verb.get_options();
    const auto groups =
        verb.get_subcommands([](const CLI::App* part) { return part->get_name().empty(); });
    for (const CLI::App* group : groups) {
        auto more = options_of(*group);
        std::erase_if(more, [](const CLI::Option* option) { return option->check_lname("help"); });
        options.insert(options.end(), more.begin(), more.end());
    }
    return options;
}

int main(int argc, char** argv) {
    CLI::App tool{"TarnelToolBoxLib's tool: the library's services at the command line."};
    tool.set_version_flag("--version", TARNEL_VERSION);
    tool.require_subcommand(1);
    add_complete_verb(tool);
    add_doctor_verb(tool);
    add_dump_verb(tool);
    add_encoders_verb(tool);
    add_hotkeys_verb(tool);
    add_keys_verb(tool);
    add_line_verb(tool);
    add_listen_verb(tool);
    add_loading_verb(tool);
    add_manual_verb(tool);
    add_monitor_verb(tool);
    add_names_verb(tool);
    add_ports_verb(tool);
    add_probe_verb(tool);
    add_protocols_verb(tool);
    add_record_verb(tool);
    add_replay_verb(tool);
    add_send_verb(tool);
    add_settings_verb(tool);
    add_simulate_verb(tool);
    add_tone_verb(tool);
    add_wait_file_verb(tool);
    add_window_verb(tool);
    add_write_verb(tool);
    try {
        tool.parse(argc, argv);
    } catch (const CLI::Error& error) {
        return tool.exit(error);
    }
    return 0;
}
