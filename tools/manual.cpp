#include "tools/verbs.h"

#include <fmt/format.h>

#include <string_view>

// `tarnel manual` writes the part of the manual page that the command line itself knows.

namespace {

std::string roff(std::string_view text) {
    std::string result;
    for (const char letter : text) {
        const bool opens_line = result.empty() || result.back() == '\n';
        if (opens_line && (letter == '.' || letter == '\'')) {
            result += "\\&";
        }
        if (letter == '\\') {
            result += "\\e";
        } else if (letter == '-' || letter == '\'' || letter == '^' || letter == '~') {
            result += letter == '-'    ? "\\-"
                      : letter == '\'' ? "\\(aq"
                      : letter == '^'  ? "\\(ha"
                                       : "\\(ti";
        } else {
            result += letter;
        }
    }
    return result;
}

/// "--port TEXT"
std::string heading(const CLI::Option& option) {
    if (option.get_positional()) {
        return roff(option.get_name(true));
    }
    std::string names;
    for (const std::string& name : option.get_lnames()) {
        names += (names.empty() ? "" : ", ") + ("--" + name);
    }
    const bool takes_value = option.get_expected_max() > 0;
    return fmt::format("\\fB{}\\fR{}", roff(names), takes_value ? " \\fIVALUE\\fR" : "");
}

std::string synopsis(const std::string& path, const CLI::App& verb) {
    std::string text = "\\fB" + roff(path) + "\\fR";
    for (const CLI::Option* option : options_of(verb)) {
        if (option->get_positional()) {
            const std::string name = "\\fI" + roff(option->get_name(true)) + "\\fR";
            text += option->get_required() ? " " + name : " [" + name + "]";
        }
    }
    return text + " [\\fIOPTION\\fR...]";
}

void print_verb(const std::string& path, const CLI::App& verb) {
    fmt::print(".SS {}\n{}\n.PP\n{}.\n", roff(path), synopsis(path, verb),
               roff(verb.get_description()));
    for (const CLI::Option* option : options_of(verb)) {
        if (option->get_name(option->get_positional()) != "--help" &&
            !option->get_group().empty()) {
            fmt::print(".TP\n{}\n{}\n", heading(*option), roff(option->get_description()));
        }
    }
    for (const std::string& line : CLI::detail::split(verb.get_footer(), '\n')) {
        if (!line.empty()) {
            fmt::print(".PP\n{}\n", roff(line));
        }
    }
}

void print_verbs(const std::string& path, const CLI::App& parent) {
    const auto verbs = parent.get_subcommands([](const CLI::App* verb) {
        return !verb->get_name().empty() && !verb->get_group().empty();
    });
    for (const CLI::App* verb : verbs) {
        const std::string own = path + " " + verb->get_name();
        if (verb->get_require_subcommand_min() == 0) {
            print_verb(own, *verb);
        }
        print_verbs(own, *verb);
    }
}

} // namespace

void add_manual_verb(CLI::App& tool) {
    CLI::App* verb = tool.add_subcommand("manual", "The verbs, as a part of a manual page");
    verb->group(""); // for the build
    verb->callback([&tool] { print_verbs("tarnel", tool); });
}
