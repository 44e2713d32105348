#include "platform/threads/clock.h"
#include "serial/ComDevice.h"
#include "tools/escapes.h"
#include "tools/line_settings.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel write` sends a text to a port.

namespace {

constexpr int exit_not_open = 4;
constexpr int exit_not_sent = 5;
constexpr DWORD longest_wait = 10'000; // milliseconds for the port to send what it has taken

class WritingDevice final : public CComDevice {
  public:
    explicit WritingDevice(const CComDeviceConfiguration& configuration) {
        m_Configuration = configuration;
    }

    ~WritingDevice() override { CloseConnection(); }

    /// Closing a port drops what it has not sent yet.
    bool wait_until_sent() const {
        const DWORD start = GetTickCount();
        while (tarnel::unsent_bytes(GetHandle()) > 0) {
            if (GetTickCount() - start > longest_wait) {
                return false;
            }
            Sleep(5);
        }
        return true;
    }
};

void write(const Line& line, const std::string& bytes) {
    WritingDevice device(line);
    if (!device.OpenConnection(0)) {
        fail(exit_not_open, "The port could not be opened.");
    }
    if (!device.WriteCommBlock(bytes.data(), static_cast<DWORD>(bytes.size())) ||
        !device.wait_until_sent()) {
        fail(exit_not_sent, "The port did not take or send everything in time.");
    }
    fmt::print(stderr, "{} bytes sent\n", bytes.size());
}

struct Arguments {
    PortOptions port;
    std::string text;
};

} // namespace

void add_write_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("write", "Send a text to a port");
    arguments->port.add_to(*verb);
    verb->add_option("TEXT", arguments->text, "With \\r, \\n, \\t, \\\\ and \\xNN as in C")
        ->required();
    verb->footer("Exit codes: 0 sent, 2 no such line, 3 a setting or text that cannot be, 4 not "
                 "opened, 5 not sent in time");
    verb->callback([arguments] {
        Line line;
        arguments->port.fill(line);
        write(line, unescape(arguments->text));
    });
}
