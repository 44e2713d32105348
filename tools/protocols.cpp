#include "protocols/ProtocolRegister.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <memory>

// `tarnel protocols` lists the measuring-machine protocols that an application can choose from.

void add_protocols_verb(CLI::App& tool) {
    auto format = std::make_shared<std::string>("table");
    CLI::App* verb = tool.add_subcommand("protocols", "List the protocols of measuring machines");
    Table::add_format_option(*verb, *format);
    verb->footer("In the order of the list that an application walks.\n"
                 "Exit codes: 0 done\n"
                 "Example: tarnel protocols --format json");
    verb->callback([format] {
        Table table({"Name", "Class"});
        for (const auto* node = ProtocolRegister::m_Root; node; node = node->next) {
            table.add({node->name, node->runtime_class->m_lpszClassName});
        }
        table.print(*format);
    });
}
