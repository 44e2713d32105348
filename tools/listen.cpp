#include "net/ServerSocket.h"
#include "net/TextData.h"
#include "platform/base/exceptions.h"
#include "platform/messages/message.h"
#include "tools/escapes.h"
#include "tools/message_loop.h"
#include "tools/table.h"
#include "tools/time_stamp.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <optional>

// `tarnel listen` shows the texts that come over the network.

namespace {

constexpr int exit_no_port = 4;

struct Arguments {
    UINT port = 0;
    std::string terminator;
    std::optional<std::string> reply;
    std::string format = "table";
};

std::vector<std::string> headings() {
    return {"Time", "Peer", "Text"};
}

/// Serves one client after the other.
class Listener final : public CTCPIPServerSocket {
  public:
    Listener(CSocketDataStringFormat& format, const Arguments& arguments)
        : CTCPIPServerSocket(&received_), received_(format), reply_(format), arguments_(arguments) {
        if (arguments.reply) {
            reply_.SetString(arguments.reply->c_str());
        }
    }

    bool is_idle() { return !IsListening() && !IsConnected(); }

  private:
    void OnMessageReceived(CSocketData*) override {
        Table message(headings());
        message.add({utc_time(read_time_now().utc_us), peer_, received_.GetString().GetString()});
        message.print_rows(arguments_.format);
        if (arguments_.reply && answers_ && !reply()) {
            fmt::print(stderr, "{}: the reply could not be sent\n", peer_);
            answers_ = false;
            Close(); // later; what has come already is shown before
        }
    }

    bool reply() {
        try {
            return Send(&reply_) != 0;
        } catch (CException* exception) { // a reply that does not fit the buffer is sent in pieces
            exception->Delete();
            return false;
        }
    }

    void OnConnectionEstablished(int) override {
        CString address;
        UINT port = 0;
        GetPeerName(address, port);
        peer_ = fmt::format("{}:{}", address.GetString(), port);
        answers_ = true;
        fmt::print(stderr, "{} has connected\n", peer_);
    }

    void OnConnectionClosed(int error) override {
        fmt::print(stderr, "{} {}\n", peer_, error ? "is lost" : "has closed the connection");
    }

    CSocketDataString received_;
    CSocketDataString reply_;
    const Arguments& arguments_;
    std::string peer_;
    bool answers_ = true; ///< no reply to this client has failed
};

void listen(const Arguments& arguments) {
    MessageLoop loop;
    CSocketDataStringFormat format;
    const std::string terminator = unescape(arguments.terminator);
    format.SetReceivedStringTerminator(terminator.c_str());
    format.SetTerminator(terminator.c_str());
    format.SetSendNullTerminatedString(terminator.empty());
    Listener listener(format, arguments);
    loop.on_stop = [&] { listener.CancelBlockingCall(); }; // a client may not read its reply
    if (arguments.format == "csv") {
        Table(headings()).print("csv");
    }
    MSG message;
    do {
        if (listener.is_idle() && !listener.Listen(arguments.port)) {
            fail(exit_no_port, fmt::format("Port {} is taken, or not yours.", arguments.port));
        }
        if (listener.IsListening()) {
            fmt::print(stderr, "Listening at port {}; Ctrl+C ends it\n", arguments.port);
        }
        while (!listener.is_idle() && GetMessageA(&message, nullptr, 0, 0) > 0) {
            DispatchMessageA(&message);
        }
    } while (message.message != WM_QUIT);
}

} // namespace

void add_listen_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("listen", "Show the texts that come over the network");
    verb->add_option("PORT", arguments->port, "TCP port, 1 to 65535")
        ->required()
        ->check(CLI::Range(1, 65535));
    verb->add_option("--terminator", arguments->terminator,
                     "What ends a text, with \\r, \\n, \\t, \\\\ and \\xNN as in C; without it, a "
                     "line end or a zero byte");
    verb->add_option("--reply", arguments->reply, "A text to answer each with");
    Table::add_format_option(*verb, arguments->format);
    verb->footer("Takes one client after the other. What is sent ends as what is received; without "
                 "--terminator, with a zero byte.\n"
                 "Exit codes: 0 ended with Ctrl+C, 3 an unknown escape, 4 the port cannot be had\n"
                 "Example: tarnel listen 7000 --terminator '\\r\\n' --reply OK");
    verb->callback([arguments] { listen(*arguments); });
}
