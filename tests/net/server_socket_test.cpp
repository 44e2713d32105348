#include "tests/net/talkers.h"
#include "tests/support/process_facts.h"
#include "tests/support/slow_build.h"
#include "tests/support/worker.h"

#include <atomic>

namespace {

using namespace support;
using Server = Talker<CTCPIPServerSocket>;

struct ServerSocket : testing::Test {
    const UINT port = Stranger().port();
    Stranger first, second;
    Server server;

    /// Listening, connected, and told.
    void is(int listening, int connected, const std::string& told) {
        server.tells(told);
        EXPECT_EQ(server.IsListening(), listening);
        EXPECT_EQ(server.IsConnected(), connected);
    }
};

TEST_F(ServerSocket, GoesThroughItsStates) {
    EXPECT_EQ(server.Listen(second.port()), 0); // another's
    is(0, 0, "");
    EXPECT_EQ(server.Listen(port) + server.Listen(port), 2); // again: anew
    is(1, 0, "");
    server.CloseConnection();
    is(0, 0, "down 0");
    EXPECT_FALSE(first.call(port));
    EXPECT_EQ(server.Listen(port) + first.call(port), 2);
    is(0, 1, "up 1");
    EXPECT_FALSE(second.call(port)) << "nothing listens any more";
    EXPECT_EQ(server.Listen(port), 1); // ends the connection without a word
    is(1, 0, "");
    EXPECT_EQ(first.receive(1), "");
    EXPECT_TRUE(first.call(port));
    is(0, 1, "up 1");
    first.hang_up();
    is(0, 0, "down 0");
}

TEST_F(ServerSocket, LetsItsHandlersDoAnything) {
    int ended = 0, taken = 0;
    Server* const other = new Server;
    other->ended = &ended;
    other->then = [&](const std::string& what) {
        if ((what == "up 1" && ++taken == 1) || what == "listen") {
            EXPECT_EQ(other->Listen(port), 1); // this client is not welcome any more
        }
        if (what == "listen") { // the next one comes while the connection has not ended yet
            EXPECT_TRUE(second.call(port));
            pump_until([] { return true; }); // as a message box in a handler does
        } else if (what == "close") {
            other->CloseConnection();
            other->DelayedDelete();
        }
    };
    EXPECT_EQ(other->Listen(port) + first.call(port), 2);
    EXPECT_TRUE(other->tells("up 1") && other->IsListening());
    EXPECT_EQ(first.receive(1), "");
    EXPECT_TRUE(first.call(port));
    first.send("listen;x;");
    other->tells("up 1, listen, x, up 1");
    second.send("close;z;");
    EXPECT_TRUE(pump_until([&] { return ended == 1; }));
    EXPECT_EQ(second.receive(1), "");
}

TEST_F(ServerSocket, LeavesNothingBehindAfterManyConnections) {
    Talker<CTCPIPSocket> client;
    const auto round = [&](bool server_ends) {
        EXPECT_EQ(server.Listen(port) + client.Connect("127.0.0.1", port), 2);
        EXPECT_TRUE(client.tells("up 0") && server.tells("up 1"));
        EXPECT_EQ(client.say("question") + server.say("answer"), 2);
        EXPECT_TRUE(server.tells("question") && client.tells("answer"));
        server_ends ? server.CloseConnection() : client.Close();
        EXPECT_TRUE(server.tells("down 0") && client.tells(server_ends ? "down 0" : ""));
        client.Close(), server.Close();
    };
    round(true);
    const ProcessFacts before = process_facts();
    for (int i = 0; i < 400 / slow_build_divisor; ++i) {
        round(i % 2 == 0);
    }
    EXPECT_TRUE(back_to(before) && no_leaks());
}

TEST_F(ServerSocket, KeepsTheOrderOfAFloodBothWays) {
    constexpr int count = 100'000 / slow_build_divisor, window = 64;
    std::atomic<bool> listening = false;
    Worker thread([&] {
        Server other;
        bool over = false;
        other.then = [&](const std::string& what) {
            over = what == "down 0";
            over || what == "up 1" ? 0 : other.say(what);
            other.log.clear();
        };
        listening = other.Listen(port) == 1;
        return pump_until([&] { return over; });
    });
    EXPECT_TRUE(eventually([&] { return listening.load(); }));
    int sent = 0, received = 0, wrong = 0;
    Talker<CTCPIPSocket> client;
    client.then = [&](const std::string& what) {
        wrong += what != "up 0" && what != std::to_string(received++);
        while (sent < count && sent - received < window) {
            wrong += client.say(std::to_string(sent++)) == 0;
        }
        client.log.clear();
    };
    EXPECT_EQ(client.Connect("127.0.0.1", port), 1);
    EXPECT_TRUE(pump_until([&] { return received == count; })) << received;
    EXPECT_EQ(wrong, 0);
}

} // namespace
