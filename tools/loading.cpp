#include "platform/base/diagnostics.h"
#include "tools/verbs.h"

#include <dlfcn.h>
#include <fmt/core.h>

#include <cstdio>

// `tarnel loading` shows what the library writes to the diagnostic output while it is loaded and
// unloaded, and whether it is really gone afterwards.

namespace {

constexpr const char* library_name = "libTarnelToolBoxLib.so";
constexpr int exit_no_library = 2;
constexpr int exit_still_loaded = 3;

void print_piece(void*, std::string_view text) {
    fmt::print("{}", text);
    std::fflush(stdout);
}

void load_and_unload() {
    void* library = ::dlopen(library_name, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        fmt::print(stderr, "The library cannot be loaded: {}\n", ::dlerror());
        throw CLI::RuntimeError(exit_no_library);
    }
    ::dlclose(library);
    if (::dlopen(library_name, RTLD_NOW | RTLD_NOLOAD)) {
        fmt::print(stderr, "The library stays loaded.\n");
        throw CLI::RuntimeError(exit_still_loaded);
    }
}

void show_loading(int rounds) {
    tarnel::set_debug_sink(&print_piece, nullptr);
    for (int round = 0; round < rounds; ++round) {
        load_and_unload();
    }
    tarnel::set_debug_sink(nullptr, nullptr);
    fmt::print("Loaded and unloaded {} time{}.\n", rounds, rounds == 1 ? "" : "s");
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
