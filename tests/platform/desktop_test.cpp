#include "desktop/HotKeys.h"
#include "desktop/SendKeys.h"
#include "desktop/WindowSearch.h"
#include "platform/base/last_error.h"
#include "platform/base/virtual_keys.h"
#include "platform/companions/registry_bag.h"
#include "platform/desktop/foreign_windows.h"
#include "platform/desktop/hot_key.h"
#include "platform/desktop/key_input.h"
#include "platform/messages/message.h"
#include "tests/support/child_process.h"
#include "tests/support/eventually.h"
#include "tests/support/message_window.h"
#include "tests/support/reports.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/worker.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

namespace {

using support::eventually;
using support::xdotool;

using Reply = std::unique_ptr<void, decltype(&std::free)>;

/// Another program on the same screen.
class Stranger {
  public:
    ~Stranger() { ::xcb_disconnect(server); }

    /// Grabs the key with Ctrl, unless somebody else has it, and lets go of it.
    bool can_grab(xcb_keycode_t code, std::uint16_t modifiers = XCB_MOD_MASK_CONTROL) {
        const bool grabbed =
            !failed(::xcb_grab_key_checked(server, 0, root, modifiers, code, 1, 1));
        failed(::xcb_ungrab_key_checked(server, code, root, modifiers));
        return grabbed;
    }

    bool failed(xcb_void_cookie_t request) {
        return Reply(::xcb_request_check(server, request), &std::free) != nullptr;
    }

    /// Calls its window so as programs do that know nothing of UTF-8.
    void open_window(const char* title) {
        ::xcb_create_window(server, 0, window, root, 0, 0, 90, 90, 0, 1, 0, 0, nullptr);
        ::xcb_change_property(server, 0, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                              static_cast<std::uint32_t>(std::strlen(title)), title);
        ::xcb_map_window(server, window);
        ::xcb_flush(server);
    }

    xcb_connection_t* const server = ::xcb_connect(nullptr, nullptr);
    const xcb_window_t root = ::xcb_setup_roots_iterator(::xcb_get_setup(server)).data->root;
    const xcb_window_t window = ::xcb_generate_id(server);
};

constexpr xcb_keycode_t z_code = 52; // in the US layout
constexpr xcb_keycode_t x_code = 53;
constexpr xcb_keycode_t f1_code = 67;
constexpr xcb_keycode_t f8_code = 74;

struct Desktop : testing::Test {
    std::optional<support::XServer> screen{std::in_place};
    std::optional<Stranger> stranger{std::in_place};
};

struct Keys : CHotKeys {
    void OnHotKey(CHotKey hot_key) override { told += std::to_string(hot_key.Id()) + ' '; }

    /// What the message loop has brought since the last time.
    std::string take() {
        for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
            DispatchMessageA(&message);
        }
        return std::exchange(told, "");
    }

    /// What a person's keys bring, and then Ctrl+Shift+F1, the hot key 1.
    std::string told_of(const std::string& typed) {
        xdotool(typed + " key ctrl+shift+F1");
        std::string seen;
        EXPECT_TRUE(eventually([&] { return (seen += take()).ends_with("1 "); }));
        return seen;
    }

    std::string told;
};

TEST_F(Desktop, HotKeysAreToldWhateverIsLockedAndFreedWithTheirWindow) {
    ASSERT_FALSE(stranger->failed(::xcb_grab_key_checked(
        stranger->server, 0, stranger->root, XCB_MOD_MASK_4 | XCB_MOD_MASK_2, f8_code, 1, 1)));
    auto keys = std::make_unique<Keys>();
    for (const CHotKey& key :
         {CHotKey(VK_F1, MOD_CONTROL | MOD_SHIFT, 1, 1), CHotKey('A', MOD_ALT, 2, 1),
          CHotKey(VK_F1 + 7, MOD_WIN, 3, 1), CHotKey('Z', MOD_CONTROL, 4, 1)}) {
        keys->Add(key);
    }
    EXPECT_EQ(keys->Register(), 1);
    for (const char* const lock : {"Num_Lock", "Caps_Lock", "Num_Lock", "Caps_Lock"}) {
        EXPECT_EQ(keys->told_of(std::string("key ") + lock + " alt+a super+F8"), "2 1 ") << lock;
    }
    EXPECT_EQ(keys->told_of("keydown ctrl keydown z sleep 1.2 keyup z key z keyup ctrl"), "4 4 1 ");

    const support::MessageWindow window(support::ignore);

    const struct {
        UINT modifiers;
        UINT key;
        DWORD error;
    } refused[] = {
        {MOD_WIN, VK_F1 + 7, ERROR_HOTKEY_ALREADY_REGISTERED}, // by the stranger, with Num Lock
        {MOD_CONTROL, 'Z', ERROR_HOTKEY_ALREADY_REGISTERED},
        {MOD_CONTROL, VK_EXECUTE, ERROR_INVALID_PARAMETER},
        {0, 0, ERROR_INVALID_PARAMETER},
    };

    for (const auto& [modifiers, key, error] : refused) {
        EXPECT_FALSE(RegisterHotKey(window.handle, 1, modifiers, key));
        EXPECT_EQ(GetLastError(), error);
    }
    EXPECT_TRUE(stranger->can_grab(f8_code, XCB_MOD_MASK_4)) << "what could be had was given back";
    EXPECT_TRUE(RegisterHotKey(window.handle, 1, MOD_CONTROL, 'X'));
    EXPECT_TRUE(UnregisterHotKey(window.handle, 1));
    EXPECT_TRUE(stranger->can_grab(x_code));
    EXPECT_FALSE(UnregisterHotKey(window.handle, 1));
    EXPECT_EQ(GetLastError(), ERROR_HOTKEY_NOT_REGISTERED);
    const support::Worker worker([&]() -> DWORD {
        EXPECT_FALSE(RegisterHotKey(window.handle, 1, 0, 'X'));
        EXPECT_EQ(GetLastError(), ERROR_WINDOW_OF_OTHER_THREAD);
        const HWND left = (new support::MessageWindow(support::ignore))->handle;
        EXPECT_FALSE(RegisterHotKey(left, 1, MOD_CONTROL, 'Z'));
        EXPECT_TRUE(RegisterHotKey(left, 1, MOD_CONTROL, 'X'));
        EXPECT_FALSE(stranger->can_grab(x_code));
        return 0;
    });
    EXPECT_TRUE(stranger->can_grab(x_code)) << "the thread has ended";

    support::output_of("setxkbmap de"); // Z lies elsewhere
    EXPECT_TRUE(eventually([&] { return keys->told_of("key ctrl+z") == "4 1 "; }));
    EXPECT_TRUE(stranger->can_grab(z_code));
    Keys others;
    others.Add({'X', MOD_CONTROL, 5, 1});
    const support::TemporaryRegistry registry;
    IPropertyBag* const bag = tarnel::make_registry_bag(HKEY_CURRENT_USER);
    EXPECT_EQ(others.Save(bag, 1, 1), 0);
    EXPECT_EQ(keys->Load(bag, nullptr), 0);
    bag->Release();
    EXPECT_TRUE(stranger->can_grab(f1_code, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT));
    EXPECT_FALSE(stranger->can_grab(x_code)) << "what is loaded is registered";
    keys.reset();
    EXPECT_TRUE(stranger->can_grab(x_code));
}

TEST_F(Desktop, WindowsAreFoundFromTheTop) {
    std::vector<HWND> windows;
    for (const char* const title : {"Messwert ä 12", "Messwert 13"}) {
        // Not a shell, which gives its window a title of its own.
        support::start_program({"env", "LC_ALL=C.UTF-8", "xterm", "-T", title, "-class",
                                "Feinzeiger", "-e", "sleep", "600"});
        EXPECT_TRUE(eventually([&] { return GetWindowFromTitle(title, 0); })) << title;
        windows.push_back(GetWindowFromTitle(title, 0));
    }
    EXPECT_TRUE(eventually([] { // it has the keyboard: nobody raises it any more
        xdotool("search --name 13$ windowactivate");
        return xdotool("getactivewindow getwindowname") == "Messwert 13";
    }));
    EXPECT_FALSE(IsWindow(windows[0]));
    EXPECT_EQ(GetWindowFromTitle("messwert", 1), nullptr);
    EXPECT_EQ(GetWindowFromClass("Feinz", 0), nullptr);
    for (const auto& [title, window] : {std::pair("12", windows[0]), {"13", windows[1]}}) {
        xdotool(std::string("search --name ") + title + "$ windowraise");
        EXPECT_TRUE(eventually([&, top = window] { return GetWindowFromTitle("", 1) == top; }))
            << title;
        EXPECT_EQ(GetWindowFromTitle("Messwert", 1), window);
        EXPECT_EQ(GetWindowFromClass("Feinzeiger", 0), window);
    }
    stranger->open_window("Pr\xFC"
                          "fling");
    EXPECT_TRUE(eventually([] { return GetWindowFromTitle("Prüfling", 0); }));
    stranger.reset();
    EXPECT_TRUE(eventually([] { return !GetWindowFromTitle("Prüf", 1); }));
}

void expect_no_desktop() {
    const INPUT key{INPUT_KEYBOARD, {{'A', 0, 0, 0, 0}}};
    EXPECT_EQ(SendInput(1, &key, sizeof key), 0U);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_FALSE(RegisterHotKey(nullptr, 1, MOD_CONTROL, 'Y'));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    SetLastError(0);
    EXPECT_FALSE(EnumWindows([](HWND, LPARAM) { return TRUE; }, 0));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
}

TEST_F(Desktop, IsMissedWhenItIsGone) {
    const support::Reports reports;
    Keys keys;
    keys.Add({'Z', MOD_CONTROL, 1, 1});
    keys.Register();
    EXPECT_FALSE(stranger->can_grab(z_code));
    EXPECT_EQ(SendKeyString("A"), 0);
    GetWindowFromTitle("", 0);
    stranger.reset();
    screen->end();
    EXPECT_TRUE(eventually([&] { return keys.take().empty() && reports.count("X server") == 1; }));
    expect_no_desktop();
    screen.reset();
    support::Environment environment;
    environment.set("DISPLAY", std::nullopt);
    expect_no_desktop();

    screen.emplace();
    EXPECT_TRUE(RegisterHotKey(nullptr, 1, MOD_CONTROL, 'Z'));
    EXPECT_FALSE(std::make_unique<Stranger>()->can_grab(z_code));
    EXPECT_TRUE(UnregisterHotKey(nullptr, 1));
    EXPECT_EQ(reports.lines().size(), 1U);
}

} // namespace
