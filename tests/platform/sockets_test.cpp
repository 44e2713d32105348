#include "platform/files/archive.h"
#include "platform/files/file_exceptions.h"
#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/sockets/socket_file.h"
#include "tests/support/eventually.h"
#include "tests/support/process_facts.h"
#include "tests/support/worker.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace {

using support::Worker;

/// What the sockets of the test are told, in order.
std::string told;

/// Tells its events under its name. Its own calls wait; those of CAsyncSocket do not.
struct Talker : CSocket {
    explicit Talker(const char* own_name) : name(own_name) {}

    const std::string name;
    std::function<void()> on_pending;

    void tell(const char* event, int error) {
        told += name + event + (error ? std::to_string(error) : "") + ' ';
    }

    void OnReceive(int error) override { tell("r", error); }

    void OnSend(int error) override { tell("w", error); }

    void OnOutOfBandData(int error) override { tell("o", error); }

    void OnAccept(int error) override { tell("a", error); }

    void OnConnect(int error) override { tell("c", error); }

    void OnClose(int error) override { tell("x", error); }

    BOOL OnMessagePending() override {
        const auto run = on_pending; // which may delete the socket
        return run ? run(), TRUE : FALSE;
    }
};

void run_messages() {
    for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
        DispatchMessageA(&message);
    }
}

/// Runs messages until this has been told since the last time, and nothing else.
void expect_told(const std::string& expected) {
    support::eventually([&] { return run_messages(), told.size() >= expected.size(); });
    EXPECT_EQ(std::exchange(told, ""), expected);
}

UINT port_of(SOCKET socket) {
    sockaddr_in6 address{};
    socklen_t size = sizeof address;
    ::getsockname(static_cast<int>(socket), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin6_port); // at the same place for IPv4
}

/// A program at the other end that knows nothing of the library, of IPv4 alone: a client of the
/// port, or with port 0 what can become a server.
struct Stranger {
    explicit Stranger(UINT port) : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{AF_INET, htons(std::uint16_t(port)), {htonl(INADDR_LOOPBACK)}, {}};
        const auto* const to = reinterpret_cast<const sockaddr*>(&address);
        const auto call = port ? &::connect : &::bind;
        EXPECT_EQ(call(socket, to, sizeof address), 0);
    }

    ~Stranger() { close(); }

    void send(const std::string& bytes, int flags = 0) const {
        EXPECT_EQ(::send(socket, bytes.data(), bytes.size(), flags), ssize_t(bytes.size()));
    }

    void close() { ::close(std::exchange(socket, -1)); }

    void reset() {
        const linger at_once{1, 0};
        ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        close();
    }

    int socket;
};

struct Listener : Talker {
    explicit Listener(UINT port = 0, LONG mask = FD_ALL_EVENTS) : Talker("L") {
        EXPECT_TRUE(CAsyncSocket::Create(port, SOCK_STREAM, mask) && Listen());
    }

    UINT port() const { return port_of(m_hSocket); }
};

/// A socket that has accepted a stranger.
struct Pair {
    explicit Pair(const char* name, LONG mask = FD_ALL_EVENTS)
        : Pair(name, std::make_unique<Listener>(0, mask)) {}

    Pair(const char* name, const std::unique_ptr<Listener>& listener)
        : own(name), stranger(listener->port()) {
        EXPECT_TRUE(listener->Accept(own));
    }

    Talker own;
    Stranger stranger;
};

/// The bytes, or the error's number.
std::string read(CAsyncSocket& socket, int size = 100, int flags = 0, bool wait = false) {
    std::string bytes(100, 0);
    const int got = wait ? socket.Receive(bytes.data(), size, flags)
                         : socket.CAsyncSocket::Receive(bytes.data(), size, flags);
    return got < 0 ? std::to_string(WSAGetLastError()) : bytes.substr(0, std::size_t(got));
}

std::string wait_and_read(CAsyncSocket& socket) {
    return read(socket, 100, 0, true);
}

TEST(AsyncSocket, AnnouncesAnEventAgainOnlyAfterItsReenablingCall) {
    Listener listener;
    Talker a("A");
    const Stranger first(listener.port()), second(listener.port());
    expect_told("La ");
    EXPECT_TRUE(listener.Accept(a)); // another one waits
    expect_told("La Aw ");
    first.send("12345");
    expect_told("Ar ");
    first.send("67890");
    EXPECT_TRUE(listener.AsyncSelect(0));
    EXPECT_TRUE(listener.AsyncSelect(FD_ACCEPT));
    expect_told("La "); // and nothing of what has come meanwhile
    EXPECT_EQ(read(a, 1, Talker::MSG_PEEK), "1");
    expect_told("Ar ");
    EXPECT_EQ(read(a, 3), "123");
    EXPECT_EQ(read(a, 3), "456"); // one announcement for both
    expect_told("Ar ");
    EXPECT_EQ(read(a), "7890");
    EXPECT_EQ(read(a), "10035");
    first.send("!", MSG_OOB);
    expect_told("Ao ");
    EXPECT_EQ(read(a, 1, MSG_OOB), "!");

    // Space that is wanted, and comes back.
    std::string block(1 << 20, 'x');
    while (a.CAsyncSocket::Send(block.data(), 1 << 20) > 0) {
    }
    EXPECT_EQ(WSAGetLastError(), WSAEWOULDBLOCK);
    support::eventually([&] {
        static_cast<void>(::recv(first.socket, block.data(), block.size(), MSG_DONTWAIT));
        return run_messages(), !told.empty();
    });
    expect_told("Aw ");
}

TEST(AsyncSocket, TellsOfTheEndAfterTheData) {
    for (const bool reset : {false, true}) {
        Pair pair("A");
        expect_told("Aw ");
        pair.stranger.send("last");
        reset ? pair.stranger.reset() : pair.stranger.close();
        expect_told("Ar ");
        EXPECT_EQ(read(pair.own), "last");
        expect_told(reset ? "Ax10054 " : "Ax ");
        EXPECT_EQ(read(pair.own), reset ? "10054" : "");
        pair.own.AsyncSelect(FD_CLOSE | FD_READ);
        expect_told(reset ? "Ax10054 " : "Ax ");
    }
}

TEST(AsyncSocket, TellsNothingThatIsStaleOrOfAClosedSocket) {
    Pair pair("A", FD_READ); // which the accepted socket inherits
    pair.stranger.send("1");
    expect_told("Ar ");
    pair.own.AsyncSelect(0);
    EXPECT_EQ(read(pair.own), "1");
    pair.stranger.send("2");
    EXPECT_TRUE(support::eventually([&] { return read(pair.own, 1, Talker::MSG_PEEK) == "2"; }));
    expect_told("");
    pair.own.AsyncSelect(FD_READ);
    EXPECT_EQ(read(pair.own), "2"); // while the message is on its way
    pair.own.AsyncSelect(FD_WRITE); // the next message
    expect_told("Aw ");

    Talker other("O"), next("N");
    EXPECT_TRUE(other.Create()); // on the lowest free number
    const SOCKET number = pair.own.m_hSocket;
    pair.own.AsyncSelect(); // into the queue
    pair.own.Close();
    EXPECT_TRUE(next.Create());
    EXPECT_EQ(next.m_hSocket, number);
    Pair last("Z");
    expect_told("Zw ");

    while (PostMessageA(nullptr, WM_USER, 0, 0)) { // a queue that takes no more
    }
    last.stranger.send("3");
    EXPECT_TRUE(support::eventually([&] { return read(last.own, 1, Talker::MSG_PEEK) == "3"; }));
    MSG none;
    EXPECT_FALSE(PeekMessageA(&none, nullptr, WM_CLOSE, WM_CLOSE, PM_NOREMOVE));
    expect_told("Zr ");
}

TEST(Socket, WaitsWithoutRunningHandlersAndRunsThemInOrderAfterwards) {
    for (const bool more : {false, true}) {
        Pair waiting("W"), other("O");
        expect_told("Ww Ow ");
        std::string refused;
        waiting.own.on_pending = [&] { // dispatches everything: "r" of the other one, kept
            run_messages();
            EXPECT_EQ(told, "");
            refused = wait_and_read(waiting.own);
            EXPECT_EQ(read(other.own, 1), "2");                // not all: "r" is still true
            other.own.AsyncSelect(more ? FD_WRITE : FD_CLOSE); // "w" follows in the queue
            waiting.own.on_pending = {};
            waiting.stranger.send("done");
        };
        other.stranger.send("22");
        EXPECT_EQ(wait_and_read(waiting.own), "done");
        EXPECT_EQ(refused, "10036");
        expect_told(more ? "Or Ow " : "Or ");
    }
}

TEST(Socket, EndsAWaitThatIsCancelledOrLosesItsSocket) {
    using Owned = std::unique_ptr<Talker>;
    constexpr void (*ends[])(Owned&) = {[](Owned& socket) { socket->CancelBlockingCall(); },
                                        [](Owned& socket) { socket->Close(); },
                                        [](Owned& socket) { socket.reset(); }};
    const Listener listener;
    for (const auto end : ends) {
        auto socket = std::make_unique<Talker>("S");
        EXPECT_TRUE(socket->Create() && socket->Connect("localhost", listener.port()));
        socket->on_pending = [&socket, end] { end(socket); };
        PostMessageA(nullptr, WM_USER, 0, 0);
        EXPECT_EQ(wait_and_read(*socket), "10004");
    }
    run_messages();
    told.clear();
}

TEST(Socket, SleepsInTheHostsOwnLoop) {
    struct Host {
        Pair pair{"A"};
        int turns = 0;

        static void wait(void* self, int, int) {
            Host& host = *static_cast<Host*>(self);
            if (++host.turns == 3) {
                host.pair.stranger.send("from a timer");
            }
        }
    } host;

    tarnel::set_host_wait({&Host::wait, &host});
    EXPECT_EQ(wait_and_read(host.pair.own), "from a timer");
    tarnel::set_host_wait({});
    EXPECT_GE(host.turns, 3);
}

TEST(Socket, ConnectsAndListensByBothFamilies) {
    const UINT port = Listener().port();
    auto listener = std::make_unique<Listener>(port);
    for (const char* host : {"127.0.0.1", "::1"}) {
        Talker client("C"), accepted("A");
        CString address;
        UINT peer_port = 0;
        EXPECT_TRUE(client.Create() && client.Connect(host, port)) << WSAGetLastError();
        EXPECT_TRUE(listener->Accept(accepted) && accepted.GetPeerName(address, peer_port));
        EXPECT_EQ(address, host);
        EXPECT_EQ(peer_port, port_of(client.m_hSocket));
    }
    Talker client("C");
    EXPECT_FALSE(client.Create(port));
    EXPECT_EQ(WSAGetLastError(), WSAEADDRINUSE);
    listener.reset();
    listener = std::make_unique<Listener>(port); // what lingers is no hindrance

    // A server of IPv4 alone stands behind the address of IPv6, where nobody listens.
    const Stranger server(0);
    const UINT server_port = port_of(SOCKET(server.socket));
    EXPECT_TRUE(client.Create());
    EXPECT_FALSE(client.Connect("localhost", server_port));
    EXPECT_EQ(WSAGetLastError(), WSAECONNREFUSED);
    EXPECT_EQ(wait_and_read(client), "10057");
    EXPECT_FALSE(client.Connect(std::string(300, 'x').c_str(), 1)); // no such name
    EXPECT_EQ(WSAGetLastError(), WSAEINVAL);
    ::listen(server.socket, 1);
    EXPECT_TRUE(client.Connect("localhost", server_port)) << WSAGetLastError();
    run_messages();
    EXPECT_EQ(told.find("Cc"), std::string::npos); // what a call waits for is not told as well
    told.clear();
}

TEST(SocketFile, CarriesArchivesAndThrowsTheSocketsErrors) {
    const std::string sent(5'000'000, 'm');
    const auto size = static_cast<UINT>(sent.size());
    Pair pair("A", 0);
    const Worker peer([&] {
        std::string echoed(size, 0);
        const auto got = ::recv(pair.stranger.socket, echoed.data(), size, MSG_WAITALL);
        pair.stranger.send(echoed);
        ::recv(pair.stranger.socket, echoed.data(), 1, 0); // a reset drops what is under way
        pair.stranger.reset();
        return DWORD(got);
    });
    CSocketFile file(&pair.own);
    CArchive out(&file, CArchive::store), in(&file, CArchive::load);
    out.Write(sent.data(), size);
    out.Flush();
    std::string received(size, 0);
    EXPECT_EQ(in.Read(received.data(), size), size);
    EXPECT_EQ(received, sent);
    pair.own.Send("", 1);
    try {
        in.Read(received.data(), 1);
        ADD_FAILURE();
    } catch (CFileException* broken) {
        EXPECT_EQ(broken->m_lOsError, WSAECONNRESET);
        broken->Delete();
    }
}

TEST(Socket, LeavesNothingBehind) {
    std::list<Pair> left;
    const auto rounds = [&left] {
        for (int i = 0; i < 100; ++i) {
            Pair pair("A");
            pair.stranger.send("x");
            EXPECT_EQ(wait_and_read(pair.own), "x");
        }
        left.emplace_back("L").stranger.send("never told");
        return 0U;
    };
    Pair("F"); // what the main thread keeps
    const auto before = support::process_facts();
    Worker{rounds}; // a thread that ends with an open socket
    left.clear();
    rounds();
    left.clear();
    EXPECT_TRUE(support::back_to(before));
    EXPECT_TRUE(support::no_leaks());
}

} // namespace
