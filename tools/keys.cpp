#include "desktop/KeyString.h"
#include "desktop/SendKeys.h"
#include "platform/base/last_error.h"
#include "platform/base/virtual_keys.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel keys` types into the window that has the keyboard.

namespace {

constexpr int exit_unclosed_brace = 2;
constexpr int exit_unopened_group = 3;
constexpr int exit_not_typed = 4;

void print_modifiers(const tarnel::KeyGroup& group, const char* what) {
    const std::pair<bool, UINT> modifiers[] = {
        {group.shift, VK_SHIFT}, {group.control, VK_CONTROL}, {group.alt, VK_MENU}};
    for (const auto& [held, code] : modifiers) {
        if (held) {
            fmt::print("{} {}\n", what, tarnel::key_name(code));
        }
    }
}

int print_plan(const std::string& keys) {
    std::vector<tarnel::KeyGroup> groups;
    const int result = tarnel::parse_key_string(keys.c_str(), groups);
    for (const tarnel::KeyGroup& group : groups) {
        print_modifiers(group, "press");
        for (const UINT code : group.keys) {
            fmt::print("press {0}\nrelease {0}\n", tarnel::key_name(code));
        }
        print_modifiers(group, "release");
    }
    return result;
}

int type(const std::string& keys) {
    SetLastError(ERROR_SUCCESS);
    const int result = SendKeyString(keys.c_str());
    if (GetLastError() == ERROR_NOT_SUPPORTED) {
        fail(exit_not_typed, "Nothing can be typed here: there is no X server.");
    }
    return result;
}

void run(const std::string& keys, bool dry_run) {
    const int result = dry_run ? print_plan(keys) : type(keys);
    if (result == tarnel::key_string_unclosed_brace) {
        fail(exit_unclosed_brace, "A '{' is not closed.");
    }
    if (result == tarnel::key_string_unopened_group) {
        fail(exit_unopened_group, "A ')' has no '('.");
    }
}

} // namespace

void add_keys_verb(CLI::App& tool) {
    auto keys = std::make_shared<std::string>();
    auto dry_run = std::make_shared<bool>(false);
    CLI::App* verb = tool.add_subcommand("keys", "Type keys into the window that has the keyboard");
    verb->add_option("TEXT", *keys, "The keys")->required();
    verb->add_flag("--dry-run", *dry_run, "Print what would be pressed and released");
    verb->footer(
        "A to Z and 0 to 9 are keys, ~ is Return, {F5} a key by its name; + ^ % hold Shift, "
        "Ctrl and\nAlt for the next key or group (...). Any other character is the key with "
        "its code.\n"
        "Exit codes: 0 done, 2 a { is not closed, 3 a ) has no (, 4 no X server\n"
        "Example: tarnel keys '^S%{F4}'");
    verb->callback([keys, dry_run] { run(*keys, *dry_run); });
}
