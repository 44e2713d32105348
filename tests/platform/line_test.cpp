#include "platform/comm/comm.h"
#include "platform/comm/line_input.h"
#include "platform/comm/tty.h"
#include "platform/threads/event.h"
#include "tests/support/pty.h"

#include <asm/termbits.h>
#include <asm/termios.h>
#include <gtest/gtest.h>
#include <linux/serial.h>

#include <atomic>
#include <memory>
#include <random>
#include <string>

extern "C" int ioctl(int, unsigned long, ...) noexcept; // <sys/ioctl.h> collides with termbits.h

namespace {

using tarnel::LineInput;

std::string take_all(LineInput& input) {
    char bytes[LineInput::capacity];
    return {bytes, input.take(bytes, sizeof bytes)};
}

TEST(LineInput, TakesMarksOutWhereverTheStreamIsCut) {
    // What a marking tty makes of bytes of which some are damaged.
    std::mt19937 random(1);
    for (int round = 0; round < 2'000; ++round) {
        std::string marked, expected;
        std::vector<std::size_t> damaged;
        for (int i = 0; i < 60; ++i) {
            const char c = random() % 3 ? char(random()) : '\xFF';
            if (random() % 8 == 0) {
                damaged.push_back(expected.size());
                marked += std::string("\xFF\0", 2) + c;
            } else {
                marked += c == '\xFF' ? std::string("\xFF\xFF") : std::string(1, c);
            }
            expected += c;
        }
        LineInput input(true);
        std::string got;
        std::vector<std::size_t> breaks;
        for (std::string_view rest = marked; !rest.empty() || input.available() > 0;) {
            const auto part = rest.substr(0, random() % 7);
            input.add(part);
            rest.remove_prefix(part.size());
            if (random() % 2) {
                if (input.take_break()) {
                    breaks.push_back(got.size());
                }
                char bytes[5];
                got.append(bytes, input.take(bytes, 1 + random() % 5));
            }
        }
        ASSERT_EQ(got, expected);
        ASSERT_EQ(breaks, damaged);
    }
}

TEST(LineInput, HoldsABufferFullAndKeepsBytesThatNoTtyMarked) {
    LineInput input(true);
    std::string sent = "\xFFZ"; // received before the tty marked anything
    input.add(sent);
    while (input.room() > 0) {
        const std::string part(std::min<std::size_t>(input.room(), 777),
                               char('b' + sent.size() % 7));
        input.add(part);
        sent += part;
    }
    EXPECT_GE(sent.size(), LineInput::capacity - 2);
    EXPECT_EQ(take_all(input), sent);
}

TEST(LineInput, TrustsNoByteOfABlockWithAnOverrun) {
    LineInput input(true);
    input.add(std::string_view("abc"));
    const auto place = input.received();
    input.add(std::string_view("d\xFF\0e", 4)); // with a damaged byte of its own
    input.spoil_since(place);
    EXPECT_EQ(take_all(input), "abc");
    for (const char* byte : {"d", "e", ""}) {
        EXPECT_TRUE(input.take_break());
        EXPECT_FALSE(input.take_break());
        EXPECT_EQ(take_all(input), byte);
    }
}

/// Plays a port with modem lines and error counters, on a pseudo terminal.
std::atomic<int> modem_lines;
std::atomic<int> parity_errors;

int control(int descriptor, unsigned long request, void* argument) {
    switch (request) {
    case TIOCMGET:
        *static_cast<int*>(argument) = modem_lines;
        return 0;
    case TIOCMBIS:
        modem_lines |= *static_cast<int*>(argument);
        return 0;
    case TIOCMBIC:
        modem_lines &= ~*static_cast<int*>(argument);
        return 0;
    case TIOCGICOUNT:
        *static_cast<serial_icounter_struct*>(argument) = {};
        static_cast<serial_icounter_struct*>(argument)->parity = parity_errors;
        return 0;
    default:
        return ::ioctl(descriptor, request, argument);
    }
}

class PlayedLine : public testing::Test {
  protected:
    PlayedLine() {
        modem_lines = parity_errors = 0;
        tarnel::set_tty_control(&control);
        line = CreateFileA(machine.path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                           OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
        settings.DCBlength = sizeof settings;
        GetCommState(line, &settings);
        overlapped.hEvent = event;
        const COMMTIMEOUTS timeouts{0, 0, 5'000, 0, 200};
        SetCommTimeouts(line, &timeouts);
    }

    ~PlayedLine() override {
        CloseHandle(line);
        tarnel::set_tty_control(nullptr);
    }

    /// Bytes written within the time-out.
    DWORD write(const std::string& text) {
        DWORD count = 0;
        WriteFile(line, text.data(), DWORD(text.size()), nullptr, &overlapped);
        EXPECT_TRUE(GetOverlappedResult(line, &overlapped, &count, TRUE));
        return count;
    }

    support::Pty machine;
    HANDLE line = nullptr;
    DCB settings{};
    CEvent event{FALSE, TRUE};
    OVERLAPPED overlapped{};
};

TEST_F(PlayedLine, WaitsForTheOtherSideWithTheDtrDsrHandshake) {
    settings.fOutxDsrFlow = 1;
    settings.fDtrControl = DTR_CONTROL_HANDSHAKE;
    ASSERT_TRUE(SetCommState(line, &settings));
    EXPECT_TRUE(modem_lines & TIOCM_DTR);
    EXPECT_EQ(write("held"), 0U);
    modem_lines |= TIOCM_DSR;
    EXPECT_EQ(write("sent"), 4U);
    EXPECT_EQ(machine.receive(4), "sent");
    EXPECT_TRUE(EscapeCommFunction(line, CLRDTR));
    EXPECT_FALSE(modem_lines & TIOCM_DTR);
}

TEST_F(PlayedLine, TellsOfALineErrorAndDeliversItsByte) {
    DWORD errors = 0, events = 0, count = 0;
    COMSTAT status{};
    ASSERT_TRUE(SetCommMask(line, EV_RXCHAR | EV_ERR));
    ++parity_errors;
    machine.send("x");
    WaitCommEvent(line, &events, &overlapped);
    EXPECT_TRUE(GetOverlappedResult(line, &overlapped, &count, TRUE));
    EXPECT_EQ(events, EV_RXCHAR | EV_ERR);
    EXPECT_TRUE(ClearCommError(line, &errors, &status));
    EXPECT_EQ(errors, CE_RXPARITY);
    EXPECT_EQ(status.cbInQue, 1U);
    char byte = 0;
    EXPECT_TRUE(ReadFile(line, &byte, 1, &count, &overlapped));
    EXPECT_EQ(byte, 'x');
    EXPECT_TRUE(ClearCommError(line, &errors, &status));
    EXPECT_EQ(errors, 0U);
}

TEST_F(PlayedLine, ComesBackWithItsModemLinesAndABreak) {
    support::PortName name;
    auto first = std::make_unique<support::Pty>();
    name.point_to(*first);
    HANDLE port = CreateFileA(name.path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                              OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    DWORD events = 0, count = 0;
    EXPECT_TRUE(SetCommMask(port, EV_RXCHAR | EV_ERR));
    EXPECT_FALSE(WaitCommEvent(port, &events, &overlapped));
    EXPECT_FALSE(tarnel::take_line_break(port));
    support::Pty second;
    name.point_to(second);
    first.reset();
    modem_lines = 0;
    EXPECT_TRUE(GetOverlappedResult(port, &overlapped, &count, TRUE));
    EXPECT_EQ(events, EV_ERR);
    EXPECT_EQ(modem_lines, TIOCM_DTR | TIOCM_RTS);
    EXPECT_TRUE(tarnel::take_line_break(port));
    EXPECT_FALSE(tarnel::take_line_break(port));
    EXPECT_TRUE(CloseHandle(port));
}

TEST_F(PlayedLine, EndsWaitsWhenTheMaskChangesAndReadsWhenTheyAreAborted) {
    DWORD events = 99, count = 0;
    char bytes[4];
    EXPECT_FALSE(WaitCommEvent(line, &events, &overlapped)); // no mask yet
    ASSERT_TRUE(SetCommMask(line, EV_RXCHAR));
    EXPECT_FALSE(WaitCommEvent(line, &events, &overlapped));
    EXPECT_FALSE(GetOverlappedResult(line, &overlapped, &count, FALSE));
    EXPECT_TRUE(SetCommMask(line, EV_RXCHAR));
    EXPECT_TRUE(GetOverlappedResult(line, &overlapped, &count, TRUE));
    EXPECT_EQ(events, 0U);

    EXPECT_FALSE(ReadFile(line, bytes, 4, nullptr, &overlapped));
    EXPECT_FALSE(ReadFile(line, bytes, 4, nullptr, &overlapped)); // one at a time
    EXPECT_TRUE(PurgeComm(line, PURGE_RXABORT));
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_FALSE(GetOverlappedResult(line, &overlapped, &count, TRUE));

    // The interval ends a read that has begun.
    const COMMTIMEOUTS interval{20, 0, 0, 0, 0};
    SetCommTimeouts(line, &interval);
    machine.send("ab");
    ReadFile(line, bytes, 4, nullptr, &overlapped);
    EXPECT_TRUE(GetOverlappedResult(line, &overlapped, &count, TRUE));
    EXPECT_EQ(count, 2U);
    // And this one returns with what there is, which is nothing.
    const COMMTIMEOUTS at_once{0xFFFFFFFF, 0, 0, 0, 0};
    SetCommTimeouts(line, &at_once);
    EXPECT_TRUE(ReadFile(line, bytes, 4, &count, &overlapped));
    EXPECT_EQ(count, 0U);
}

} // namespace
