#include "net/ClientSocket.h"
#include "net/TextData.h"
#include "tools/escapes.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel send` sends a text over the network, and shows the reply.

namespace {

constexpr int exit_not_connected = 4;
constexpr int exit_not_sent = 5;
constexpr int exit_no_reply = 6;
constexpr DWORD no_command = 0;

struct Arguments {
    std::string place;
    std::string text;
    std::string terminator;
    bool reply = false;
    DWORD timeout = 5'000;
    int count = 1;
};

class Sender final : public CTCPIPSocket {
  public:
    explicit Sender(CSocketData* received) : CTCPIPSocket(received) {}

  private:
    void OnMessageReceived(CSocketData*) override {}

    void OnConnectionClosed(int) override {}

    void OnConnectionEstablished(int) override {}
};

struct Place {
    std::string host;
    UINT port = 0;
};

/// "HOST:PORT", where an IPv6 address stands in brackets.
Place place_of(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    Place place{text.substr(0, colon)};
    if (place.host.starts_with('[') && place.host.ends_with(']')) {
        place.host = place.host.substr(1, place.host.size() - 2);
    }
    const bool has_port =
        colon != text.npos && CLI::detail::lexical_cast(text.substr(colon + 1), place.port);
    if (!has_port || place.host.empty() || place.port == 0 || place.port > 65535) {
        throw CLI::ValidationError("HOST:PORT", fmt::format("'{}' is no host and port", text));
    }
    return place;
}

void send(const Arguments& arguments) {
    const Place place = place_of(arguments.place);
    const std::string terminator = unescape(arguments.terminator);
    CSocketDataStringFormat format;
    format.SetReceivedStringTerminator(terminator.c_str());
    format.SetTerminator(terminator.c_str());
    format.SetSendNullTerminatedString(terminator.empty());
    CSocketDataString received(format), reply(format), request(format);
    request.SetString(unescape(arguments.text).c_str());
    Sender socket(&received);
    if (!socket.Connect(place.host.c_str(), place.port)) {
        fail(exit_not_connected, fmt::format("{} does not take a connection.", arguments.place));
    }
    for (int i = 0; i < arguments.count; ++i) {
        if (!socket.Send(&request)) {
            fail(exit_not_sent, fmt::format("Text {} could not be sent.", i + 1));
        }
        if (!arguments.reply) {
            continue;
        }
        if (!socket.GetSynchReply(&reply, no_command, arguments.timeout)) {
            fail(exit_no_reply,
                 fmt::format("No reply to text {} came in {} ms.", i + 1, arguments.timeout));
        }
        fmt::print("{}\n", reply.GetString().GetString());
    }
    socket.Close();
}

} // namespace

void add_send_verb(CLI::App& tool) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* verb = tool.add_subcommand("send", "Send a text over the network");
    verb->add_option("HOST:PORT", arguments->place, "A name or address, and a TCP port")
        ->required();
    verb->add_option("TEXT", arguments->text, "With \\r, \\n, \\t, \\\\ and \\xNN as in C")
        ->required();
    verb->add_option(
        "--terminator", arguments->terminator,
        "What follows each text, and ends a reply; without it a zero byte follows, and "
        "a reply ends with a line end or a zero byte");
    auto* reply =
        verb->add_flag("--reply", arguments->reply, "Wait for a reply to each, and print it");
    verb->add_option("--timeout", arguments->timeout, "Milliseconds to wait for a reply")
        ->needs(reply)
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    verb->add_option("--count", arguments->count, "How many times")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    verb->footer(
        "Exit codes: 0 done, 3 an unknown escape, 4 no connection, 5 not sent, 6 no reply in "
        "time\n"
        "Example: tarnel send localhost:7000 MOVE --terminator '\\r\\n' --reply");
    verb->callback([arguments] { send(*arguments); });
}
