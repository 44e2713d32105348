#include "net/BinaryData.h"
#include "tests/net/talkers.h"

#include <thread>

namespace {

using namespace std::literals;

struct Payloads : support::Connection {};

TEST_F(Payloads, AreTakenApartInWhateverPiecesTheyCome) {
    const struct {
        const char* terminator;
        int each;
        std::string_view bytes;
        const char* messages;
    } cases[] = {
        {"", 0, "AB\r\nC\0\n\0\rD\n"sv, "AB, C, D"},
        {"\r\n", 0, "OK\r\n\r\nA\rB\nC\r\r\n"sv, "OK, , A\rB\nC\r"},
        {"\r\n", 1, "OK\r\n"sv, "OK\r, \n"},
        {";", 0, "a;;b;"sv, "a, , b"},
        {"aab", 0, "aaab"sv, "a"},
    };

    for (const auto& [terminator, each, bytes, messages] : cases) {
        client.format.SetReceivedStringTerminator(terminator);
        client.format.SetOptionalReceiveTerminators(each);
        for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
            for (const std::size_t cut : {piece, bytes.size() - piece}) { // in many, or in two
                peer.send(bytes.substr(0, cut));
                for (std::size_t done = cut; done < bytes.size(); done += piece) {
                    support::pump_until([] { return true; });
                    peer.send(bytes.substr(done, piece));
                }
                EXPECT_TRUE(client.tells(messages)) << piece;
            }
        }
    }
    client.format.SetTerminator("\r\n");
    client.format.SetSendNullTerminatedString(5);
    EXPECT_EQ(client.say("MOVE"), 1);
    EXPECT_EQ(peer.receive(7), "MOVE\r\n\0"s);
}

/// A block of known bytes; after "drop" it drops what has come with it.
struct Block : tbxSocketDataBinary {
    int Serialise(CArchive& ar) override {
        set_size(static_cast<unsigned>(bytes.size()));
        set_buf(bytes.data());
        tbxSocketDataBinary::Serialise(ar);
        return bytes == "drop" ? clear_archive(ar), 1 : 1;
    }

    std::string bytes;
};

TEST_F(Payloads, AreBlocksOfAnySizeToo) {
    for (int round = 0; round < 2; ++round) { // in the second one it reads all that has come
        for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 10'000'000U}) {
            Block sent, reply;
            for (std::size_t i = 0; i < size; ++i) {
                sent.bytes += static_cast<char>(i * 7 % 251);
            }
            reply.bytes.resize(size);
            std::thread echo([&] { peer.send(peer.receive(size)); });
            EXPECT_EQ(client.Send(&sent), 1);
            EXPECT_EQ(size ? client.GetSynchReply(&reply, 0, 60'000) : 1, 1);
            EXPECT_TRUE(reply.bytes == sent.bytes) << size;
            echo.join();
        }
        peer.send("u;");
        client.tells("u");
    }
    Block four{};
    four.bytes = "....";
    peer.send("drop12345678");
    EXPECT_EQ(client.GetSynchReply(&four, 0, 60'000), 1);
    peer.send("v;");
    client.tells("v");
}

} // namespace
