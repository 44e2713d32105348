#include "platform/registry/application.h"
#include "serial/SettingsDialog.h"
#include "tools/dialog_session.h"
#include "tools/line_settings.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

// `tarnel line` shows and changes serial configurations that the registry keeps under a name.

namespace {

constexpr int exit_not_stored = 4;
constexpr const char* exit_codes =
    "Exit codes: 0 done, 2 no such line or unreadable, 3 a setting that cannot be, 4 could not be "
    "stored";

void print(Line& line, const std::string& format) {
    Table table({"Field", "Value", "Unit"});
    table.add({"summary", line.GetInfoString().GetString(), ""});
    for (const LineField& field : line_fields()) {
        table.add({field.name, field.show(line), field.unit});
    }
    table.print(format);
}

void show(const std::string& name, const std::string& format) {
    Line line;
    if (!load_line(line, name)) {
        fail(exit_no_such_line, fmt::format("There is no line {}.", name));
    }
    print(line, format);
}

void list(const std::string& format) {
    Table table({"Name", "Settings"});
    for (const std::string& name : line_names()) {
        Line line;
        if (load_line(line, name)) {
            table.add({name, line.GetInfoString().GetString()});
        }
    }
    table.print(format);
}

bool same(Line& left, Line& right) {
    return std::ranges::all_of(line_fields(), [&](const LineField& field) {
        return field.show(left) == field.show(right);
    });
}

/// Stores `line` and looks whether it is really there.
void store(Line& line, const std::string& name) {
    CWinApp application;
    application.SetRegistryKey(tool_company);
    application.m_pszProfileName = tool_profile;
    const std::string section = line_section(name);
    line.WriteToRegistry(section.c_str());
    Line stored;
    if (!load_line(stored, name) || !same(stored, line)) {
        fail(exit_not_stored, fmt::format("Line {} could not be stored.", name));
    }
}

void set(const std::string& name, const std::vector<std::string>& settings) {
    Line line;
    load_line(line, name);
    for (const std::string& setting : settings) {
        apply_setting(setting, line);
    }
    store(line, name);
    fmt::print("{}\n", line.GetInfoString().GetString());
}

struct EditArguments {
    bool locked = false;
    bool alternative = false;
    std::string picture;
};

void edit(const std::string& name, const EditArguments& arguments) {
    const DialogSession session(arguments.picture);
    Line line;
    load_line(line, name);
    const INT_PTR result =
        CComSettingDlg(line, arguments.locked,
                       arguments.alternative ? CComSettingDlg::alternative_template
                                             : CComSettingDlg::usual_template,
                       nullptr)
            .DoModal();
    if (result != IDOK) {
        session.end_without_answer(static_cast<int>(result));
    }
    store(line, name);
    fmt::print("{}\n", line.GetInfoString().GetString());
}

std::string name_fault(const std::string& name) {
    return name.empty() || name.find('\\') != name.npos
               ? "a name has at least one character, and no backslash"
               : "";
}

CLI::App* add_subverb(CLI::App& line, const char* name, const char* help, std::string& target) {
    CLI::App* verb = line.add_subcommand(name, help);
    verb->add_option("NAME", target, "What the line is called")->required()->check(name_fault);
    verb->footer(exit_codes);
    return verb;
}

} // namespace

void add_line_verb(CLI::App& tool) {
    auto name = std::make_shared<std::string>();
    auto format = std::make_shared<std::string>("table");
    auto settings = std::make_shared<std::vector<std::string>>();
    CLI::App* line = tool.add_subcommand("line", "Serial configurations in the registry");
    line->require_subcommand(1);
    CLI::App* to_list = line->add_subcommand("list", "Show the lines that there are");
    Table::add_format_option(*to_list, *format);
    to_list->callback([format] { list(*format); });
    CLI::App* to_show = add_subverb(*line, "show", "Show a line's settings", *name);
    Table::add_format_option(*to_show, *format);
    to_show->callback([name, format] { show(*name, *format); });
    CLI::App* to_set =
        add_subverb(*line, "set", "Change a line's settings, or make a new line", *name);
    to_set->add_option("SETTING", *settings,
                       "FIELD=VALUE, as port=COM3: baud=19.2k parity=Even stop=1 bits=7 dtrdsr=on "
                       "rtscts=off xonxoff=off autoconnect=on");
    to_set->callback([name, settings] { set(*name, *settings); });
    auto editing = std::make_shared<EditArguments>();
    CLI::App* to_edit = add_subverb(
        *line, "edit", "Change a line's settings, or make a new line, in a dialog", *name);
    to_edit->add_flag("--locked", editing->locked, "The port cannot be changed");
    to_edit->add_flag("--alternative", editing->alternative, "The dialog's other layout");
    DialogSession::add_picture_option(*to_edit, editing->picture);
    to_edit->footer(fmt::format("{}, {}", exit_codes, dialog_exit_codes));
    to_edit->callback([name, editing] { edit(*name, *editing); });
}
