#include "desktop/TextFiles.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel wait-file` waits for a file that another program writes.

namespace {

constexpr int exit_timed_out = 2;

void wait(const std::string& path, DWORD timeout) {
    if (!WaitForFile(path.c_str(), timeout)) {
        fail(exit_timed_out, fmt::format("{} was not there and complete in {} ms.", path, timeout));
    }
}

} // namespace

void add_wait_file_verb(CLI::App& tool) {
    auto path = std::make_shared<std::string>();
    auto timeout = std::make_shared<DWORD>(10'000);
    CLI::App* verb = tool.add_subcommand(
        "wait-file", "Wait until a file is there and nobody writes to it any more");
    verb->add_option("PATH", *path, "The file")->required();
    verb->add_option("--timeout", *timeout, "Milliseconds")->capture_default_str();
    verb->footer("Exit codes: 0 it is there, 2 not in time");
    verb->callback([path, timeout] { wait(*path, *timeout); });
}
