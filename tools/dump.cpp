#include "serial/ComDevice.h"
#include "tools/line_settings.h"
#include "tools/scripted_machine.h"
#include "tools/verbs.h"

#include <fmt/chrono.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>

// `tarnel dump` shows the bytes that a port receives, as they come in.

namespace {

constexpr int exit_not_open = 4;

std::string time_stamp() {
    using namespace std::chrono;
    const auto now = time_point_cast<microseconds>(system_clock::now());
    const auto part = now.time_since_epoch() % seconds(1);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z", fmt::gmtime(system_clock::to_time_t(now)),
                       part.count());
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

/// Waits for Ctrl+C or that long; nothing: without limit.
void wait_for_end(const sigset_t& signals, std::optional<double> seconds) {
    if (!seconds) {
        int signal = 0;
        ::sigwait(&signals, &signal);
        return;
    }
    const auto whole = static_cast<time_t>(*seconds);
    const timespec time{whole, static_cast<long>((*seconds - static_cast<double>(whole)) * 1e9)};
    ::sigtimedwait(&signals, nullptr, &time);
}

void dump(const Line& line, bool hex, std::optional<double> seconds) {
    // Before any other thread starts, so that all of them leave Ctrl+C to this one.
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    DumpingDevice device(line, hex);
    if (!device.OpenConnection(1)) {
        fail(exit_not_open, "The port could not be opened.");
    }
    fmt::print(stderr, "Listening on {}\n", line.GetInfoString().GetString());
    wait_for_end(signals, seconds);
    device.CloseConnection();
    fmt::print(stderr, "{} bytes, {} places where bytes are missing or damaged\n",
               device.bytes.load(), device.breaks.load());
}

struct Arguments {
    PortOptions port;
    bool demo = false;
    bool hex = false;
    std::optional<double> seconds;
};

} // namespace

void add_dump_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("dump", "Show the bytes that a port receives");
    arguments->port.add_to(*verb);
    verb->add_flag("--demo", arguments->demo, "Listen to a scripted machine instead of a port");
    verb->add_flag("--hex", arguments->hex, "In hexadecimal, 16 bytes a row");
    verb->add_option("--for", arguments->seconds, "Seconds until it ends by itself")
        ->check(CLI::Range(0.0, 1e9));
    verb->footer("Time stamps are UTC, when the bytes were read. Ctrl+C ends it.\n"
                 "Exit codes: 0 done, 2 no such line, 3 a setting that cannot be, 4 not opened");
    verb->callback([arguments] {
        Line line;
        std::optional<ScriptedMachine> machine;
        if (arguments->demo) {
            line.SetPortName(machine.emplace().port().c_str());
        } else {
            arguments->port.fill(line);
        }
        dump(line, arguments->hex, arguments->seconds);
    });
}
