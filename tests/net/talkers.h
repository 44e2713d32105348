#pragma once

#include "net/ServerSocket.h"
#include "net/TextData.h"
#include "platform/base/exceptions.h"
#include "tests/support/eventually.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>

namespace support {

template <typename Condition>
bool pump_until(Condition condition) {
    return eventually([&] {
        for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
            DispatchMessageA(&message);
        }
        return condition();
    });
}

/// A stranger at the other end: a plain socket that waits in each call.
struct Stranger {
    Stranger() {
        socklen_t size = sizeof address;
        listen(listener, 1); // on any free port
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    }

    ~Stranger() { hang_up(), ::close(listener); }

    UINT port() const { return ntohs(address.sin_port); }

    void take() { hang_up(), socket = ::accept(listener, nullptr, nullptr); }

    bool call(UINT port) {
        hang_up(), socket = ::socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in to{AF_INET, htons(std::uint16_t(port)), {htonl(INADDR_LOOPBACK)}, {}};
        return ::connect(socket, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
    }

    void send(std::string_view bytes) { ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL); }

    std::string receive(std::size_t count) {
        std::string bytes(count, '\0');
        const auto got = count ? ::recv(socket, bytes.data(), count, MSG_WAITALL) : 0;
        return bytes.substr(0, got > 0 ? std::size_t(got) : 0);
    }

    void hang_up() { ::close(socket), socket = -1; }

    int socket = -1;
    sockaddr_in address{};
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
};

/// A text that can be kept, and that throws at an '!'.
struct Text : CSocketDataString {
    explicit Text(CSocketDataStringFormat& rules) : CSocketDataString(rules), format(rules) {}

    operator std::string() const { return GetString().GetString(); }

    int Serialise(CArchive& ar) override {
        const int complete = CSocketDataString::Serialise(ar);
        const bool bad = !complete && std::string(*this).ends_with('!');
        return bad ? AfxThrowNotSupportedException(), 0 : complete;
    }

    void Clone(CSocketData*& copy) override {
        auto* const made = new Text(format);
        made->SetString(GetString());
        copy = made;
    }

    CSocketDataStringFormat& format;
};

/// Logs what its handlers are told ("up 0, text, down 0") and calls `then` after each. To a wait a
/// text that begins with r is the reply, n one for now, and d one for later.
template <typename Base>
struct Talker : Base {
    Talker() : Base(&text) {
        format.SetReceivedStringTerminator(";");
        format.SetTerminator(";");
        format.SetSendNullTerminatedString(0);
    }

    ~Talker() override { ended ? ++*ended : 0; }

    int say(const std::string& words) {
        Text said(format);
        said.SetString(words.c_str());
        return Base::Send(&said);
    }

    std::string await(DWORD milliseconds = 60'000) {
        Text reply(format);
        return Base::GetSynchReply(&reply, 7, milliseconds) ? std::string(reply) : "none";
    }

    void note(const std::string& what) {
        log += (log.empty() ? "" : ", ") + what;
        then ? then(what) : void();
    }

    /// Whether nothing but `expected` is told.
    bool tells(const std::string& expected) {
        pump_until([&] { return log == expected; });
        EXPECT_EQ(log, expected);
        return std::exchange(log, "") == expected;
    }

    void OnMessageReceived(CSocketData* data) override { note(*static_cast<Text*>(data)); }

    void OnConnectionClosed(int error) override { note("down " + std::to_string(error)); }

    void OnConnectionEstablished(int accepted) override { note("up " + std::to_string(accepted)); }

    int IsExpectedCommand(CSocketData* data, DWORD, DWORD* more,
                          CTCPIPSocket::ProcessesingType* type) override {
        auto* const words = dynamic_cast<Text*>(data);
        const char kind = words ? std::string(*words)[0] : 'r';
        *more = extension;
        *type = kind == 'n' ? Base::ProcessNow : kind == 'd' ? Base::ProcessDelayed : Base::Ignore;
        return kind == 'r';
    }

    CSocketDataStringFormat format;
    Text text{format};
    std::string log;
    std::function<void(const std::string&)> then;
    DWORD extension = 0;
    int* ended = nullptr;
};

/// A client on a connection with a stranger.
struct Connection : testing::Test {
    Connection() { connect(); }

    void connect() {
        EXPECT_EQ(client.Connect("localhost", peer.port()), 1);
        peer.take();
        client.tells("up 0");
    }

    Stranger peer;
    Talker<CTCPIPSocket> client;
};

} // namespace support
