#include "tests/support/eventually.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"
#include "tests/support/x_server.h"

#include <sys/wait.h>

#include <csignal>
#include <vector>

// The library's dialogs on a screen, with a person who sees and touches nothing else.

namespace {

using support::has;
using support::run_tool;
using support::Tool;

/// What the person does once the window with that title takes the keys: "key ..." or "type ..." of
/// xdotool, or "at X Y", a click there in dialog units.
struct Step {
    const char* title;
    std::vector<const char*> acts;
};

void act(const std::string& window, const std::string& what) {
    int x = 0, y = 0;
    if (std::sscanf(what.c_str(), "at %d %d", &x, &y) == 2) {
        support::xdotool("mousemove --window " + window + ' ' + std::to_string(x * 6 / 4) + ' ' +
                         std::to_string(y * 13 / 8) + " click 1");
    } else {
        support::xdotool(what);
    }
}

class Dialogs : public testing::Test {
  protected:
    /// Runs the tool with the person's help.
    void expect(const std::string& arguments, const std::vector<Step>& steps, int exit_code,
                const std::string& output) {
        SCOPED_TRACE(arguments);
        Tool tool(arguments);
        for (const Step& step : steps) {
            const std::string window = support::window_titled(step.title);
            for (const char* what : step.acts) {
                act(window, what);
            }
        }
        EXPECT_EQ(tool.wait(), exit_code) << tool.diagnostics();
        EXPECT_TRUE(has(tool.output(), output));
    }

    const support::TemporaryRegistry registry;
    support::XServer screen;
    support::Environment environment;
};

TEST_F(Dialogs, AreUsedByKeyboardAlone) {
    const char* const line = "Serial Port Configuration";
    expect("line edit arm",
           {{line,
             {"key alt+p Down Down alt+r Up Tab Down Tab o Tab 2 alt+p"
              " Tab Tab Tab Tab Tab Tab space Return"}}},
           0, "COM3: 7200,8,1,2");
    expect("line edit arm --locked", {{line, {"key alt+r Down Return"}}}, 0, "COM3: 9600,8");
    expect("line edit arm", {{line, {"key alt+r Up Escape"}}}, 5, "");
    EXPECT_TRUE(has(run_tool("line show arm").output, "9600"));
    expect("encoders 2 --user-controlled", {{"Initialising Encoders", {"key Tab Tab space"}}}, 0,
           "all 2 encoders are initialised");
    expect("probe", {{"Probe Selection", {"key Up Up Return"}}, {"tarnel", {"key Return"}}}, 0,
           "probe 3");
}

TEST_F(Dialogs, AreUsedByMouseAlone) {
    expect("line edit arm --alternative",
           {{"Serial Port Configuration", {"at 60 135", "at 20 185", "at 24 214"}}}, 0,
           "COM1: 9600,7,2,0 ( X )");
    expect("encoders 3 --user-controlled --set-home", {{"Initialising Encoders", {"at 112 150"}}},
           0, "all 3 encoders are initialised");
    expect("encoders 8", {{"Initialising Encoders", {"at 187 250"}}}, 5, "");
    expect("probe", {{"Probe Selection", {"at 151 23", "at 191 31"}}}, 5, "");
}

TEST_F(Dialogs, SpeakTheUsersLanguage) {
    environment.speak("de");
    expect("line edit arm", {{"Serielle Schnittstelle", {"key alt+b Down Return"}}}, 0,
           "COM1: 14400");
    expect("probe", {{"Tasterauswahl", {"type 12", "key Return"}}, {"tarnel", {"key Return"}}}, 0,
           "probe 12");
}

TEST_F(Dialogs, LetTheirHostsTimersGoOn) {
    const std::string dialog = "Serial Port Configuration";
    const std::string ticks = registry.folder / "ticks";
    const pid_t glib = support::start_program({"sh", "-c", "exec " TARNEL_GLIB_HOST " >" + ticks});
    support::window_titled(dialog);
    EXPECT_TRUE(support::eventually(
        [&] { return support::output_of("cat " + ticks).find("tick 3") != std::string::npos; }));
    support::xdotool("key Escape");
    int status = 0;
    EXPECT_EQ(::waitpid(glib, &status, 0), glib);
    EXPECT_EQ(status, 0);

    const pid_t qt = support::start_program({TARNEL_QT_HOST});
    std::string host;
    EXPECT_TRUE(support::eventually([&] {
        host = support::xdotool("search --onlyvisible --name '^Measuring'");
        return !host.empty() && support::xdotool("getactivewindow") == host;
    }));
    support::xdotool("key space");
    support::window_titled(dialog);
    const std::string before = support::xdotool("getwindowname " + host);
    EXPECT_TRUE(
        support::eventually([&] { return support::xdotool("getwindowname " + host) != before; }));
    support::xdotool("key Escape");
    EXPECT_TRUE(support::eventually([&] { return support::xdotool("getactivewindow") == host; }));
    ::kill(qt, SIGKILL);
    ::waitpid(qt, nullptr, 0);
}

} // namespace
