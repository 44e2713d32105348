#include "desktop/HotKeys.h"

#include "platform/base/last_error.h"
#include "platform/companions/registry_bag.h"
#include "platform/desktop/hot_key.h"
#include "platform/messages/message.h"
#include "platform/registry/application.h"
#include "tools/line_settings.h"
#include "tools/message_loop.h"
#include "tools/table.h"
#include "tools/time_stamp.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <algorithm>

// `tarnel hotkeys` keeps hot keys in the registry, and watches them.

namespace {

constexpr int exit_no_such_key = 2;
constexpr int exit_not_stored = 4;
constexpr int exit_none_registered = 5;

/// The hot keys that the tool keeps.
class KeptHotKeys final : public CHotKeys {
  public:
    KeptHotKeys() : bag_(open_bag()) {
        if (!bag_) {
            fail(exit_not_stored, "Your registry cannot be opened.");
        }
        Load(bag_, nullptr);
    }

    ~KeptHotKeys() override { bag_->Release(); }

    void store() {
        if (Save(bag_, TRUE, TRUE) < 0) {
            fail(exit_not_stored, "The hot keys could not be stored.");
        }
    }

    /// How many could be registered; the others are named.
    int watch() {
        int registered = 0;
        Create();
        for (int i = 0; i < Count(); ++i) {
            if (Register(HotKey(i))) {
                ++registered;
            } else {
                fmt::print(stderr, "{}: {}\n", HotKey(i).ToString().GetString(),
                           reason(GetLastError()));
            }
        }
        return registered;
    }

  private:
    static IPropertyBag* open_bag() {
        CWinApp application;
        application.SetRegistryKey(tool_company);
        application.m_pszProfileName = tool_profile;
        HKEY key = application.GetSectionKey("HotKeys");
        return key ? tarnel::make_registry_bag(key) : nullptr;
    }

    static const char* reason(DWORD error) {
        return error == ERROR_HOTKEY_ALREADY_REGISTERED ? "somebody else has it"
               : error == ERROR_INVALID_PARAMETER       ? "this keyboard has no such key"
                                                        : "there is no X server";
    }

    void OnHotKey(CHotKey pressed) override {
        fmt::print("{}  {}\n", utc_time(read_time_now().utc_us), pressed.ToString().GetString());
        std::fflush(stdout);
    }

    IPropertyBag* bag_;
};

/// The part of "CTRL + F1" up to the next plus, without blanks, in capitals; it is taken off.
std::string next_part(std::string& text) {
    const std::size_t plus = text.find('+');
    std::string part = CLI::detail::trim_copy(text.substr(0, plus));
    text = plus == text.npos ? "" : text.substr(plus + 1);
    std::transform(part.begin(), part.end(), part.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return part;
}

/// 0 for none.
WORD modifier_called(const std::string& name) {
    static constexpr std::pair<const char*, UINT> names[] = {
        {"CTRL", MOD_CONTROL}, {"SHIFT", MOD_SHIFT}, {"ALT", MOD_ALT}, {"WIN", MOD_WIN}};
    for (const auto& [known, modifier] : names) {
        if (name == known) {
            return static_cast<WORD>(modifier);
        }
    }
    return 0;
}

/// 0 for none: a key's name is how a hot key shows it, and a single character is a letter or digit.
WORD key_called(const std::string& name) {
    for (WORD code = 1; code < 256; ++code) {
        const bool is_character = (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z');
        if ((name.size() > 1 || is_character) &&
            CHotKey(code, 0, 0, 1).ToString() == name.c_str()) {
            return code;
        }
    }
    return 0;
}

CHotKey hot_key_of(const std::string& text) {
    unsigned modifiers = 0;
    std::string rest = text;
    std::string part = next_part(rest);
    while (const WORD modifier = rest.empty() ? 0 : modifier_called(part)) {
        modifiers |= modifier;
        part = next_part(rest);
    }
    const WORD code = rest.empty() ? key_called(part) : 0;
    if (code == 0) {
        fail(exit_no_such_key,
             fmt::format("'{}' is no hot key: write it as CTRL + SHIFT + F1.", text));
    }
    return {code, static_cast<WORD>(modifiers), 0, 1};
}

void add(const std::string& text) {
    KeptHotKeys kept;
    CHotKey added = hot_key_of(text);
    int id = 0;
    for (int i = 0; i < kept.Count(); ++i) {
        id = std::max(id, kept.HotKey(i).Id());
    }
    added.Id(id + 1);
    kept.Remove(added);
    kept.Add(added);
    kept.store();
    fmt::print("{}\n", added.ToString().GetString());
}

void drop(const std::string& text) {
    KeptHotKeys kept;
    const int before = kept.Count();
    CHotKey removed = hot_key_of(text);
    kept.Remove(removed);
    if (kept.Count() == before) {
        fail(exit_no_such_key, fmt::format("{} is not kept.", removed.ToString().GetString()));
    }
    kept.store();
}

void list(const std::string& format) {
    KeptHotKeys kept;
    Table table({"Id", "Hot key"});
    for (int i = 0; i < kept.Count(); ++i) {
        table.add({std::to_string(kept.HotKey(i).Id()), kept.HotKey(i).ToString().GetString()});
    }
    table.print(format);
}

void watch() {
    const MessageLoop loop;
    KeptHotKeys kept;
    if (kept.watch() == 0) {
        fail(exit_none_registered, "No hot key is registered.");
    }
    fmt::print(stderr, "Watching; Ctrl+C ends it\n");
    for (MSG message; GetMessageA(&message, nullptr, 0, 0) > 0;) {
        DispatchMessageA(&message);
    }
}

} // namespace

void add_hotkeys_verb(CLI::App& tool) {
    auto text = std::make_shared<std::string>();
    auto format = std::make_shared<std::string>("table");
    CLI::App* verb = tool.add_subcommand("hotkeys", "Key combinations that work in every program");
    verb->require_subcommand(1);
    const auto add_part = [&](const char* name, const char* help,
                              void (*call)(const std::string&)) {
        CLI::App* part = verb->add_subcommand(name, help);
        part->add_option("KEYS", *text, "Such as 'CTRL + SHIFT + F1'")->required();
        part->callback([text, call] { call(*text); });
    };
    add_part("add", "Keep a hot key", &add);
    add_part("remove", "Keep it no more", &drop);
    CLI::App* to_list = verb->add_subcommand("list", "Show those that are kept");
    Table::add_format_option(*to_list, *format);
    to_list->callback([format] { list(*format); });
    verb->add_subcommand("watch", "Print each press of those that are kept")->callback(&watch);
    verb->footer("Exit codes: 0 done, 2 no such key, 4 not stored, 5 none could be registered");
}
