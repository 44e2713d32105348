#include "tools/verbs.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

// `tarnel loading` shows what the library writes to the diagnostic output while it is loaded and
// unloaded, and whether it is really gone afterwards.

namespace {

constexpr int exit_no_program = 4;

/// Beside the tool in a build tree, else where programs lie that nobody starts by hand.
std::string loading_program() {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const auto beside = folder / "tarnel-loading";
    return std::filesystem::exists(beside, error)
               ? beside
               : (folder / "../libexec/tarnel/tarnel-loading").lexically_normal();
}

/// Goes on as the other program.
[[noreturn]] void show_loading(int rounds) {
    const std::string program = loading_program();
    ::execl(program.c_str(), program.c_str(), fmt::to_string(rounds).c_str(), nullptr);
    fmt::print(stderr, "{} cannot be started: {}\n", program,
               std::generic_category().message(errno));
    throw CLI::RuntimeError(exit_no_program);
}

} // namespace

void add_loading_verb(CLI::App& tool) {
    auto rounds = std::make_shared<int>(1);
    CLI::App* verb = tool.add_subcommand(
        "loading", "Load and unload the library, and show what it writes to its diagnostic output");
    verb->add_option("--rounds", *rounds, "How many times")
        ->check(CLI::Range(1, 1'000'000))
        ->capture_default_str();
    verb->callback([rounds] { show_loading(*rounds); });
}
