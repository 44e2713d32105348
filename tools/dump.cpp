#include "serial/ComDevice.h"
#include "tools/line_settings.h"
#include "tools/simulated_machine.h"
#include "tools/stop_signal.h"
#include "tools/time_stamp.h"
#include "tools/verbs.h"
#include "tools/waiting.h"

#include <fmt/format.h>

#include <atomic>
#include <cstdio>
#include <optional>
#include <thread>

// `tarnel dump` shows the bytes that a port receives, as they come in.

namespace {

constexpr int exit_not_open = 4;

std::string time_stamp() {
    return utc_time(read_time_now().utc_us);
}

/// Printable characters as they are, the others as in C.
std::string as_text(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        if (c == '\r' || c == '\n') {
            text += c == '\r' ? "\\r" : "\\n";
        } else if (c == '\\' || c < ' ' || c > '~') {
            text += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
        } else {
            text += c;
        }
    }
    return text;
}

std::string as_hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        text += fmt::format("{:02X} ", static_cast<unsigned char>(c));
    }
    return text;
}

class DumpingDevice final : public CComDevice {
  public:
    DumpingDevice(const CComDeviceConfiguration& configuration, bool hex) : hex_(hex) {
        m_Configuration = configuration;
    }

    ~DumpingDevice() override { CloseConnection(); }

    std::atomic<std::size_t> bytes = 0;
    std::atomic<std::size_t> breaks = 0;

  private:
    int OnReadCommBlock() override {
        if (TakeBreak()) {
            ++breaks;
            fmt::print("{}  -- bytes are missing or damaged here --\n", time_stamp());
        }
        const int count = CComDevice::OnReadCommBlock();
        if (count > 0) {
            print({m_pReceiveBuffer.get(), static_cast<std::size_t>(count)});
        }
        return count;
    }

    /// One row for each line of the stream, and for each 16 bytes in hexadecimal.
    void print(std::string_view block) {
        const std::string stamp = time_stamp();
        bytes += block.size();
        while (!block.empty()) {
            const std::size_t end = hex_ ? 16 : block.find_first_of("\r\n") + 1;
            const std::string_view row = block.substr(0, end == 0 ? block.size() : end);
            block.remove_prefix(row.size());
            if (hex_) {
                fmt::print("{}  {:48} {}\n", stamp, as_hex(row), as_text(row));
            } else {
                fmt::print("{}  {}\n", stamp, as_text(row));
            }
        }
        std::fflush(stdout);
    }

    const bool hex_;
};

/// A simulated machine at work, as long as the object lives.
class DemoMachine {
  public:
    explicit DemoMachine(int stop) : machine_(usual(), stop), thread_([this] { machine_.run(); }) {}

    DemoMachine(const DemoMachine&) = delete;
    DemoMachine& operator=(const DemoMachine&) = delete;

    ~DemoMachine() {
        ask_to_stop();
        thread_.join();
    }

    const std::string& port() const { return machine_.port(); }

  private:
    static Simulation usual() {
        Simulation simulation;
        simulation.kind = &machine_kinds().back();
        simulation.line_end = "\r\n";
        simulation.rate = 5;
        return simulation;
    }

    SimulatedMachine machine_;
    std::thread thread_;
};

struct Arguments {
    PortOptions port;
    bool demo = false;
    bool hex = false;
    std::optional<double> seconds;
};

void dump(const Arguments& arguments) {
    const StopSignal stop;
    Line line;
    std::optional<DemoMachine> machine;
    if (arguments.demo) {
        line.SetPortName(machine.emplace(stop.descriptor()).port().c_str());
    } else {
        arguments.port.fill(line);
    }
    DumpingDevice device(line, arguments.hex);
    if (!device.OpenConnection(1)) {
        fail(exit_not_open, "The port could not be opened.");
    }
    fmt::print(stderr, "Listening on {}\n", line.GetInfoString().GetString());
    wait_for_end(stop.descriptor(), arguments.seconds);
    device.CloseConnection();
    fmt::print(stderr, "{} bytes, {} places where bytes are missing or damaged\n",
               device.bytes.load(), device.breaks.load());
}

} // namespace

void add_dump_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("dump", "Show the bytes that a port receives");
    arguments->port.add_to(*verb);
    verb->add_flag("--demo", arguments->demo, "Listen to a simulated machine instead of a port");
    verb->add_flag("--hex", arguments->hex, "In hexadecimal, 16 bytes a row");
    verb->add_option("--for", arguments->seconds, "Seconds until it ends by itself")
        ->check(CLI::Range(0.0, 1e9));
    verb->footer("Time stamps are UTC, when the bytes were read. Ctrl+C ends it.\n"
                 "Exit codes: 0 done, 2 no such line, 3 a setting that cannot be, 4 not opened");
    verb->callback([arguments] { dump(*arguments); });
}
