#include "platform/base/diagnostics.h"

#include <dlfcn.h>
#include <fmt/core.h>

#include <charconv>
#include <cstdio>
#include <cstring>

// The program behind `tarnel loading`. The tool itself uses the library and so cannot show how it
// leaves the process; this one only loads it.

namespace {

constexpr const char* library_name = TARNEL_LIBRARY_NAME;

enum Exit { done = 0, no_library = 2, still_loaded = 3 };

void print_piece(void*, std::string_view text) {
    fmt::print("{}", text);
    std::fflush(stdout);
}

Exit load_and_unload() {
    void* library = ::dlopen(library_name, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        fmt::print(stderr, "The library cannot be loaded: {}\n", ::dlerror());
        return no_library;
    }
    ::dlclose(library);
    if (::dlopen(library_name, RTLD_NOW | RTLD_NOLOAD)) {
        fmt::print(stderr, "The library stays loaded.\n");
        return still_loaded;
    }
    return done;
}

} // namespace

int main(int argc, char** argv) {
    int rounds = 1;
    if (argc > 1) {
        std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), rounds);
    }
    tarnel::set_debug_sink(&print_piece, nullptr);
    for (int round = 0; round < rounds; ++round) {
        if (const Exit result = load_and_unload(); result != done) {
            return result;
        }
    }
    tarnel::set_debug_sink(nullptr, nullptr);
    fmt::print("Loaded and unloaded {} time{}.\n", rounds, rounds == 1 ? "" : "s");
    return done;
}
