#include "platform/base/last_error.h"
#include "platform/comm/port_holder.h"
#include "platform/comm/port_list.h"
#include "platform/comm/port_names.h"
#include "platform/registry/registry.h"
#include "tests/support/tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using std::filesystem::path;
using tarnel::PortMap;

/// A folder of its own, in which the registry lives as well.
class Ports : public testing::Test {
  public:
    ~Ports() override {
        use_registry(folder_);
        std::filesystem::remove_all(folder_);
        for (const char* variable : {"TARNEL_REGISTRY_DIR", "TARNEL_COM3", "TARNEL_COM41"}) {
            ::unsetenv(variable);
        }
    }

  protected:
    Ports() {
        std::string pattern = std::filesystem::temp_directory_path() / "ports-XXXXXX";
        folder_ = std::filesystem::canonical(::mkdtemp(pattern.data()));
        use_registry(folder_);
    }

    static void use_registry(const path& folder) {
        tarnel::close_registry();
        ::setenv("TARNEL_REGISTRY_DIR", folder.c_str(), 1);
    }

    void write(const path& name, const std::string& text) const {
        std::filesystem::create_directories((folder_ / name).parent_path());
        std::ofstream(folder_ / name) << text << "\n";
    }

    /// A relative link, as the system makes them.
    void link(const path& name, const path& target) const {
        std::filesystem::create_directories((folder_ / name).parent_path());
        std::filesystem::create_symlink(target.lexically_relative(name.parent_path()),
                                        folder_ / name);
    }

    path folder_;
};

class Names : public Ports {};

TEST_F(Names, AreComAndANumberOrPaths) {
    for (const char* name : {"COM3", "com3:", "\\\\.\\Com3", "\\\\.\\COM3:"}) {
        EXPECT_EQ(tarnel::com_number(name), 3U) << name;
    }
    EXPECT_EQ(tarnel::resolve_port("COM300:"), "/dev/ttyS299");
    EXPECT_EQ(tarnel::resolve_port("/dev/serial/by-id/x"), "/dev/serial/by-id/x");
    for (const char* name : {"", "C", "COM", "COM:", "COM0", "COM03", "COM-1", "COM 3",
                             "COM3::", "COM3x", "LPT1", "COM99999999999", "ttyS0"}) {
        EXPECT_EQ(tarnel::resolve_port(name), std::nullopt) << name;
    }
}

TEST_F(Names, AreAskedFromTheEnvironmentDownToTheMachine) {
    EXPECT_EQ(tarnel::map_port(3, "/dev/machine", PortMap::machine), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/machine");
    EXPECT_EQ(tarnel::map_port(3, "/dev/user", PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/user");
    ::setenv("TARNEL_COM3", "/dev/environment", 1);
    ::setenv("TARNEL_COM41", "/dev/other", 1);
    const std::map<unsigned, std::string> ports{{3, "/dev/environment"}, {41, "/dev/other"}};
    EXPECT_EQ(tarnel::mapped_ports(), ports);
    ::setenv("TARNEL_COM3", "", 1);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/user") << "an empty variable says nothing";

    EXPECT_EQ(tarnel::unmap_port(3, PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::unmap_port(3, PortMap::user), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/machine");
    EXPECT_EQ(tarnel::unmap_port(3, PortMap::machine), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/ttyS2");
}

TEST_F(Names, AMapHasEachNameAndEachDeviceOnce) {
    for (const auto& [number, device] : std::map<unsigned, std::string>{{3, "/a"}, {4, "/b"}}) {
        EXPECT_EQ(tarnel::map_port(number, device, PortMap::user), ERROR_SUCCESS);
    }
    EXPECT_EQ(tarnel::map_port(3, "/b", PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::mapped_ports(), (std::map<unsigned, std::string>{{3, "/b"}}));
    EXPECT_EQ(tarnel::map_port(3, "/B", PortMap::user), ERROR_SUCCESS);
    tarnel::close_registry();
    EXPECT_EQ(tarnel::mapped_ports(), (std::map<unsigned, std::string>{{3, "/B"}}));
}

TEST_F(Names, AMapIsRegistryValuesAmongWhichOthersMayStand) {
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "HARDWARE\\DEVICEMAP\\SERIALCOMM", 0,
                            KEY_READ | KEY_WRITE, &key),
              0);
    const auto set = [key](const char* name, DWORD type, const std::string& bytes) {
        EXPECT_EQ(RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                                 static_cast<DWORD>(bytes.size())),
                  0);
    };
    set("/a", REG_SZ, "LPT1");
    set("/b", REG_DWORD, "COM5");
    set("/c", REG_SZ, std::string(500, 'C'));
    set("/d", REG_SZ, "COM6"); // without its zero
    EXPECT_EQ(tarnel::mapped_ports(), (std::map<unsigned, std::string>{{6, "/d"}}));

    EXPECT_EQ(tarnel::map_port(7, "/e", PortMap::machine), ERROR_SUCCESS);
    std::array<char, 16> text{};
    DWORD size = text.size();
    EXPECT_EQ(
        RegQueryValueExA(key, "/e", nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &size),
        0);
    EXPECT_STREQ(text.data(), "COM7");
    EXPECT_EQ(RegCloseKey(key), 0);
}

/// What a system shows of its devices: `sys/` and `dev/` in the test's folder.
class System : public Ports {
  protected:
    /// A tty whose hardware is at `hardware`; "" for one that has none.
    void add_tty(const std::string& name, const path& hardware, bool with_device = true) {
        const path entry = hardware.empty() ? "sys/devices/virtual/tty/" + name
                                            : (hardware / "tty" / name).string();
        write(entry / "dev", "0:0");
        if (!hardware.empty()) {
            link(entry / "device", hardware);
        }
        link("sys/class/tty/" + name, entry);
        if (with_device) {
            write("dev/" + name, "");
        }
    }

    void add_driver(const path& hardware, const std::string& bus, const std::string& driver) {
        write("sys/bus/" + bus + "/drivers/" + driver + "/uevent", "");
        link(hardware / "driver", "sys/bus/" + bus + "/drivers/" + driver);
        link(hardware / "subsystem", "sys/bus/" + bus);
    }

    /// A converter with one channel; the hardware of its tty.
    path add_converter(const std::string& name, bool with_device = true) {
        const path device = "sys/devices/pci0/usb1/" + name + "-usb";
        write(device / "idVendor", "0403");
        write(device / "idProduct", "6001");
        write(device / "manufacturer", "FTDI");
        write(device / "product", "FT232R USB UART");
        write(device / "serial", "A1" + name);
        path hardware = device / "1-1:1.0" / name;
        write(hardware.parent_path() / "bInterfaceNumber", "00");
        write(hardware / "port_number", "0");
        add_driver(hardware, "usb-serial", "ftdi_sio");
        add_tty(name, hardware, with_device);
        return hardware;
    }

    /// An on-board port, with the two levels that the kernel has between it and its driver.
    void add_on_board(const std::string& name, const std::string& type) {
        const path chip = "sys/devices/pnp0/" + name;
        add_driver(chip, "pnp", "serial");
        add_driver(chip / "0", "serial-base", "ctrl");
        add_driver(chip / "0/0.0", "serial-base", "port");
        add_tty(name, chip / "0/0.0");
        write(chip / "0/0.0/tty" / name / "type", type);
    }

    std::vector<tarnel::PortInfo> list() const {
        return tarnel::list_ports({folder_ / "sys", folder_ / "dev"});
    }
};

TEST_F(System, ListsThePortsThatHaveHardware) {
    EXPECT_TRUE(list().empty()) << "not even folders";
    for (const char* name : {"ttyUSB10", "ttyUSB9"}) {
        add_converter(name);
    }
    add_converter("ttyUSB3", false); // no device file: cannot be opened here
    add_on_board("ttyS0", "4");
    add_on_board("ttyS1", "0");
    for (const char* name : {"console", "tty1", "ptmx"}) {
        add_tty(name, "");
    }
    const path modem = "sys/devices/pci0/usb1/1-2/1-2:1.0";
    write(modem.parent_path() / "idVendor", "2341");
    add_driver(modem, "usb", "cdc_acm");
    add_tty("ttyACM0", modem);
    link("dev/serial/by-id/usb-FTDI_A1ttyUSB9-if00-port0", "dev/ttyUSB9");
    link("dev/serial/by-path/pci-0-usb-0:1:1.0-port0", "dev/ttyUSB9");
    link("dev/serial/by-id/a-dangling-one", "dev/ttyUSB77");

    const auto ports = list();
    std::vector<std::string> found;
    found.reserve(ports.size());
    for (const auto& port : ports) {
        found.push_back(port.device.substr((folder_ / "dev/").string().size()) + " " + port.driver);
    }
    ASSERT_EQ(found, (std::vector<std::string>{"ttyACM0 cdc_acm", "ttyS0 serial",
                                               "ttyUSB9 ftdi_sio", "ttyUSB10 ftdi_sio"}));
    EXPECT_EQ(ports[0].usb.vendor_id, "2341");
    EXPECT_EQ(ports[0].usb.maker, "") << "a device need not say";
    EXPECT_EQ(ports[1].usb.vendor_id, "");
    EXPECT_EQ(ports[2].usb.product, "FT232R USB UART");
    EXPECT_EQ(ports[2].usb.serial, "A1ttyUSB9");
    EXPECT_EQ(ports[2].by_id, folder_ / "dev/serial/by-id/usb-FTDI_A1ttyUSB9-if00-port0");
    EXPECT_EQ(ports[2].by_path, folder_ / "dev/serial/by-path/pci-0-usb-0:1:1.0-port0");
    EXPECT_EQ(ports[3].by_id, "");
}

/// The name of a pseudo terminal that lives as long as this.
struct PseudoTerminal {
    PseudoTerminal() : master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(::grantpt(master), 0);
        EXPECT_EQ(::unlockpt(master), 0);
        name = ::ptsname(master);
    }

    ~PseudoTerminal() { ::close(master); }

    int master;
    std::string name;
};

TEST_F(System, KnowsAUsbPortByWhatItIs) {
    const PseudoTerminal pty;
    EXPECT_EQ(tarnel::port_identity(pty.name), "") << "no USB port";
    EXPECT_EQ(tarnel::port_identity(folder_ / "absent"), "");

    // The device file has any name, its number tells which port it is.
    const path hardware = add_converter("ttyUSB0");

    struct stat status {};

    ASSERT_EQ(::stat(pty.name.c_str(), &status), 0);
    link("sys/dev/char/" + std::to_string(major(status.st_rdev)) + ":" +
             std::to_string(minor(status.st_rdev)),
         hardware / "tty/ttyUSB0");
    const auto identity = [&] { return tarnel::port_identity(pty.name, folder_ / "sys"); };
    const std::string first = identity();
    EXPECT_EQ(first, "FTDI FT232R USB UART A1ttyUSB0 (0403:6001, channel 00.0)");
    write(hardware / "port_number", "1");
    EXPECT_NE(identity(), first) << "another port of the same device";
}

TEST_F(System, SeesWhoHoldsADevice) {
    const PseudoTerminal pty;
    EXPECT_TRUE(tarnel::port_holders(pty.name).empty());
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe(ready.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pty.master);
        const bool held = ::open(pty.name.c_str(), O_RDWR | O_NOCTTY) >= 0 &&
                          ::open(pty.name.c_str(), O_RDONLY | O_NOCTTY) >= 0;
        const int program = ::open("/proc/self/comm", O_WRONLY);
        const bool named = ::write(program, "odd\033name", 8) == 8;
        ::write(ready[1], held && named ? "y" : "n", 1) == 1 ? ::pause() : 0;
        ::_exit(0);
    }
    char answer = 0;
    EXPECT_EQ(::read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    std::filesystem::create_symlink(pty.name, folder_ / "link");
    const auto holders = tarnel::port_holders(folder_ / "link");
    ASSERT_EQ(holders.size(), 1U) << "once, however often it is open";
    EXPECT_EQ(holders[0].process, child);
    EXPECT_EQ(holders[0].program, "odd?name");

    EXPECT_EQ(::kill(child, SIGKILL), 0);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(tarnel::port_holders(pty.name).empty());
    ::close(ready[0]);
    ::close(ready[1]);
}

/// What the tool prints, diagnostics included, and its exit code behind it.
std::string run(const std::string& arguments) {
    const auto result = support::run_tool("ports " + arguments + " 2>&1");
    return result.output + std::to_string(result.exit_code);
}

using Verb = Ports;

TEST_F(Verb, MapsListsAndUnmaps) {
    const PseudoTerminal pty;
    EXPECT_EQ(run("map COM41: " + pty.name), "COM41: is " + pty.name + "\n0");
    const int held = ::open(pty.name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const std::string me = " (" + std::to_string(::getpid()) + ")";
    EXPECT_NE(run("--format csv").find("\n" + pty.name + ",COM41:,,,,,,,ports-test" + me + "\n"),
              std::string::npos);
    EXPECT_NE(
        run("--format json").find("{\"device\": \"" + pty.name + "\", \"com_name\": \"COM41:\""),
        std::string::npos);
    EXPECT_NE(run("").find(pty.name + "  COM41:"), std::string::npos);
    ::close(held);

    EXPECT_EQ(run("map --machine com41 /dev/none"),
              "Warning: /dev/none does not exist now.\nCOM41: is /dev/none\n"
              "Warning: COM41: still means " +
                  pty.name + ", which goes before.\n0");
    EXPECT_EQ(run("unmap COM41:"), "0");
    EXPECT_EQ(run("unmap COM41:"), "COM41: is not in the user's map.\n4");
    EXPECT_EQ(tarnel::resolve_port("COM41:"), "/dev/none");
}

TEST_F(Verb, SaysWhatIsWrong) {
    EXPECT_TRUE(run("map COM0: /dev/null").starts_with("'COM0:' is no port name"));
    EXPECT_TRUE(run("map COM3: ttyUSB0").starts_with("'ttyUSB0' is no absolute path"));
    EXPECT_TRUE(run("map COM3: ttyUSB0").ends_with("\n2"));
    use_registry("/proc"); // not even root may make files there
    const std::string refused = run("map --machine COM3: /dev/null");
    EXPECT_NE(refused.find("(sudo)"), std::string::npos) << refused;
    EXPECT_TRUE(refused.ends_with("\n3")) << refused;
}

} // namespace
