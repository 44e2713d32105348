#include "platform/registry/application.h"
#include "tests/net/talkers.h"
#include "tests/support/message_window.h"
#include "tests/support/reports.h"
#include "tests/support/worker.h"

#include <thread>

namespace {

using namespace support;

struct ClientSocket : Connection {};

template <typename Call>
bool throws(Call call) {
    try {
        return call(), false;
    } catch (CException* exception) {
        return exception->Delete(), true;
    }
}

TEST_F(ClientSocket, HandlesWhatComesAroundTheReplyInOrder) {
    peer.send("d1;n1;x;n2;d2;r;u1;u2;");
    EXPECT_EQ(client.await(), "r");
    client.tells("n1, n2, d1, d2, u1, u2"); // and reads all that has come from now on
    peer.send("d1;r;u1;");
    EXPECT_EQ(client.await(), "r");
    pump_until([] { return true; });
    client.tells("d1"); // the rest waits in the archive for a notification
    client.then = [&](const std::string& what) {
        EXPECT_EQ(what == "u3" ? client.await() : "r", "r");
    };
    peer.send("u2;u3;d2;r;u4;"); // what a handler's wait keeps is older than what follows
    client.tells("u1, u2, u3, d2, u4");
}

TEST_F(ClientSocket, WaitsAsLongAsItShould) {
    EXPECT_EQ(client.await(0), "none");
    client.then = [&](const std::string&) {
        EXPECT_TRUE(client.IsGettingSynchReply());
        EXPECT_EQ(client.say("no") + (client.await() != "none"), 0); // not within a wait
    };
    peer.send("n;r1;");
    EXPECT_EQ(client.await(0), "r1"); // it is there
    client.extension = 60'000;
    peer.send("x;");
    std::thread late([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        peer.send("r2;");
    });
    EXPECT_EQ(client.await(50), "r2");
    late.join();
}

TEST_F(ClientSocket, SurvivesEveryEnd) {
    const linger at_once{1, 0};
    for (const std::string end : {"down 0", "down 10054", "half"}) {
        for (const std::string bytes : {"", "ab;c"}) { // the second breaks off in a message
            peer.send(bytes);
            const std::string told = bytes.empty() ? "" : "ab, ";
            pump_until([&] { return (client.log + ", ").ends_with(told); });
            if (end == "down 10054") {
                setsockopt(peer.socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
            }
            end == "half" ? void(::shutdown(peer.socket, SHUT_WR)) : peer.hang_up();
            EXPECT_EQ(client.await(0xFFFFFFFF), "none");
            client.tells(told + (end == "half" ? "down 0" : end));
            EXPECT_EQ(client.IsConnected() + client.say("x") + (client.await() != "none"), 0);
            client.text.SetString(""); // the next connection begins anew
            client.Close();
            connect();
        }
    }
    client.Close();
    EXPECT_EQ(client.Connect("127.0.0.1", 1) + client.Connect("no such host", 1), 0);
}

TEST_F(ClientSocket, IsClosedAndDeletedByItsHandlers) {
    for (const auto& [bytes, place] :
         {std::pair("u;", "u"), {"d;r;", "d"}, {"n;r;", "n"}, {"", "down 0"}, {"", "up 0"}}) {
        for (const bool deleting : {false, true}) {
            Stranger other;
            int gone = 0, done = 0;
            auto* const socket = new Talker<CTCPIPSocket>;
            socket->ended = &gone;
            socket->then = [&](const std::string& what) {
                if (what == place) {
                    deleting ? socket->DelayedDelete() : socket->Close();
                    pump_until([] { return true; }); // as a message box in a handler does
                    EXPECT_EQ(gone + done++, 0) << "under its own feet";
                }
            };
            EXPECT_EQ(socket->Connect("127.0.0.1", other.port()), 1);
            other.take();
            other.send(bytes);
            if (std::string(bytes).ends_with("r;")) {
                EXPECT_EQ(socket->await(), *bytes == 'n' && !deleting ? "none" : "r");
            }
            *bytes ? void() : other.hang_up();
            pump_until([&] { return done && (deleting ? gone : !socket->IsConnected()); });
            deleting ? void() : (socket->DelayedDelete(), socket->Close()); // without a connection
            EXPECT_TRUE(pump_until([&] { return gone == 1; })) << place;
        }
    }
}

TEST_F(ClientSocket, GoesOnAfterExceptions) {
    struct Application : CWinApp {
        LRESULT ProcessWndProcException(CException* exception, const MSG* message) override {
            return ++told, CWinApp::ProcessWndProcException(exception, message);
        }

        int told = 0;
    } application;

    const Reports reports;
    client.then = [](const std::string& what) {
        what == "x" ? AfxThrowNotSupportedException() : void();
    };
    for (const char* const bytes : {"a!", ";x;"}) { // in the payload, in the handler
        peer.send(bytes);
        EXPECT_TRUE(pump_until([&] { return std::exchange(application.told, 0) == 1; }));
    }
    EXPECT_EQ(reports.count("CNotSupportedException"), 2);
    peer.send("d;c!");
    EXPECT_TRUE(throws([&] { client.await(); }));
    peer.send("y;");
    client.tells("a!, x, d, y");
}

TEST_F(ClientSocket, IsClosedWhileItSendsToAPeerThatDoesNotRead) {
    const MessageWindow window([&](UINT, WPARAM, LPARAM) { return client.Close(), LRESULT{1}; });
    Worker other([&] { return DWORD(SendMessageA(window.handle, WM_USER, 0, 0)); });
    EXPECT_TRUE(throws([&] { client.say(std::string(50'000'000, 'x')); }));
    EXPECT_FALSE(client.IsConnected());
    connect();
}

} // namespace
