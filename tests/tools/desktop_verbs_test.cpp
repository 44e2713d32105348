#include "tests/support/eventually.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"
#include "tests/support/x_server.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>

// The tool's verbs for the desktop, among programs that know nothing of it.

namespace {

using support::eventually;
using support::expect;
using support::has;
using support::run_tool;
using support::Tool;

TEST(NamesVerb, TranslatesBothWaysInTheUsersLanguage) {
    const std::pair<const char*, std::string> languages[] = {
        {"en", "Measure speed"}, {"de", "Antastgeschwindigkeit"}, {"fr", "Vitesse de palpage"}};
    for (const auto& [language, readable] : languages) {
        support::Environment environment;
        environment.speak(language);
        EXPECT_EQ(run_tool("names FEDRAT/MESVEL").output, readable + '\n');
        EXPECT_EQ(run_tool("names '" + readable + '\'').output, "FEDRAT/MESVEL\n");
        EXPECT_EQ(std::ranges::count(run_tool("names --format csv").output, '\n'), 43);
    }
}

TEST(WaitFileVerb, EndsWhenNobodyWritesTheFileAnyMore) {
    const support::TemporaryRegistry folder;
    const std::string path = folder.folder / "measured.txt";
    EXPECT_EQ(run_tool("wait-file " + path + " --timeout 20").exit_code, 2) << "is not there";
    Tool waiting("wait-file " + path + " --timeout 60000");
    const int writer = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    EXPECT_EQ(run_tool("wait-file " + path + " --timeout 20").exit_code, 2) << "is written";
    ::close(writer);
    EXPECT_EQ(waiting.wait(), 0);
}

struct DesktopVerbs : testing::Test {
    const support::TemporaryRegistry registry;
    support::XServer screen;
};

TEST_F(DesktopVerbs, KeysAreToldOrTypedForAStranger) {
    const std::string file = registry.folder / "typed";
    support::start_program({"xterm", "-T", "typing", "-e", "sh", "-c", "cat > " + file});
    support::window_titled("typing");
    expect({{"keys --dry-run '^S%{F4}+(AB)'", 0,
             "press CONTROL\npress S\nrelease S\nrelease CONTROL\n"
             "press MENU\npress F4\nrelease F4\nrelease MENU\n"
             "press SHIFT\npress A\nrelease A\npress B\nrelease B\nrelease SHIFT\n"},
            {"keys --dry-run 'A)'", 3, "press A\nrelease A\n"},
            {"keys '+(AB)C1{SUBTRACT}~'", 0, ""}});
    std::string typed;
    EXPECT_TRUE(
        eventually([&] { return std::getline(std::ifstream(file), typed) && !typed.empty(); }));
    EXPECT_EQ(typed, "ABc1-");
}

TEST_F(DesktopVerbs, WindowsOfStrangersAreFoundByClassAndTitle) {
    support::start_program({"env", "LC_ALL=C.UTF-8", "xterm", "-T", "Messwert ä 12", "-class",
                            "Feinzeiger", "-e", "sleep", "600"});
    EXPECT_TRUE(eventually([] { return run_tool("window --class Feinzeiger").exit_code == 0; }));
    const char* const found = "Class,Title\nFeinzeiger,Messwert ä 12\n";
    expect({{"window --format csv --title 'Messwert ä 12'", 0, found},
            {"window --format csv --title Mess --partial", 0, found},
            {"window --title Mess", 2, ""},
            {"window --class feinzeiger", 2, ""}});
}

TEST_F(DesktopVerbs, HotKeysAreKeptAndWatched) {
    expect({{"hotkeys watch", 5, ""},
            {"hotkeys add 'shift+ctrl+f1'", 0, "CTRL + SHIFT + F1\n"},
            {"hotkeys add 'WIN + B'", 0, "B\n"},
            {"hotkeys add 'ALT + A'", 0, "ALT + A\n"},
            {"hotkeys add 'CTRL + SHIFT + F1'", 0, "CTRL + SHIFT + F1\n"},
            {"hotkeys remove 'CTRL + F1'", 2, ""},
            {"hotkeys remove 'WIN + B'", 0, ""},
            {"hotkeys list --format csv", 0, "Id,Hot key\n3,ALT + A\n4,CTRL + SHIFT + F1\n"}});
    Tool watch("hotkeys watch");
    ASSERT_TRUE(watch.says("Watching"));
    support::xdotool("key alt+a key ctrl+F1 key ctrl+shift+F1");
    EXPECT_TRUE(watch.prints("CTRL + SHIFT + F1\n"));
    EXPECT_TRUE(has(watch.output(), "Z  ALT + A\n"));
    EXPECT_TRUE(has(run_tool("hotkeys watch").diagnostics, "ALT + A: somebody else has it\n"));
    watch.signal(SIGINT);
    EXPECT_EQ(watch.wait(), 0);

    screen.end();
    expect({{"keys A", 4, ""}, {"window --title x", 2, ""}, {"hotkeys watch", 5, ""}});
}

} // namespace
