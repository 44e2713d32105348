#include "serial/ComDevice.h"
#include "tools/data_output.h"
#include "tools/line_settings.h"
#include "tools/recording.h"
#include "tools/stop_signal.h"
#include "tools/time_stamp.h"
#include "tools/verbs.h"
#include "tools/waiting.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <system_error>

// `tarnel record` keeps what a port receives in a recording.

namespace {

constexpr int exit_not_open = 4;

class RecordingDevice final : public CComDevice {
  public:
    RecordingDevice(const CComDeviceConfiguration& configuration, RecordingWriter& recording)
        : recording_(recording) {
        m_Configuration = configuration;
    }

    ~RecordingDevice() override { CloseConnection(); }

    // For the time after the connection.
    std::size_t bytes = 0;
    std::size_t breaks = 0;
    std::optional<std::system_error> error; ///< what ended it

  private:
    int OnReadCommBlock() override {
        const bool broken = TakeBreak();
        const int count = CComDevice::OnReadCommBlock();
        try {
            keep(broken, std::max(count, 0));
        } catch (const std::system_error& failure) {
            error = failure;
            ask_to_stop();
        }
        return count;
    }

    void keep(bool broken, int count) {
        const tarnel::ReadTime now = read_time_now();
        if (error) {
            return;
        }
        if (broken) {
            ++breaks;
            recording_.add_break(now);
        }
        if (count > 0) {
            bytes += static_cast<std::size_t>(count);
            recording_.add_bytes({m_pReceiveBuffer.get(), static_cast<std::size_t>(count)}, now);
        }
    }

    RecordingWriter& recording_;
};

struct Arguments {
    PortOptions port;
    std::string file;
    std::optional<double> seconds;
};

void record(const Arguments& arguments) {
    const StopSignal stop;
    Line line;
    arguments.port.fill(line);
    const std::string port = line.GetInfoString().GetString();
    std::optional<RecordingWriter> recording;
    try {
        recording.emplace(arguments.file, RecordingHeader{"", port}, read_time_now());
    } catch (const std::system_error& error) {
        fail_to_open(arguments.file, error.code().value());
    }
    RecordingDevice device(line, *recording);
    if (!device.OpenConnection(1)) {
        ::unlink(arguments.file.c_str());
        fail(exit_not_open, "The port could not be opened.");
    }
    fmt::print(stderr, "Recording {}; Ctrl+C ends it\n", port);
    wait_for_end(stop.descriptor(), arguments.seconds);
    device.CloseConnection();
    fmt::print(stderr, "{} bytes, {} places where bytes are missing or damaged\n", device.bytes,
               device.breaks);
    if (device.error) {
        fail(exit_not_written, fmt::format("{}: {}", arguments.file, device.error->what()));
    }
}

} // namespace

void add_record_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("record", "Keep what a port receives, byte for byte");
    arguments->port.add_to(*verb);
    verb->add_option("FILE", arguments->file, "The recording, a new file")->required();
    verb->add_option("--for", arguments->seconds, "Seconds until it ends by itself")
        ->check(CLI::Range(0.0, 1e9));
    verb->footer("'tarnel replay' plays it. Ctrl+C ends it.\n"
                 "Example: tarnel record --port /dev/ttyUSB0 --baud 9600 morning.rec\n"
                 "Exit codes: 0 done, 2 no such line, 3 a setting that cannot be, 4 not opened, 6 "
                 "the file exists, 7 it cannot be written");
    verb->callback([arguments] { record(*arguments); });
}
