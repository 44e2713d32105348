// Messages over TCP between two processes, against the same done by hand with plain sockets: a
// request and its reply, many small texts, and large blocks.

#include "bench/report.h"
#include "bench/tcp_by_hand.h"
#include "net/BinaryData.h"
#include "net/ServerSocket.h"
#include "net/TextData.h"
#include "platform/messages/message.h"

#include <functional>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int round_trips = 2'000;
constexpr int texts = 100'000;
constexpr int texts_in_a_batch = 100;
constexpr int blocks = 2'000;
constexpr DWORD seconds_10 = 10'000;

class Server final : public CTCPIPServerSocket {
  public:
    Server(CSocketData* data, std::function<void(Server&)> on_message)
        : CTCPIPServerSocket(data), on_message_(std::move(on_message)) {}

    /// Serves one client from its first message to its end.
    void serve(int port) {
        if (!Listen(static_cast<UINT>(port))) {
            std::exit(1);
        }
        for (MSG message; !ended_ && GetMessageA(&message, nullptr, 0, 0) > 0;) {
            DispatchMessageA(&message);
        }
    }

  private:
    void OnMessageReceived(CSocketData*) override { on_message_(*this); }

    void OnConnectionClosed(int) override { ended_ = true; }

    void OnConnectionEstablished(int) override {}

    std::function<void(Server&)> on_message_;
    bool ended_ = false;
};

class Client final : public CTCPIPSocket {
  public:
    using CTCPIPSocket::CTCPIPSocket;

  private:
    void OnMessageReceived(CSocketData*) override {}

    void OnConnectionClosed(int) override {}

    void OnConnectionEstablished(int) override {}
};

/// The other process: answers each text with itself.
void echo(int port) {
    CSocketDataStringFormat format;
    CSocketDataString text(format);
    Server(&text, [&](Server& server) { server.Send(&text); }).serve(port);
}

/// Microseconds from the request to the reply; the given part is faster.
double round_trip(double part) {
    const byhand::Peer peer("echo");
    CSocketDataStringFormat format;
    CSocketDataString request(format), reply(format), other(format);
    request.SetString("A request of 20 byte");
    Client client(&other);
    while (!client.Connect("127.0.0.1", static_cast<UINT>(peer.port))) {
        byhand::pause();
    }
    return byhand::delay(part, round_trips, [&] {
        if (!client.SendAndGetSynchReply(&request, &reply, 0, seconds_10)) {
            std::exit(1);
        }
    });
}

/// What comes in a second, of `count` messages that the other process sends.
double received(const char* sender, CSocketData& data, int count) {
    byhand::Peer peer(sender, count);
    int left = count;
    Clock::time_point start;
    double time = 0;
    Server(&data, [&](Server&) {
        if (left == count) {
            start = Clock::now();
        }
        if (--left == 0) {
            time = std::chrono::duration<double>(Clock::now() - start).count();
        }
    }).serve(peer.port);
    return count / time;
}

double texts_received(const char* sender) {
    CSocketDataStringFormat format;
    CSocketDataString text(format);
    return received(sender, text, texts);
}

double megabytes_received() {
    std::vector<char> block(byhand::block_size);
    tbxSocketDataBinary data;
    data.set_size(byhand::block_size);
    data.set_buf(block.data());
    return received("blocks", data, blocks) * byhand::block_size / 1e6;
}

/// What this program does as the other process.
void play(const std::string& role, int port, int count) {
    if (role == "echo") {
        echo(port);
    } else if (role == "echo-by-hand") {
        byhand::echo(port);
    } else if (role == "texts") {
        byhand::send_texts(port, count, 1);
    } else if (role == "batches") {
        byhand::send_texts(port, count, texts_in_a_batch);
    } else {
        byhand::send_blocks(port, count);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 4) {
        play(argv[1], std::atoi(argv[2]), std::atoi(argv[3]));
        return 0;
    }
    for (const auto& [name, part] : {std::pair{"p50", 0.5}, std::pair{"p99", 0.99}}) {
        bench::report(
            std::string("c.tcp.rtt.") + name,
            bench::compare([part = part] { return round_trip(part); },
                           [part = part] { return byhand::round_trip(part, round_trips); }, 7),
            "us");
    }
    for (const auto& [name, sender] :
         {std::pair{"each", "texts"}, std::pair{"batched", "batches"}}) {
        bench::report(
            std::string("c.tcp.oneway20.") + name,
            bench::compare([sender = sender] { return texts_received(sender); },
                           [sender = sender] { return byhand::texts_received(sender, texts); }, 7),
            "texts/s");
    }
    bench::report("c.tcp.block64k",
                  bench::compare(
                      &megabytes_received, [] { return byhand::megabytes_received(blocks); }, 7),
                  "MB/s");
}
