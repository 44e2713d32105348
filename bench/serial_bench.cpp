// Bytes from a pseudo terminal through the device's reader thread, against a thread written by hand
// that polls the port and reads it.

#include "bench/report.h"
#include "serial/ComDevice.h"
#include "tests/support/pty.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <functional>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

/// What happens to a block of bytes on the reader thread.
using Handler = std::function<void(std::size_t count)>;

double thread_seconds() {
    timespec used{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return double(used.tv_sec) + 1e-9 * double(used.tv_nsec);
}

class Device final : public CComDevice {
  public:
    Device(const std::string& port, Handler handler) : handler_(std::move(handler)) {
        m_Configuration.SetPortName(port.c_str());
        if (!OpenConnection(1)) {
            std::exit(1);
        }
    }

    ~Device() override { CloseConnection(); }

    double cpu = 0; ///< of the reader thread, once closed

  private:
    int OnReadCommBlock() override {
        const int count = CComDevice::OnReadCommBlock();
        if (count > 0) {
            handler_(static_cast<std::size_t>(count));
        }
        return count;
    }

    void OnThreadEnd() override { cpu = thread_seconds(); }

    Handler handler_;
};

class ByHand {
  public:
    ByHand(const std::string& port, Handler handler)
        : port_(::open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)), stop_(::eventfd(0, 0)),
          handler_(std::move(handler)), thread_([this] { run(); }) {}

    ~ByHand() { CloseConnection(); }

    void CloseConnection() {
        if (thread_.joinable()) {
            ::eventfd_write(stop_, 1);
            thread_.join();
            ::close(port_);
            ::close(stop_);
        }
    }

    double cpu = 0;

  private:
    void run() {
        pollfd entries[] = {{port_, POLLIN, 0}, {stop_, POLLIN, 0}};
        char block[1024];
        while (::poll(entries, 2, -1) > 0 && !entries[1].revents) {
            const auto count = ::read(port_, block, sizeof block);
            if (count > 0) {
                handler_(static_cast<std::size_t>(count));
            }
        }
        cpu = thread_seconds();
    }

    const int port_;
    const int stop_;
    Handler handler_;
    std::thread thread_;
};

struct Flood {
    double bytes_a_second;
    double ns_a_kib;
};

template <typename Reader>
Flood flood() {
    constexpr std::size_t total = 30'000'000;
    support::Pty machine;
    std::atomic<std::size_t> received = 0;
    Reader reader(machine.path(), [&](std::size_t count) { received += count; });
    const std::string block(64 * 1024, '7');
    const double time = bench::seconds([&] {
        for (std::size_t sent = 0; sent < total; sent += block.size()) {
            machine.send(block);
        }
        while (received < total) {
            std::this_thread::yield();
        }
    });
    reader.CloseConnection();
    return {double(received) / time, reader.cpu * 1e9 / (double(received) / 1024)};
}

/// Microseconds from a small write on the machine's end to the handler; the given part is faster.
template <typename Reader>
double latency(double part) {
    constexpr std::size_t count = 2'000;
    support::Pty machine;
    std::vector<double> delays;
    std::atomic<std::size_t> handled = 0;
    Clock::time_point sent;
    Reader reader(machine.path(), [&](std::size_t) {
        delays.push_back(std::chrono::duration<double, std::micro>(Clock::now() - sent).count());
        ++handled;
    });
    for (std::size_t i = 1; i <= count; ++i) {
        sent = Clock::now();
        machine.send("1234567\r");
        while (handled < i) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    reader.CloseConnection();
    const auto place = static_cast<std::ptrdiff_t>(part * double(count));
    std::nth_element(delays.begin(), delays.begin() + place, delays.end());
    return delays[static_cast<std::size_t>(place)];
}

} // namespace

int main() {
    bench::report("a.serial.bytes",
                  bench::compare([] { return flood<Device>().bytes_a_second; },
                                 [] { return flood<ByHand>().bytes_a_second; }, 7),
                  "bytes/s");
    bench::report("a.serial.cpu",
                  bench::compare([] { return flood<Device>().ns_a_kib; },
                                 [] { return flood<ByHand>().ns_a_kib; }, 7),
                  "ns");
    for (const auto& [name, part] : {std::pair{"p50", 0.5}, std::pair{"p99", 0.99}}) {
        bench::report(std::string("a.serial.raw.") + name,
                      bench::compare([part = part] { return latency<Device>(part); },
                                     [part = part] { return latency<ByHand>(part); }, 7),
                      "us");
    }
}
