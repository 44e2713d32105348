#include "tools/setting_types.h"
#include "tools/settings_store.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

// `tarnel settings` looks at and changes the settings of the machine, and of INI files.

namespace {

struct Arguments {
    std::string machine;
    std::string ini;
    std::string section;
    std::string entry;
    std::string value;
    std::string type = "text";
    std::string format = "table";
    bool all = false; ///< of the section

    std::unique_ptr<SettingsStore> store() const {
        return ini.empty() ? machine_settings(machine) : ini_settings(ini);
    }

    [[noreturn]] void fail_as_not_set() const {
        fail(exit_not_set, fmt::format("Nothing of that name is set in {}.",
                                       ini.empty() ? "the machine's registry" : ini));
    }
};

const SettingType& type_called(const std::string& name) {
    return *std::ranges::find(setting_types(), name, &SettingType::name);
}

/// What an application reads.
std::string read(const Arguments& what) {
    const auto store = what.store();
    const auto setting = store->find(what.section, what.entry);
    if (!setting) {
        what.fail_as_not_set();
    }
    auto settings = store->writer();
    return what.ini.empty()
               ? setting->value
               : type_called(what.type).read(settings, what.section.c_str(), what.entry.c_str());
}

void get(const Arguments& what) {
    fmt::print("{}\n", read(what));
}

void set(const Arguments& what) {
    const auto store = what.store();
    auto settings = store->writer();
    if (!type_called(what.type).write(settings, what.section.c_str(), what.entry.c_str(),
                                      what.value)) {
        store->fail_to_write();
    }
    const std::string stored = read(what);
    fmt::print("{}\n", stored);
    if (what.type == "text" && stored != what.value) {
        fmt::print(stderr, "Warning: so applications read it: in an INI file a value loses the "
                           "blanks and quotes around it, and what is behind 4095 characters.\n");
    }
}

void remove(const Arguments& what) {
    const auto store = what.store();
    if (what.all ? store->list(what.section).empty() : !store->find(what.section, what.entry)) {
        what.fail_as_not_set();
    }
    if (!store->writer().WriteProfileStringA(what.section.c_str(),
                                             what.all ? nullptr : what.entry.c_str(), nullptr)) {
        store->fail_to_write();
    }
}

void list(const Arguments& what) {
    const auto settings = what.store()->list(what.section);
    if (settings.empty()) {
        what.fail_as_not_set();
    }
    Table table({"Section", "Entry", "Kind", "Value"});
    for (const Setting& setting : settings) {
        table.add({setting.section, setting.entry, setting.kind, setting.value});
    }
    table.print(what.format);
}

CLI::App* add_part(CLI::App& verb, const char* name, const char* help, Arguments& what) {
    CLI::App* part = verb.add_subcommand(name, help);
    auto* machine =
        part->add_option("--machine", what.machine, "The machine's: COMPANY/PROFILE/LEVEL");
    part->add_option("--ini", what.ini, "Those of an INI file, found as any file")
        ->excludes(machine);
    part->add_option("SECTION", what.section, "The section")->required();
    part->footer("Exit codes: 0 done, 2 a name or value that cannot be, 3 no rights, 4 not set, 5 "
                 "not stored or unreadable");
    return part;
}

void add_type_option(CLI::Option& option) {
    std::vector<std::string> names;
    std::ranges::transform(setting_types(), std::back_inserter(names), &SettingType::name);
    option.check(CLI::IsMember(names))->capture_default_str();
}

void add_get(CLI::App& verb, const std::shared_ptr<Arguments>& what) {
    CLI::App* part = add_part(verb, "get", "Print a setting; what is missing is not made", *what);
    part->add_option("ENTRY", what->entry, "Its name")->required();
    auto* type = part->add_option("--type", what->type,
                                  "What an application reads it as; an INI file has texts alone");
    type->needs(part->get_option("--ini"));
    add_type_option(*type);
    part->callback([what] { get(*what); });
}

void add_set(CLI::App& verb, const std::shared_ptr<Arguments>& what) {
    CLI::App* part = add_part(verb, "set", "Store a setting, and print how it is read", *what);
    part->add_option("ENTRY", what->entry, "Its name")->required();
    part->add_option("VALUE", what->value, "The value; binary has two digits a byte")->required();
    add_type_option(*part->add_option("--type", what->type, "What it is stored as"));
    part->callback([what] { set(*what); });
}

void add_delete(CLI::App& verb, const std::shared_ptr<Arguments>& what) {
    CLI::App* part = add_part(verb, "delete", "Delete a setting, or a whole section", *what);
    auto* entry = part->add_option("ENTRY", what->entry, "Its name");
    auto* all = part->add_flag("--all", what->all, "The whole section")->excludes(entry);
    part->callback([what, entry, all] {
        if (entry->empty() && all->empty()) {
            fail(exit_bad_setting_name, "Say which ENTRY, or --all for the whole section.");
        }
        remove(*what);
    });
}

void add_list(CLI::App& verb, const std::shared_ptr<Arguments>& what) {
    CLI::App* part = add_part(
        verb, "list", "Show settings; with fewer levels, or none, more of the machine's", *what);
    part->get_option("SECTION")->required(false);
    Table::add_format_option(*part, what->format);
    part->callback([what] { list(*what); });
}

} // namespace

void add_settings_verb(CLI::App& tool) {
    const auto what = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("settings", "Settings of the machine, and of INI files");
    verb->require_subcommand(1);
    add_get(*verb, what);
    add_set(*verb, what);
    add_list(*verb, what);
    add_delete(*verb, what);
    verb->footer("Example: tarnel settings list --machine Maker/Tool/1.0");
}
