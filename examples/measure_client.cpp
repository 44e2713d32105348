// Asks a measure_server where the machine stands: measure_client HOST PORT

#include "net/ClientSocket.h"
#include "net/TextData.h"

#include <cstdio>
#include <cstdlib>

namespace {

class Client final : public CTCPIPSocket {
  public:
    using CTCPIPSocket::CTCPIPSocket;

  private:
    void OnMessageReceived(CSocketData*) override {} // what comes unasked

    void OnConnectionEstablished(int) override {}

    void OnConnectionClosed(int) override { std::fprintf(stderr, "The server has gone.\n"); }
};

constexpr DWORD no_command = 0; // every message is the reply
constexpr DWORD patience_ms = 5'000;

} // namespace

int main(int argc, char** argv) {
    CSocketDataStringFormat lines;
    lines.SetTerminator("\n");
    lines.SetSendNullTerminatedString(0);
    CSocketDataString unasked(lines), question(lines), answer(lines);
    Client client(&unasked);
    if (argc < 3 || !client.Connect(argv[1], static_cast<UINT>(std::atoi(argv[2])))) {
        std::fprintf(stderr, "No connection: measure_client HOST PORT\n");
        return 1;
    }
    for (const char* const axis : {"x", "y", "z"}) {
        question.SetString(axis);
        if (!client.SendAndGetSynchReply(&question, &answer, no_command, patience_ms)) {
            std::fprintf(stderr, "No answer in time.\n");
            return 1;
        }
        std::printf("%s = %s mm\n", axis, answer.GetString().GetString());
    }
    client.Close();
    return 0;
}
