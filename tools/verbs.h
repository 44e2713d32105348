#pragma once

#include <CLI/CLI.hpp>

// Each verb of the tool adds itself to the command line. A verb that fails throws CLI::RuntimeError
// with the tool's exit code, after it has said on standard error why.

void add_loading_verb(CLI::App& tool);
