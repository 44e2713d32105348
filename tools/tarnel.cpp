#include "tools/verbs.h"

int main(int argc, char** argv) {
    CLI::App tool{"TarnelToolBoxLib's tool: the library's services at the command line."};
    tool.set_version_flag("--version", TARNEL_VERSION);
    tool.require_subcommand(1);
    add_loading_verb(tool);
    try {
        tool.parse(argc, argv);
    } catch (const CLI::Error& error) {
        return tool.exit(error);
    }
    return 0;
}
