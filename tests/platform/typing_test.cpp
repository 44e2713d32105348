#include "desktop/HotKeys.h"
#include "desktop/SendKeys.h"
#include "desktop/WindowSearch.h"
#include "platform/base/virtual_keys.h"
#include "platform/desktop/key_input.h"
#include "platform/messages/message.h"
#include "platform/windows/dialog.h"
#include "tests/support/child_process.h"
#include "tests/support/eventually.h"
#include "tests/support/resource_library.h"
#include "tests/support/x_server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using support::eventually;

constexpr xcb_keycode_t z_code = 52; // in the US layout
constexpr xcb_keycode_t menu_code = 135;

/// A program that prints the keys that it gets.
class Witness {
  public:
    Witness() {
        int pipe[2];
        EXPECT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
        program_ = support::start_program(
            {"sh", "-c", "exec xev -geometry 1280x1024+0+0 > /dev/fd/" + std::to_string(pipe[1])},
            pipe[1]);
        ::close(pipe[1]);
        output_ = pipe[0];
        while (!line().starts_with("EnterNotify")) {
        }
    }

    ~Witness() {
        ::kill(program_, SIGKILL);
        support::ended_well(program_);
        ::close(output_);
    }

    /// Whether just these keys come next: "+a -a", presses with the modifiers that are held,
    /// "+Control_L +a/4 -a -Control_L".
    bool gets(const std::string& keys) {
        std::string got;
        while (got.size() < keys.size() && keys.starts_with(got)) {
            got += (got.empty() ? "" : " ") + key();
        }
        EXPECT_EQ(got, keys);
        return got == keys;
    }

  private:
    std::string key() {
        std::string text = line();
        while (!text.starts_with("Key") || text.starts_with("Keymap")) {
            text = line();
        }
        const bool press = text.starts_with("KeyPress");
        line();
        char name[64] = "";
        unsigned state = 0;
        std::sscanf(line().c_str(), " state 0x%x, keycode %*d (keysym 0x%*x, %63[^)]", &state,
                    name);
        const unsigned held = press ? state & 0xD : 0;
        return (press ? '+' : '-') + (name + (held ? '/' + std::to_string(held) : ""));
    }

    /// Ends the test when there is none.
    std::string line() {
        while (read_.find('\n') == read_.npos) {
            char bytes[4096];
            pollfd entry{output_, POLLIN, 0};
            const bool came = ::poll(&entry, 1, 60'000) > 0;
            const auto count = came ? ::read(output_, bytes, sizeof bytes) : 0;
            if (count <= 0) {
                throw std::runtime_error("no key");
            }
            read_.append(bytes, static_cast<std::size_t>(count));
        }
        const std::string first = read_.substr(0, read_.find('\n'));
        read_.erase(0, first.size() + 1);
        return first;
    }

    pid_t program_ = -1;
    int output_ = -1;
    std::string read_;
};

struct Typing : testing::Test {
    const support::XServer screen{false};
    Witness witness;

    /// A lock is pressed once more, to be off again.
    void expect(const std::string& keys, const std::string& symbol) {
        for (int turn = 0; turn < (symbol.ends_with("_Lock") ? 2 : 1); ++turn) {
            EXPECT_EQ(SendKeyString(keys.c_str()), 0);
            EXPECT_TRUE(symbol.empty() || witness.gets('+' + symbol + " -" + symbol)) << keys;
        }
    }
};

/// What a key is called, its code, and what the X server calls it; a row each of consecutive codes.
constexpr const char* named_keys = R"(
    CANCEL 3 Cancel
    BACK 8 BackSpace  TAB 9 Tab
    CLEAR 12 Clear  RETURN 13 Return  ENTER 13 Return
    SHIFT 16 Shift_L  CONTROL 17 Control_L  MENU 18 Alt_L  PAUSE 19 Pause  CAPITAL 20 Caps_Lock
    + 16 Shift_L  ^ 17 Control_L  % 18 Alt_L
    ESCAPE 27 Escape
    SPACE 32 space  PRIOR 33 Prior  NEXT 34 Next  END 35 End  HOME 36 Home  LEFT 37 Left  UP 38 Up
    RIGHT 39 Right  DOWN 40 Down  SELECT 41 Select  PRINT 42 Print  EXECUTE 43 Execute
    SNAPSHOT 44 Print  INSERT 45 Insert  DELETE 46 Delete  DEL 46 Delete  HELP 47 Help
    LWIN 91 Super_L  RWIN 92 Super_R  APPS 93 Menu
    MULTIPLY 106 KP_Multiply  ADD 107 KP_Add  SEPARATOR 108 KP_Separator  SUBTRACT 109 KP_Subtract
    DECIMAL 110 KP_Decimal  DIVIDE 111 KP_Divide
    NUMLOCK 144 Num_Lock  SCROLL 145 Scroll_Lock
    LBUTTON 1 -  RBUTTON 2 -  MBUTTON 4 -
)";

constexpr const char* french_digits =
    "agrave ampersand eacute quotedbl apostrophe parenleft minus egrave underscore ccedilla";
constexpr const char* russian_letters =
    "ef i es ve u a pe er sha o el de softsign te shcha ze shorti ka yeru ie ghe em tse che en ya";

struct Key {
    std::string name; ///< in braces; none for what has none
    int code;
    std::string symbol;
};

std::vector<Key> keys_of(const std::string& layout) {
    std::vector<Key> keys;
    std::istringstream named(named_keys), digits(layout == "fr" ? french_digits : ""),
        letters(layout == "ru" ? russian_letters : "");
    for (Key key; named >> key.name >> key.code >> key.symbol;) {
        keys.push_back({key.name, key.code, key.symbol == "-" ? "" : key.symbol});
    }
    for (int number = 1; number <= 24; ++number) {
        const std::string name = 'F' + std::to_string(number);
        keys.push_back({name, 0x6F + number, name});
    }
    std::string symbol;
    for (char digit = '0'; digit <= '9'; ++digit) {
        keys.push_back({std::string("NUMPAD") + digit, 0x30 + digit, std::string("KP_") + digit});
        keys.push_back({"", digit, digits >> symbol ? symbol : std::string(1, digit)});
    }
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        keys.push_back(
            {"", letter - 0x20, letters >> symbol ? "Cyrillic_" + symbol : std::string(1, letter)});
    }
    return keys;
}

TEST_F(Typing, SendsTheKeyThatIsMeantInEachLayout) {
    for (const std::string layout : {"us", "de", "fr", "ru"}) {
        SCOPED_TRACE(layout);
        support::output_of("setxkbmap " + layout);
        std::map<int, std::string> symbols;
        for (const auto& [name, code, symbol] : keys_of(layout)) {
            symbols[code] = symbol;
            if (!name.empty()) {
                expect('{' + name + '}', symbol);
            }
        }
        symbols['~'] = "Return";
        for (int byte = 1; byte <= 255; ++byte) {
            const std::string key(1, static_cast<char>(byte));
            if (std::string("+^%(){").find(key) == std::string::npos) {
                expect(key, byte < 128 ? symbols[byte] : "");
            }
        }
        expect("{F5}", "F5");
    }
}

TEST_F(Typing, KeepsModifiersToTheirKeysAndLeavesNothingPressed) {
    const struct {
        const char* keys;
        int result;
        const char* seen;
    } cases[] = {
        {"+(AB)C", 0, "+Shift_L +A/1 -A +B/1 -B -Shift_L +c -c"},
        {"+^%(A)A", 0, "+Shift_L +Control_L/1 +Meta_L/5 +A/13 -A -Shift_L -Control_L -Alt_L +a -a"},
        {"^S%{F5", -1, "+Control_L +s/4 -s -Control_L"},
        {"+A)", -2, "+Shift_L +A/1 -A -Shift_L"},
        {"+(AB", 0, ""},
        {"+{xyz}", 0, "+Shift_L -Shift_L"},
        {"{NUMLOCK}{NUMPAD5}{HOME}c{NUMLOCK}", 0,
         "+Num_Lock -Num_Lock +KP_5 -KP_5 +Home -Home +KP_3 -KP_3 +Num_Lock -Num_Lock"},
    };

    for (const auto& [keys, result, seen] : cases) {
        EXPECT_EQ(SendKeyString(keys), result) << keys;
        EXPECT_TRUE(witness.gets(seen)) << keys;
    }
    std::string expected = "+Control_L";
    for (int key = 0; key < 300; ++key) {
        expected += " +s/4 -s";
    }
    EXPECT_EQ(SendKeyString(("^(" + std::string(300, 'S') + ')').c_str()), 0);
    EXPECT_TRUE(witness.gets(expected + " -Control_L"));

    support::xdotool("keydown shift"); // as a person may
    EXPECT_EQ(SendKeyString("A^B"), 0);
    support::xdotool("keyup shift");
    EXPECT_TRUE(witness.gets("+Shift_L +A/1 -A +Control_L/1 +B/5 -B -Control_L -Shift_L"));
}

TEST_F(Typing, LendsKeysUntilTheProcessEnds) {
    xcb_connection_t* const server = ::xcb_connect(nullptr, nullptr);
    const xcb_keysym_t nothing = XCB_NO_SYMBOL;
    EXPECT_EQ(::xcb_request_check(
                  server, ::xcb_change_keyboard_mapping_checked(server, 1, z_code, 1, &nothing)),
              nullptr);
    ::xcb_disconnect(server);
    const pid_t leaving = support::start_child([] {
        SendKeyString("+ZZ{EXECUTE}");
        const INPUT shift{INPUT_KEYBOARD, {{VK_SHIFT, 0, 0, 0, 0}}};
        EXPECT_EQ(SendInput(1, &shift, sizeof shift), 1U);
        std::raise(SIGSTOP);
        std::exit(testing::Test::HasFailure());
    });
    ::waitpid(leaving, nullptr, WUNTRACED);
    EXPECT_TRUE(witness.gets("+Shift_L +Z/1 -Z -Shift_L +z -z +Execute -Execute +Shift_L"));
    ::kill(leaving, SIGCONT);
    EXPECT_TRUE(support::ended_well(leaving));
    EXPECT_TRUE(witness.gets("-Shift_L"));
    EXPECT_EQ(support::output_of("xkbcomp $DISPLAY - 2>&1 | grep -cw -e Execute -e z"), "0");
    EXPECT_EQ(SendKeyString("A"), 0);
    EXPECT_TRUE(witness.gets("+a -a"));
}

struct TypingHotKey : CHotKeys {
    void OnHotKey(CHotKey) override {
        ++presses;
        SendKeyString("AB");
    }

    bool comes(int count) {
        return eventually([&] {
            for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
                DispatchMessageA(&message);
            }
            return presses == count;
        });
    }

    int presses = 0;
};

TEST_F(Typing, AnswersAHotKeyThatIsHeld) {
    TypingHotKey hot_key;
    hot_key.Add({VK_F1, 0, 1, 1});
    hot_key.Register();
    for (int press = 1; press < 6; press += 2) {
        support::xdotool("keydown F1");
        EXPECT_TRUE(hot_key.comes(press));
        EXPECT_TRUE(witness.gets("+a -a +b -b")) << "the keyboard is lent";
        support::xdotool("sleep 1 key x keyup F1 key F1 key x");
        EXPECT_TRUE(hot_key.comes(press + 1));
        EXPECT_TRUE(witness.gets("+x -x -F1 +x -x +a -a +b -b"));
    }
}

TEST_F(Typing, FollowsThePersonToAnotherLayout) {
    support::output_of("setxkbmap de,fr,ru -option grp:menu_toggle");
    xcb_connection_t* const person = ::xcb_connect(nullptr, nullptr);
    for (const char* const seen : {"+a -a +y -y +1 -1", "+a -a +y -y +ampersand -ampersand",
                                   "+Cyrillic_ef -Cyrillic_ef +Cyrillic_en -Cyrillic_en +1 -1"}) {
        EXPECT_EQ(SendKeyString("AY1"), 0);
        EXPECT_TRUE(witness.gets(seen));
        for (const int event : {XCB_KEY_PRESS, XCB_KEY_RELEASE}) {
            ::xcb_test_fake_input(person, static_cast<std::uint8_t>(event), menu_code, 0, XCB_NONE,
                                  0, 0, 0);
        }
        ::xcb_flush(person);
        EXPECT_TRUE(witness.gets("+ISO_Next_Group -ISO_Next_Group"));
    }
    ::xcb_disconnect(person);
}

TEST(TypingForLong, FollowsTheLayoutStill) {
    const support::XServer screen(false);
    const INPUT press{INPUT_KEYBOARD, {{'A', 0, 0, 0, 0}}};
    const INPUT release{INPUT_KEYBOARD, {{'A', 0, KEYEVENTF_KEYUP, 0, 0}}};
    std::vector<INPUT> in_one_go(160'000, press); // more than there are numbers of requests
    for (std::size_t i = 1; i < in_one_go.size(); i += 2) {
        in_one_go[i] = release;
    }
    EXPECT_EQ(SendInput(160'000, in_one_go.data(), sizeof press), 160'000U);
    EXPECT_EQ(SendKeyString(std::string(40'000, 'A').c_str()), 0);
    support::output_of("setxkbmap de");
    EXPECT_EQ(SendInput(1, &release, sizeof release), 1U) << "the server's answer was understood";
}

struct Entry : CDialog {
    Entry() : CDialog(100, nullptr) {}

    void OnOK() override {
        GetDlgItem(101)->GetWindowText(text);
        CDialog::OnOK();
    }

    CString text;
};

TEST(TypingIntoADialog, IsAsByHand) {
    const support::XServer screen;
    const support::ResourceLibrary library(R"(
100 DIALOG 0, 0, 90, 30
CAPTION "Entry"
BEGIN
    EDITTEXT 101, 4, 4, 60, 12
    DEFPUSHBUTTON "OK", IDOK, 66, 4, 20, 12
END)");
    Entry entry;
    std::thread typist([] {
        support::window_titled("Entry"); // Qt's
        EXPECT_TRUE(GetWindowFromTitle("Entr", 1));
        EXPECT_EQ(GetWindowFromClass("tarnel-presenter", 0), GetWindowFromTitle("Entry", 0));
        SendKeyString("AB{HOME}c{NUMPAD2}+C{END}{DIVIDE}~");
    });
    EXPECT_EQ(entry.DoModal(), IDOK);
    typist.join();
    EXPECT_STREQ(entry.text, "32Cab/");
}

} // namespace
