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

/// What a person reads and presses.
struct Language {
    const char* locale;
    const char* line;
    const char* encoders;
    const char* probe;
    const char* rate_key;
};

constexpr Language languages[] = {
    {"en_US.UTF-8", "Serial Port Configuration", "Initialising Encoders", "Probe Selection",
     "key alt+r"},
    {"de_DE.UTF-8", "Serielle Schnittstelle", "Drehgeber initialisieren", "Tasterauswahl",
     "key alt+b"},
};

class Dialogs : public testing::TestWithParam<Language> {
  protected:
    Dialogs() {
        for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) {
            environment.set(variable, std::nullopt);
        }
        environment.set("LANG", GetParam().locale);
    }

    /// Runs the tool with the person's help.
    void expect(const std::string& arguments, const std::vector<Step>& steps, int exit_code,
                const std::string& output) {
        SCOPED_TRACE(arguments);
        Tool tool(arguments);
        for (const Step& step : steps) {
            const std::string window = support::window_titled(step.title);
            support::xdotool("sleep 0.2"); // a person needs longer to find the keys
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

INSTANTIATE_TEST_SUITE_P(, Dialogs, testing::ValuesIn(languages));

TEST_P(Dialogs, AreUsedByKeyboardAlone) {
    const auto& [locale, line, encoders, probe, rate_key] = GetParam();
    expect(
        "line edit arm",
        {{line, {"key Down Down", rate_key, "key Up Tab Down Tab o Tab 2 Tab Tab space Return"}}},
        0, "COM3: 7200,8,1,2 (X  )");
    expect("line edit arm --locked", {{line, {rate_key, "key Down Return"}}}, 0, "COM3: 9600,8");
    expect("line edit arm", {{line, {rate_key, "key Up Escape"}}}, 5, "");
    EXPECT_TRUE(has(run_tool("line show arm").output, "9600"));
    expect("encoders 2 --user-controlled", {{encoders, {"key Tab Tab space"}}}, 0,
           "all 2 encoders are initialised");
    expect("probe", {{probe, {"key Up Up Return"}}, {"tarnel", {"key Return"}}}, 0, "probe 3");
}

TEST_P(Dialogs, AreUsedByMouseAlone) {
    const auto& [locale, line, encoders, probe, rate_key] = GetParam();
    expect("line edit arm --alternative", {{line, {"at 60 135", "at 20 185", "at 24 214"}}}, 0,
           "COM1: 9600,7,2,0 ( X )");
    expect("encoders 3 --user-controlled --set-home", {{encoders, {"at 112 150"}}}, 0,
           "all 3 encoders are initialised");
    expect("encoders 8", {{encoders, {"at 187 250"}}}, 5, "");
    expect("probe", {{probe, {"at 151 23", "at 191 31"}}}, 5, "");
}

TEST_P(Dialogs, EndWithCtrlC) {
    Tool tool("monitor METROLEC --port /dev/nothing");
    support::window_titled("METROLEC"); // the box that says why there is no connection
    tool.signal(SIGINT);
    EXPECT_EQ(tool.wait(), 4) << tool.diagnostics();
}

TEST_P(Dialogs, LetAGLibHostsTimersGoOn) {
    const std::string dialog = GetParam().line;
    const std::string ticks = registry.folder / "ticks";
    const pid_t glib = support::start_program({"sh", "-c", "exec " TARNEL_GLIB_HOST " >" + ticks});
    support::window_titled(dialog);
    EXPECT_TRUE(support::eventually(
        [&] { return support::output_of("cat " + ticks).find("tick 3") != std::string::npos; }));
    support::xdotool("key Escape");
    int status = 0;
    EXPECT_EQ(::waitpid(glib, &status, 0), glib);
    EXPECT_EQ(status, 0);
}

#ifdef TARNEL_QT_HOST // which no sanitizer follows

TEST_P(Dialogs, LetAQtHostsTimersGoOn) {
    const std::string dialog = GetParam().line;
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

#endif

} // namespace
