#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// Each verb of the tool adds itself to the command line. A verb that fails throws CLI::RuntimeError
// with the tool's exit code, after it has said on standard error why.

/// Says why on standard error, and ends the tool with `exit_code`.
[[noreturn]] void fail(int exit_code, const std::string& why);

/// The options and positional arguments of `verb`, those of its option groups included.
std::vector<const CLI::Option*> options_of(const CLI::App& verb);

void add_complete_verb(CLI::App& tool);
void add_doctor_verb(CLI::App& tool);
void add_dump_verb(CLI::App& tool);
void add_encoders_verb(CLI::App& tool);
void add_hotkeys_verb(CLI::App& tool);
void add_keys_verb(CLI::App& tool);
void add_line_verb(CLI::App& tool);
void add_listen_verb(CLI::App& tool);
void add_loading_verb(CLI::App& tool);
void add_manual_verb(CLI::App& tool);
void add_monitor_verb(CLI::App& tool);
void add_names_verb(CLI::App& tool);
void add_ports_verb(CLI::App& tool);
void add_probe_verb(CLI::App& tool);
void add_protocols_verb(CLI::App& tool);
void add_record_verb(CLI::App& tool);
void add_replay_verb(CLI::App& tool);
void add_send_verb(CLI::App& tool);
void add_settings_verb(CLI::App& tool);
void add_simulate_verb(CLI::App& tool);
void add_tone_verb(CLI::App& tool);
void add_wait_file_verb(CLI::App& tool);
void add_window_verb(CLI::App& tool);
void add_write_verb(CLI::App& tool);
