#include "tests/support/eventually.h"
#include "tests/support/pty.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"
#include "tests/support/x_server.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <thread>

// The tool's network verbs, with another program (nc) at the other end.

namespace {

using support::has;
using support::output_of;
using support::run_tool;
using support::Tool;

/// One that nobody has at the moment.
std::string free_port() {
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    socklen_t size = sizeof address;
    ::bind(probe, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(probe);
    return std::to_string(ntohs(address.sin_port));
}

const std::string port = free_port();
const std::string here = "127.0.0.1:" + port;

TEST(NetworkVerbs, ListenShowsTextsAndAnswersThem) {
    Tool listener("listen " + port + R"( --terminator '\r\n' --reply OK --format csv)");
    ASSERT_TRUE(listener.says("Listening"));
    EXPECT_EQ(output_of(R"(printf 'one\r\ntwo, "2"\r\n' | nc -q 1 127.0.0.1 )" + port),
              "OK\r\nOK\r");
    ASSERT_TRUE(listener.says("closed the connection\nListening"));
    const auto sent = run_tool("send " + here +
                               R"( three --terminator '\r\n' --reply --count 2 --timeout 60000)");
    EXPECT_EQ(sent.output, "OK\nOK\n") << sent.diagnostics;
    EXPECT_EQ(run_tool("listen " + port).exit_code, 4) << "somebody listens already";
    listener.signal(SIGINT);
    EXPECT_EQ(listener.wait(), 0);
    EXPECT_TRUE(has(listener.output(), "Time,Peer,Text\n"));
    EXPECT_TRUE(has(listener.output(), R"(,"two, ""2""")"));
    EXPECT_TRUE(has(listener.output(), ",three\n"));
}

TEST(NetworkVerbs, SendTellsWhatWentWrong) {
    EXPECT_EQ(run_tool("send " + here + " text").exit_code, 4);
    EXPECT_NE(run_tool("send 127.0.0.1 text").exit_code, 0);
    EXPECT_EQ(run_tool("send " + here + R"( text --terminator '\q')").exit_code, 3);
    Tool silent("listen " + port);
    ASSERT_TRUE(silent.says("Listening"));
    EXPECT_EQ(run_tool("send " + here + " text --reply --timeout 100").exit_code, 6);
}

TEST(NetworkVerbs, MonitorServesItsPointsToOneClientAfterTheOther) {
    const support::TemporaryRegistry registry;
    support::Pty machine;
    Tool monitor("monitor METROLEC --port " + machine.path() + " --serve " + port +
                 " --format json");
    ASSERT_TRUE(monitor.says("Monitoring"));
    const std::jthread points([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) { // what comes without a client is dropped
            machine.send("100 200 300 +\r");
            ::usleep(5'000);
        }
    });
    for (const char* client : {"first", "second"}) {
        std::string line;
        EXPECT_TRUE(support::eventually([&] { // the port is closed between two clients
            line = output_of("nc -d 127.0.0.1 " + port + " | head -n 1");
            return !line.empty();
        })) << client;
        EXPECT_TRUE(has(line, R"("x": 0.1, "y": 0.2, "z": 0.3, "x2": -0.9)"));
    }
}

} // namespace
