#include "platform/base/diagnostics.h"
#include "tools/message_loop.h"
#include "tools/monitor_session.h"
#include "tools/plot_file.h"
#include "tools/protocol_choice.h"
#include "tools/stop_signal.h"
#include "tools/table.h"
#include "tools/time_stamp.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <system_error>

// `tarnel monitor` shows the points that a machine measures, as an application gets them.

namespace {

constexpr int exit_not_open = 4;

struct Arguments {
    PortOptions port;
    std::string protocol;
    std::string format = "table";
    std::string output;
    bool append = false;
    MonitorSession::Limits limits;
    std::string recording;
    std::string plot;
    UINT serve = 0; ///< a port; 0 for none
    bool tone = false;
};

/// Has the layer's reports in their place among the points, as long as it lives.
class ReportsInFeed {
  public:
    explicit ReportsInFeed(PointFeed& feed) {
        tarnel::set_report_sink(&PointFeed::take_report, &feed);
    }

    ReportsInFeed(const ReportsInFeed&) = delete;
    ReportsInFeed& operator=(const ReportsInFeed&) = delete;

    ~ReportsInFeed() { tarnel::set_report_sink(nullptr, nullptr); }
};

/// A connection that ends before the window and the observer that it tells.
class Connection {
  public:
    explicit Connection(_CMMProtocol& protocol) : protocol_(protocol) {
        const MessageLoop loop; // Ctrl+C also ends the box that says why there is no connection
        if (!protocol.Connect()) {
            fail(exit_not_open, "The port could not be opened.");
        }
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    ~Connection() { protocol_.Disconnect(); }

  private:
    _CMMProtocol& protocol_;
};

std::unique_ptr<RecordingWriter> begin_recording(const std::string& path,
                                                 const RecordingHeader& header) {
    try {
        return path.empty() ? nullptr
                            : std::make_unique<RecordingWriter>(path, header, read_time_now());
    } catch (const std::system_error& error) {
        fail_to_open(path, error.code().value());
    }
}

/// What went wrong, if anything did.
std::string run(MonitorSession& session, _CMMProtocol& protocol) {
    try {
        session.run();
        protocol.Disconnect();
        session.write_what_came();
    } catch (const std::system_error& error) {
        return error.what();
    }
    return "";
}

void print_summary(const MonitorSession& session, const CMMProtocolRS232& protocol,
                   const PointFeed& feed, const ClientWindow& client) {
    const Latencies& latencies = client.latencies();
    fmt::print(stderr,
               "{} points, {} bytes, {} damaged records, {} points announced to the client window, "
               "{:.3f} s\n",
               session.points(), feed.bytes(), protocol.GetDamagedRecords(), latencies.total(),
               session.seconds());
    if (latencies.total() > 0) {
        fmt::print(stderr,
                   "latency from the read of a point to the client window: median {:.3f} ms, worst "
                   "{:.3f} ms; the last one has number {}\n",
                   latencies.median(), latencies.worst(), client.last_number());
    }
}

void monitor(const Arguments& arguments) {
    const StopSignal stop; // before any thread
    Line line;
    arguments.port.fill(line);
    const auto protocol = make_serial_protocol(arguments.protocol);
    const std::string name = protocol->GetProtocolName().GetString();
    const std::string port = line.GetInfoString().GetString();
    configure(*protocol, line);

    PointFeed feed(*protocol, !arguments.recording.empty());
    ClientWindow client(*protocol, feed, arguments.tone);
    protocol->Initialize(&client);
    protocol->SetPointObserver(&feed);
    const Connection connection(*protocol);
    const ReportsInFeed reports(feed);
    DataOutput output(arguments.output, arguments.append);
    const auto recording = begin_recording(arguments.recording, {name, port});
    PlotFile plot(arguments.plot);
    const auto server = arguments.serve ? std::make_unique<PointServer>(arguments.serve) : nullptr;
    fmt::print(stderr, "Monitoring {} at {}; Ctrl+C ends it\n", name, port);

    MonitorSession session(feed,
                           {point_format(arguments.format), output, recording.get(), plot.points(),
                            server.get(), stop.descriptor()},
                           arguments.limits);
    const std::string trouble = run(session, *protocol);
    protocol->Disconnect();
    print_summary(session, *protocol, feed, client);
    plot.write(name);
    if (!trouble.empty()) {
        fail(exit_not_written, fmt::format("Not everything could be written: {}.", trouble));
    }
}

} // namespace

void add_monitor_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("monitor", "Show the points that a machine measures");
    verb->add_option("PROTOCOL", arguments->protocol, "Its name; see 'tarnel protocols'")
        ->required();
    arguments->port.add_to(*verb);
    Table::add_format_option(*verb, arguments->format);
    auto* output =
        verb->add_option("--output", arguments->output, "A new file instead of standard output");
    verb->add_flag("--append", arguments->append, "The file may be there")->needs(output);
    verb->add_option("--count", arguments->limits.points, "Points until it ends by itself")
        ->check(CLI::PositiveNumber);
    verb->add_option("--for", arguments->limits.seconds, "Seconds until it ends by itself")
        ->check(CLI::Range(0.0, 1e9));
    verb->add_option("--record", arguments->recording, "A new file for all bytes that come");
    verb->add_option("--plot", arguments->plot, "A file (SVG) for a picture of the points");
    verb->add_option("--serve", arguments->serve,
                     "A TCP port: each point goes to the client there, as one line of JSON")
        ->check(CLI::Range(1, 65535));
    verb->add_flag("--tone", arguments->tone, "A tone for each point");
    verb->footer("Each point comes with the time when the block was read that completed it, in "
                 "UTC. Ctrl+C ends it.\n"
                 "Exit codes: 0 done, 2 no such line, 3 a setting that cannot be, 4 not opened, 5 "
                 "no such protocol, 6 a file exists, 7 a file could not be written, 8 the settings "
                 "could not be handed over, 9 the "
                 "port to serve cannot be had\n"
                 "Example: tarnel monitor METROLEC --port COM3: --format csv --output part.csv");
    verb->callback([arguments] { monitor(*arguments); });
}
