// Answers "x", "y" or "z" with the machine's position along that axis, for one client after the
// other: measure_server PORT

#include "net/ServerSocket.h"
#include "net/TextData.h"
#include "platform/messages/message.h"

#include <cstdio>
#include <cstdlib>

namespace {

class Server final : public CTCPIPServerSocket {
  public:
    Server(CSocketDataStringFormat& lines, UINT port)
        : CTCPIPServerSocket(&question_), question_(lines), answer_(lines), port_(port) {}

    bool open() { return Listen(port_) != 0; }

  private:
    void OnMessageReceived(CSocketData*) override {
        const CString axis = question_.GetString();
        answer_.SetString(axis == "x"   ? "12.500"
                          : axis == "y" ? "20.250"
                          : axis == "z" ? "-3.125"
                                        : "?");
        Send(&answer_);
    }

    void OnConnectionEstablished(int) override {}

    void OnConnectionClosed(int) override {
        if (!open()) { // for the next client
            PostQuitMessage(1);
        }
    }

    CSocketDataString question_;
    CSocketDataString answer_;
    const UINT port_;
};

} // namespace

int main(int argc, char** argv) {
    CSocketDataStringFormat lines; // received by lines as it is
    lines.SetTerminator("\n");
    lines.SetSendNullTerminatedString(0);
    Server server(lines, argc > 1 ? static_cast<UINT>(std::atoi(argv[1])) : 7000);
    if (!server.open()) {
        std::fprintf(stderr, "The port cannot be had.\n");
        return 1;
    }
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message); // the server's handlers run here
    }
    return static_cast<int>(message.wParam);
}
