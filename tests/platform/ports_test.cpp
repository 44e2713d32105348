#include "platform/base/last_error.h"
#include "platform/comm/port_list.h"
#include "platform/comm/port_names.h"
#include "platform/registry/registry.h"
#include "tests/support/environment.h"
#include "tests/support/pty.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using std::filesystem::path;
using tarnel::PortMap;

/// A folder of its own, in which the registry lives as well.
class Ports : public testing::Test {
  protected:
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

    const support::TemporaryRegistry registry_;
    const path folder_ = std::filesystem::canonical(registry_.folder);
    support::Environment environment_;
    const support::Pty machine_;
};

using Names = Ports;

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
    environment_.set("TARNEL_COM3", "/dev/environment");
    environment_.set("TARNEL_COM41", "/dev/other");
    const std::map<unsigned, std::string> ports{{3, "/dev/environment"}, {41, "/dev/other"}};
    EXPECT_EQ(tarnel::mapped_ports(), ports);
    environment_.set("TARNEL_COM3", "");
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/user") << "an empty variable says nothing";

    EXPECT_EQ(tarnel::unmap_port(3, PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::unmap_port(3, PortMap::user), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/machine");
    EXPECT_EQ(tarnel::unmap_port(3, PortMap::machine), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::resolve_port("COM3:"), "/dev/ttyS2");
}

TEST_F(Names, AMapHasEachNameAndEachDeviceOnce) {
    EXPECT_EQ(tarnel::map_port(3, "/a", PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::map_port(4, "/b", PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::map_port(3, "/b", PortMap::user), ERROR_SUCCESS);
    EXPECT_EQ(tarnel::mapped_ports(), (std::map<unsigned, std::string>{{3, "/b"}}));
    EXPECT_EQ(tarnel::map_port(3, "/B", PortMap::user), ERROR_SUCCESS);
    tarnel::close_registry();
    EXPECT_EQ(tarnel::mapped_ports(), (std::map<unsigned, std::string>{{3, "/B"}}));
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

TEST_F(System, KnowsAUsbPortByWhatItIs) {
    EXPECT_EQ(tarnel::port_identity(machine_.path()), "") << "no USB port";
    EXPECT_EQ(tarnel::port_identity(folder_ / "absent"), "");

    // The device file has any name, its number tells which port it is.
    const path hardware = add_converter("ttyUSB0");

    struct stat status {};

    ASSERT_EQ(::stat(machine_.path().c_str(), &status), 0);
    link("sys/dev/char/" + std::to_string(major(status.st_rdev)) + ":" +
             std::to_string(minor(status.st_rdev)),
         hardware / "tty/ttyUSB0");
    const auto identity = [&] { return tarnel::port_identity(machine_.path(), folder_ / "sys"); };
    const std::string first = identity();
    EXPECT_EQ(first, "FTDI FT232R USB UART A1ttyUSB0 (0403:6001, channel 00.0)");
    write(hardware / "port_number", "1");
    EXPECT_NE(identity(), first) << "another port of the same device";
}

/// What the tool prints, diagnostics included, and its exit code behind it.
std::string run(const std::string& arguments) {
    const auto result = support::run_tool("ports " + arguments + " 2>&1");
    return result.output + std::to_string(result.exit_code);
}

using Verb = Ports;

TEST_F(Verb, MapsListsAndUnmaps) {
    EXPECT_EQ(run("map COM41: " + machine_.path()), "COM41: is " + machine_.path() + "\n0");
    const int held = ::open(machine_.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const std::string me = " (" + std::to_string(::getpid()) + ")";
    EXPECT_TRUE(support::has(run("--format csv"),
                             "\n" + machine_.path() + ",COM41:,,,,,,,ports-test" + me + "\n"));
    EXPECT_NE(run("--format json")
                  .find("{\"device\": \"" + machine_.path() + "\", \"com_name\": \"COM41:\""),
              std::string::npos);
    EXPECT_TRUE(support::has(run(""), machine_.path() + "  COM41:"));
    ::close(held);

    EXPECT_EQ(run("map --machine com41 /dev/none"),
              "Warning: /dev/none does not exist now.\nCOM41: is /dev/none\n"
              "Warning: COM41: still means " +
                  machine_.path() + ", which goes before.\n0");
    EXPECT_EQ(run("unmap COM41:"), "0");
    EXPECT_EQ(run("unmap COM41:"), "COM41: is not in the user's map.\n4");
    EXPECT_EQ(tarnel::resolve_port("COM41:"), "/dev/none");
}

TEST_F(Verb, SaysWhatIsWrong) {
    EXPECT_TRUE(run("map COM0: /dev/null").starts_with("'COM0:' is no port name"));
    EXPECT_TRUE(run("map COM3: ttyUSB0").starts_with("'ttyUSB0' is no absolute path"));
    EXPECT_TRUE(run("map COM3: ttyUSB0").ends_with("\n2"));
    environment_.set("TARNEL_REGISTRY_DIR", "/proc"); // not even root may make files there
    const std::string refused = run("map --machine COM3: /dev/null");
    EXPECT_TRUE(support::has(refused, "(sudo)"));
    EXPECT_TRUE(refused.ends_with("\n3")) << refused;
}

} // namespace
