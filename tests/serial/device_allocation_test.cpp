#include "platform/threads/clock.h"
#include "serial/ComDevice.h"
#include "tests/support/allocations.h"
#include "tests/support/pty.h"

#include <gtest/gtest.h>

namespace {

class CountingDevice final : public CComDevice {
  public:
    explicit CountingDevice(const std::string& port) { m_Configuration.SetPortName(port.c_str()); }

    ~CountingDevice() override { CloseConnection(); }

    std::atomic<std::size_t> received = 0;

  private:
    int OnReadCommBlock() override {
        const int count = CComDevice::OnReadCommBlock();
        received += static_cast<std::size_t>(count);
        return count;
    }
};

TEST(Allocation, ReceivedBytesReachTheReaderWithoutAny) {
    support::Pty machine;
    CountingDevice device(machine.path());
    ASSERT_EQ(device.OpenConnection(1), 1);
    std::size_t before = 0;
    std::size_t sent = 0;
    for (int i = 0; i < 2'000; ++i) {
        if (i == 100) { // the thread has settled
            before = support::allocations();
        }
        machine.send("1234567\r");
        sent += 8;
        while (device.received < sent) {
            Sleep(0);
        }
    }
    EXPECT_EQ(support::allocations(), before);
}

} // namespace
