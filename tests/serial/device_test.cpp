#include "platform/messages/message.h"
#include "platform/threads/clock.h"
#include "platform/threads/event.h"
#include "serial/ComDevice.h"
#include "tests/support/eventually.h"
#include "tests/support/message_window.h"
#include "tests/support/process_facts.h"
#include "tests/support/pty.h"
#include "tests/support/reports.h"
#include "tests/support/slow_build.h"

#include <gtest/gtest.h>
#include <termios.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <mutex>
#include <random>
#include <thread>

namespace {

using support::PortName;
using support::Pty;
using support::Reports;
using support::slow_build_divisor;

/// A device that keeps what its reader thread receives.
class Device : public CComDevice {
  public:
    explicit Device(const std::string& port) { m_Configuration.SetPortName(port.c_str()); }

    ~Device() override { CloseConnection(); }

    /// Waits until that many bytes have come in all, at most a minute.
    std::string wait_for(std::size_t count) {
        support::eventually([&] { return size() >= count; });
        const std::lock_guard guard(lock);
        return received;
    }

    std::size_t size() {
        const std::lock_guard guard(lock);
        return received.size();
    }

    void OnThreadStart() override { ++starts; }

    void OnThreadEnd() override { ++ends; }

    int OnReadCommBlock() override {
        const bool broken = TakeBreak();
        const int count = CComDevice::OnReadCommBlock();
        const std::lock_guard guard(lock);
        if (broken) {
            breaks.push_back(received.size());
        }
        calls.push_back(count);
        if (count > 0) {
            received.append(m_pReceiveBuffer.get(), static_cast<std::size_t>(count));
        }
        if (on_block) {
            on_block();
        }
        return count;
    }

    std::mutex lock;
    std::string received;
    std::vector<int> calls;
    std::vector<std::size_t> breaks;
    std::atomic<int> starts = 0;
    std::atomic<int> ends = 0;
    std::function<void()> on_block;
};

std::string random_bytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

TEST(Device, DeliversEveryByteInOrderInBlocksOfAtMost1024) {
    const std::string sent = random_bytes(std::size_t{100'000'000} / slow_build_divisor, 1);
    Pty machine;
    Device device(machine.path());
    ASSERT_EQ(device.OpenConnection(1), 1);
    ASSERT_EQ(device.OpenConnection(1), 1); // and changes nothing
    std::thread sender([&] { machine.send(sent); });
    const bool equal = device.wait_for(sent.size()) == sent;
    sender.join();
    EXPECT_TRUE(equal);
    EXPECT_LE(*std::ranges::max_element(device.calls), 1024);
    EXPECT_EQ(device.starts, 1);
    EXPECT_EQ(device.CloseConnection(), 1);
    EXPECT_EQ(device.CloseConnection(), 0);
    EXPECT_EQ(device.ends, 1);
}

TEST(Device, KeepsWhatHasArrivedBeforeAndReadsItInBlocks) {
    Pty machine;
    machine.send(std::string(3'000, 'x'));
    Device device(machine.path());
    ASSERT_EQ(device.OpenConnection(1), 1);
    EXPECT_EQ(device.wait_for(3'000), std::string(3'000, 'x'));
    device.CloseConnection();
    EXPECT_EQ(device.calls, (std::vector<int>{1024, 1024, 952, 0}));
}

TEST(Device, WritesAllByteValues) {
    Pty machine;
    Device device(machine.path());
    std::string all;
    for (int i = 0; i < 256; ++i) {
        all += static_cast<char>(i);
    }
    EXPECT_EQ(device.WriteCommBlock("early"), 0);
    ASSERT_EQ(device.OpenConnection(0), 1);
    EXPECT_EQ(device.WriteCommBlock(all.data(), 256), 1);
    EXPECT_EQ(device.WriteCommBlock("MEAS 1\r"), 1);
    EXPECT_EQ(machine.receive(263), all + "MEAS 1\r");

    Pty silent; // reads nothing
    Device stuck(silent.path());
    ASSERT_EQ(stuck.OpenConnection(0), 1);
    const std::string much(1'000'000, 'w');
    EXPECT_EQ(stuck.WriteCommBlock(much.data(), DWORD(much.size())), 0);
    EXPECT_EQ(stuck.CloseConnection(), 1);
}

TEST(Device, ReadsBlocksAndLinesOnRequest) {
    Pty machine;
    Device device(machine.path());
    CString line("before");
    char block[10];
    EXPECT_EQ(device.ReadCommBlock(block, 10, 10), CComDevice::read_failed);
    ASSERT_EQ(device.OpenConnection(0), 1);

    EXPECT_EQ(device.ReadCommLine(line, 0), CComDevice::read_failed);
    EXPECT_EQ(device.ReadCommLine(line, 30), CComDevice::read_failed);
    EXPECT_EQ(line, "before");
    machine.send("\r\nABC\r\n");
    EXPECT_EQ(device.ReadCommLine(line, 5'000), 3U);
    EXPECT_EQ(line, "ABC");
    machine.send(std::string("\xFF\x80\t1\0", 5));
    EXPECT_EQ(device.ReadCommLine(line, 5'000), 4U);
    EXPECT_EQ(line, "\xFF\x80\t1");
    machine.send(std::string(999, 'l') + "rest\r");
    EXPECT_EQ(device.ReadCommLine(line, 5'000), 999U);
    EXPECT_EQ(device.ReadCommLine(line, 5'000), 4U);
    EXPECT_EQ(line, "rest");

    machine.send("1234");
    EXPECT_EQ(device.ReadCommBlock(block, 10, 100), CComDevice::read_failed);
    machine.send("0123456789");
    EXPECT_EQ(device.ReadCommBlock(block, 10, 5'000), 10U);
    EXPECT_EQ(std::string(block, 10), "0123456789");
}

TEST(Device, ClosesAtOnceWhateverThePeerDoes) {
    const Reports reports;
    const auto before = support::process_facts();
    for (int cycle = 0; cycle < 1'000 / slow_build_divisor; ++cycle) {
        Pty machine;
        Device device(machine.path());
        ASSERT_EQ(device.OpenConnection(1), 1);
        std::thread flood([&] { machine.send(std::string(20'000, 'f')); });
        device.wait_for(std::size_t(cycle) % 8 * 100);
        EXPECT_EQ(device.CloseConnection(), 1);
        ASSERT_EQ(device.OpenConnection(1), 1); // so that the flood runs off
        flood.join();
        if (cycle % 2) {
            machine.unplug();
        }
    }
    EXPECT_TRUE(support::back_to(before));
}

TEST(Device, ClosesWhileItsReaderSendsToTheClosingThread) {
    std::atomic<int> sent = 0;
    const support::MessageWindow window([&](UINT, WPARAM, LPARAM) { return ++sent; });
    Pty machine;
    Device device(machine.path());
    CEvent sending;
    device.on_block = [&] {
        sending.SetEvent();
        SendMessageA(window.handle, WM_USER, 0, 0);
    };
    ASSERT_EQ(device.OpenConnection(1), 1);
    machine.send("point");
    WaitForSingleObject(sending, INFINITE);
    EXPECT_EQ(device.CloseConnection(), 1);
    EXPECT_GE(sent, 1);
    EXPECT_EQ(device.ends, 1);
}

double cpu_seconds() {
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) + 1e-9 * double(used.tv_nsec);
}

TEST(Device, GoesOnWhenAPulledLineComesBack) {
    const Reports reports;
    PortName name;
    auto machine = std::make_unique<Pty>();
    name.point_to(*machine);
    Device device(name.path.string());
    ASSERT_EQ(device.OpenConnection(1), 1);
    machine->send("half a rec");
    device.wait_for(10);

    machine.reset();
    ASSERT_TRUE(support::eventually([&] { return reports.count("is lost") == 1; }));
    const double before = cpu_seconds();
    Sleep(500);
    EXPECT_LT(cpu_seconds() - before, 0.25) << "the reader spins";
    EXPECT_EQ(device.WriteCommBlock("anybody?"), 0);

    Pty again; // a terminal that would edit and echo, as any new one
    termios settings{};
    ::tcgetattr(again.descriptor(), &settings);
    settings.c_lflag |= ICANON | ECHO;
    settings.c_iflag |= ICRNL;
    ::tcsetattr(again.descriptor(), TCSANOW, &settings);
    name.point_to(again);
    ASSERT_TRUE(support::eventually([&] { return reports.count("is back") == 1; }));
    again.send("ord\r\xFFnew\r");
    EXPECT_EQ(device.wait_for(19), "half a record\r\xFFnew\r");
    EXPECT_EQ(device.WriteCommBlock("hello"), 1);
    EXPECT_EQ(again.receive(5), "hello");
    device.CloseConnection();
    EXPECT_EQ(device.breaks, std::vector<std::size_t>{10});
    EXPECT_EQ(reports.count("is lost"), 1U);
    EXPECT_EQ(reports.count("is back"), 1U);
}

TEST(Device, ClosesAtOnceWhileTheLineIsLost) {
    const Reports reports;
    Pty machine;
    Device device(machine.path());
    ASSERT_EQ(device.OpenConnection(1), 1);
    machine.unplug();
    ASSERT_TRUE(support::eventually([&] { return reports.count("is lost") == 1; }));
    EXPECT_EQ(device.CloseConnection(), 1);
    EXPECT_EQ(device.ends, 1);
}

TEST(Device, SaysWhyAPortCannotBeOpened) {
    const Reports reports;
    Pty machine;
    Device holder(machine.path()), second(machine.path());
    ASSERT_EQ(holder.OpenConnection(0), 1);
    EXPECT_EQ(second.OpenConnection(1), 0);
    EXPECT_EQ(reports.count("is in use"), 1U);
    holder.CloseConnection();
    EXPECT_EQ(second.OpenConnection(1), 1);

    for (const char* name :
         {"/dev/no_such_port", "/", "/dev/null", "nonsense", "", "COM0:", "COM1:x"}) {
        Device device(name);
        EXPECT_EQ(device.OpenConnection(1), 0) << name;
        EXPECT_EQ(device.GetHandle(), INVALID_HANDLE_VALUE);
        EXPECT_EQ(device.IsConnected(), 0);
    }
    EXPECT_EQ(reports.lines().size(), 8U) << "one line for each failure";
}

TEST(Device, RefusesSettingsThatMakeNoSense) {
    const Reports reports;
    Pty machine;
    Device device(machine.path());

    const struct {
        int rate;
        WORD parity, byte_size, stop_bits;
        int opens;
    } cases[] = {
        {19'201, 0, 7, 0, 0}, // unlisted
        {14'400, 0, 7, 0, 1},
        {14'400, 0, 7, 1, 0}, // one and a half stop bits are for 5 data
                              // bits
        {14'400, 0xFFFF, 7, 0, 0},
        {14'400, 4, 9, 0, 0},
        {14'400, 4, 8, 0, 1},
    };

    for (const auto& [rate, parity, byte_size, stop_bits, opens] : cases) {
        device.m_Configuration.SetBaudRate(rate);
        device.m_Configuration.m_wParity = parity;
        device.m_Configuration.m_wByteSize = byte_size;
        device.m_Configuration.m_wStopBits = stop_bits;
        EXPECT_EQ(device.OpenConnection(1), opens) << rate << parity << byte_size << stop_bits;
        device.CloseConnection();
    }
    EXPECT_EQ(reports.count("cannot be set up"), 4U) << "one line for each";
}

} // namespace
