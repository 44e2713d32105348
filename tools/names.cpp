#include "protocols/ParameterNames.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel names` translates the names of a machine's parameters.

namespace {

constexpr int exit_no_such_name = 2;

void list(const std::string& format) {
    tbxCMMParamNamesConverter::get_readable_name(""); // reads the texts
    Table table({"Standard name", "Readable name"});
    for (const auto& [standard, readable] : tbxCMMParamNamesConverter::m_names_map) {
        table.add({standard.GetString(), readable.GetString()});
    }
    table.print(format);
}

void translate(const std::string& name) {
    const CString readable = tbxCMMParamNamesConverter::get_readable_name(name.c_str());
    const CString standard = tbxCMMParamNamesConverter::get_std_name(name.c_str());
    if (readable.IsEmpty() && standard.IsEmpty()) {
        fail(exit_no_such_name, fmt::format("No parameter is called '{}'.", name));
    }
    fmt::print("{}\n", (readable.IsEmpty() ? standard : readable).GetString());
}

} // namespace

void add_names_verb(CLI::App& tool) {
    auto name = std::make_shared<std::string>();
    auto format = std::make_shared<std::string>("table");
    CLI::App* verb =
        tool.add_subcommand("names", "Names of a machine's parameters, in your language");
    verb->add_option("NAME", *name,
                     "A standard or readable name, to get the other; all without it");
    Table::add_format_option(*verb, *format);
    verb->footer("Exit codes: 0 done, 2 no such name\n"
                 "Example: tarnel names FEDRAT/MESVEL");
    verb->callback([name, format] { name->empty() ? list(*format) : translate(*name); });
}
