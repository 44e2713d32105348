#include "desktop/WindowSearch.h"
#include "platform/desktop/foreign_windows.h"
#include "tools/table.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel window` finds another program's window.

namespace {

constexpr int exit_no_such_window = 2;
constexpr int longest_text = 255;

struct Arguments {
    std::string class_name;
    std::string title;
    bool partial = false;
    std::string format = "table";
};

std::string text_of(HWND window, int (*text_of_window)(HWND, LPSTR, int)) {
    char text[longest_text];
    text_of_window(window, text, longest_text);
    return text;
}

void find(const Arguments& arguments) {
    const HWND window = arguments.class_name.empty()
                            ? GetWindowFromTitle(arguments.title.c_str(), arguments.partial)
                            : GetWindowFromClass(arguments.class_name.c_str(), arguments.partial);
    if (!window) {
        fail(exit_no_such_window, "There is no such window.");
    }
    Table table({"Class", "Title"});
    table.add({text_of(window, &GetClassNameA), text_of(window, &GetWindowTextA)});
    table.print(arguments.format);
}

} // namespace

void add_window_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("window", "Find a window, also another program's");
    auto* by = verb->add_option_group("by");
    by->add_option("--class", arguments->class_name, "Its class");
    by->add_option("--title", arguments->title, "Its title");
    by->require_option(1);
    verb->add_flag("--partial", arguments->partial, "It only begins so");
    Table::add_format_option(*verb, arguments->format);
    verb->footer("Letters count as they are; the topmost window comes first.\n"
                 "Exit codes: 0 found, 2 none (or no X server: see 'tarnel doctor')\n"
                 "Example: tarnel window --title Report --partial");
    verb->callback([arguments] { find(*arguments); });
}
