#include "platform/base/last_error.h"
#include "platform/comm/port_names.h"
#include "tests/support/child_process.h"
#include "tests/support/eventually.h"
#include "tests/support/pty.h"
#include "tests/support/sound_card/sound_card.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"
#include "tests/support/x_server.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

// `tarnel doctor` with each of the causes that it knows.

namespace {

namespace fs = std::filesystem;
using support::has;

class Doctor : public testing::Test {
  protected:
    Doctor() {
        fs::permissions(registry.folder, fs::perms(0755)); // nobody may look
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "LC_ALL",
                                 "LC_MESSAGES", "LANGUAGE", "TARNEL_PRESENTER"}) {
            environment.set(name, std::nullopt);
        }
        environment.set("LANG", "C.UTF-8");
        environment.set("TARNEL_COM5", machine.path());
    }

    ~Doctor() override {
        for (const pid_t program : programs) {
            ::kill(program, SIGKILL);
            ::waitpid(program, nullptr, 0);
        }
    }

    /// Runs it on `arguments`, or on a port without faults; what it says must contain all of
    /// `parts`.
    void expect(int exit_code, const std::vector<std::string>& parts,
                const std::string& arguments = "") const {
        const auto result =
            support::run_tool("doctor " + (arguments.empty() ? "COM5:" : arguments) + " 2>&1");
        EXPECT_EQ(result.exit_code, exit_code) << result.output;
        for (const std::string& part : parts) {
            EXPECT_TRUE(has(result.output, part)) << "lacks: " << part;
        }
    }

    void start(const std::vector<std::string>& command) {
        programs.push_back(support::start_program(command));
    }

    /// In the registry's folder.
    std::string write(const std::string& name, const std::string& text, int mode = 0644) const {
        const fs::path path = registry.folder / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path) << text;
        fs::permissions(path, fs::perms(mode));
        return path;
    }

    const support::TemporaryRegistry registry;
    const support::Pty machine;
    const support::NoSoundCard no_sound;
    support::Environment environment;
    std::vector<pid_t> programs;
};

TEST_F(Doctor, KnowsWhyAPortCannotBeUsed) {
    const std::string& port = machine.path();
    expect(0, {"OK            " + port + " may be opened", "serial ports             works"}, port);
    const int held = ::open(port.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    expect(1, {port + " is in use by doctor-test.", "kill " + std::to_string(::getpid())}, port);
    ::close(held);
    constexpr gid_t tty = 5; // not every system gives it to pseudo terminals by itself
    EXPECT_TRUE(::geteuid() != 0 || ::chown(port.c_str(), 0, tty) == 0);
    const std::string denied = port + " may not be opened by you";
    for (const auto& [mode, cure] :
         {std::pair(0, "sudo chown "), {0060, "sudo usermod -aG tty "}}) {
        ::chmod(port.c_str(), static_cast<mode_t>(mode));
        support::as_nobody([&, cure = cure] {
            expect(1, {denied, cure, "points                   does not: " + denied}, port);
        });
    }
    expect(1,
           {"foo cannot be found", "/etc/passwd is no serial port", "/dev/null is no serial port",
            "COM99 (/dev/ttyS98) cannot be found", "tarnel ports map COM99:"},
           "foo /etc/passwd /dev/null COM99");
}

TEST_F(Doctor, KnowsNamesThatLeadNowhereAndProgramsThatTakePorts) {
    EXPECT_EQ(tarnel::map_port(41, "/absent/a", tarnel::PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::map_port(42, "/absent/b", tarnel::PortMap::machine), ERROR_SUCCESS);
    environment.set("TARNEL_COM43", "/absent/c");
    for (const char* program : {"ModemManager", "brltty"}) {
        fs::copy("/bin/sleep", registry.folder / program);
        start({registry.folder / program, "600"});
    }
    const std::vector<std::string> causes = {
        "COM41: (/absent/a) cannot be found", ": tarnel ports unmap COM41:",
        "COM42: (/absent/b) cannot be found", ": sudo tarnel ports unmap --machine COM42:",
        "COM43: (/absent/c) cannot be found", ": unset TARNEL_COM43"};
    expect(1, causes, "COM41: COM42: COM43:");
    EXPECT_TRUE(support::eventually([] { // they have to become what they are called first
        return has(support::run_tool("doctor").output, "brltty is running");
    }));
    expect(0, {"sudo systemctl disable --now ModemManager", "sudo apt-get remove brltty"});
}

TEST_F(Doctor, KnowsHowTheSettingsAreAndLeavesThemAlone) {
    expect(0, {"You have no settings yet", "The machine has no settings yet"});
    EXPECT_TRUE(fs::is_empty(registry.folder));
    support::as_nobody([this] {
        expect(1,
               {"user.db cannot be made", "sudo install -d -o ", "sudo tarnel ports, which makes"});
    });
    for (const auto map : {tarnel::PortMap::user, tarnel::PortMap::machine}) {
        EXPECT_EQ(tarnel::map_port(41, "/absent", map), ERROR_SUCCESS);
    }
    tarnel::close_registry();
    expect(0, {"Your settings are in ", "The machine's settings are in "});
    EXPECT_FALSE(fs::exists(registry.folder / "user.db-wal"));
    support::as_nobody([this] {
        expect(1, {"sudo chown -R ", "may not write to the machine's settings in ",
                   "settings of the machine  does not: you may not write"});
    });
    write("user.db", "no database");
    write("machine.db.damaged-1", "");
    write("machine.db.damaged-1-journal", "");
    expect(1, {"user.db are damaged: a program that meets",
               "machine.db.damaged-1 was damaged, and has been set aside.",
               "machine.db.damaged-1* when it is not needed any more\n\nDesktop"});
    EXPECT_EQ(fs::file_size(registry.folder / "user.db"), 11U);
    for (const char* name : {"TARNEL_REGISTRY_DIR", "HOME", "XDG_CONFIG_HOME"}) {
        environment.set(name, std::nullopt);
    }
    expect(1, {"HOME is not set"});
}

TEST_F(Doctor, KnowsWhyThereIsNoDesktop) {
    expect(0, {"There is no display (DISPLAY is not set)", "hot keys                 does not: "});
    environment.set("WAYLAND_DISPLAY", "wayland-0");
    expect(1, {"This is a Wayland desktop without X"});

    const int silent = ::socket(AF_INET, SOCK_STREAM, 0); // takes connections and says nothing
    sockaddr_in address{};
    address.sin_family = AF_INET;
    socklen_t size = sizeof address;
    EXPECT_EQ(::listen(silent, 8), 0);
    ::getsockname(silent, reinterpret_cast<sockaddr*>(&address), &size);
    environment.set("DISPLAY", "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - 6000));
    expect(1, {"window search            does not: The X server of 127.0.0.1:"});
    ::close(silent);
    expect(1, {" cannot be reached, or refuses you", "xhost +si:localuser:"});

    const std::string number = registry.folder / "display";
    start({"sh", "-c", "exec Xvfb -displayfd 3 -nolisten tcp -extension XTEST 3>" + number});
    std::string line;
    EXPECT_TRUE(support::eventually(
        [&] { return !std::getline(std::ifstream(number), line).eof() && !line.empty(); }));
    environment.set("DISPLAY", ":" + line);
    expect(1, {"typing                   does not: the X server lacks the extension XTEST",
               "hot keys                 works: in programs of X alone",
               "window search            works", "dialogs                  works"});
}

TEST_F(Doctor, KnowsWhyDialogsAreNotShown) {
    const support::XServer screen;
    const std::string plugin = "no Qt platform plugin could be initialized";

    const struct {
        std::string presenter;
        int exit_code;
        std::vector<std::string> parts;
    } causes[] = {
        {"", 0, {"dialogs                  does not: TARNEL_PRESENTER is empty"}},
        {"/absent", 1, {"/absent, which shows dialogs, is missing", "unset TARNEL_PRESENTER"}},
        {write("plain", ""), 1, {"You may not run ", "plain\n", "sudo chmod 755 "}},
        {write("odd", "#!/bin/sh\necho \"" + plugin + "\n\n\" >&2\n", 0755),
         1,
         {"odd does not answer: " + plugin + ".\n", "install --reinstall libqt6gui6"}},
    };

    expect(0, {"The program that shows dialogs starts.", "typing                   works\n"});
    for (const auto& [presenter, exit_code, parts] : causes) {
        environment.set("TARNEL_PRESENTER", presenter);
        expect(exit_code, parts);
    }
}

TEST_F(Doctor, KnowsTheLanguage) {
    const std::string damaged = write("res/xx/TarnelToolBoxLib.rc", "BEGIN");

    const struct {
        const char* locale;
        std::optional<std::string> folder;
        int exit_code;
        std::vector<std::string> parts;
    } causes[] = {
        {"C.UTF-8", std::nullopt, 0, {"Dialogs speak English.\n\nSound"}},
        {"de_DE", std::nullopt, 0, {"Dialogs speak your language: ", "/de/TarnelToolBoxLib.rc."}},
        {"xx_YY", std::nullopt, 0, {"no texts for 'xx_YY'", "the locale xx_YY, which LANG asks"}},
        {"de_DE", "/absent", 1, {"languages, /absent, is missing", "unset TARNEL_RESOURCE_DIR"}},
        {"xx_YY", registry.folder / "res", 1, {damaged + " is damaged"}},
    };

    for (const auto& [locale, folder, exit_code, parts] : causes) {
        environment.set("LANG", locale);
        environment.set("TARNEL_RESOURCE_DIR", folder);
        expect(exit_code, parts);
    }
}

TEST_F(Doctor, KnowsTheSoundAndPrintsJson) {
    {
        support::SoundCard card;
        expect(0, {R"({"service": "tones", "state": "works"})", R"("level": "OK")"},
               "--format json COM5");
        card.set_busy(true);
        expect(1, {"fuser -v /dev/snd/*", "tones                    does not: "});
    }
    expect(0, {"There is no sound device.", "waiting for files        works"});
}

} // namespace
