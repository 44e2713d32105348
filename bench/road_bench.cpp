// The road of a measured point: from a machine's bytes on a pseudo terminal through the protocol to
// the handler in the client's thread, against the same done by hand: a thread that polls, reads,
// parses and stores, and wakes the client by an event descriptor.

#include "bench/report.h"
#include "bench/road_by_hand.h"
#include "platform/threads/event.h"
#include "platform/threads/wait.h"
#include "protocols/PercevalProtocol.h"
#include "tests/support/pty.h"

#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int record_length = 44;

std::string record(int number) {
    char text[record_length + 1];
    std::snprintf(text, sizeof text, "+%06d -00250 +12345 -00020 +00100 -99999\r\n",
                  number % 1'000'000);
    return text;
}

class Protocol final : public PercevalMicronProtocol {
  public:
    Protocol(const std::string& port, Progress& progress) : progress_(progress) {
        std::thread([&] { run_client(port); }).swap(client_);
        WaitForSingleObject(ready_, INFINITE);
        if (!Connect()) {
            std::exit(1);
        }
    }

    ~Protocol() override {
        Disconnect();
        PostMessageA(m_pClientWnd->GetSafeHwnd(), WM_CLOSE, 0, 0);
        client_.join();
    }

    void ScalePoint(__PointMMT& point) override {
        PercevalMicronProtocol::ScalePoint(point);
        progress_.parsed_one();
    }

  private:
    class Client final : public CWnd {
      public:
        explicit Client(Protocol& protocol) : protocol_(protocol) {
            CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
        }

      private:
        LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
            if (message != point_message_) {
                return CWnd::WindowProc(message, wparam, lparam);
            }
            __PointMMT point;
            {
                const tarnel::SectionGuard guard(protocol_.m_Lock);
                point = protocol_.m_LastPoint;
                protocol_.AcknowledgeLastPoint();
            }
            protocol_.progress_.handle(point.number);
            return 0;
        }

        Protocol& protocol_;
        const UINT point_message_ = RegisterWindowMessageA("CMMProtocolMessage");
    };

    void run_client(const std::string& port) {
        Client client(*this);
        Initialize(&client);
        m_Device.m_Configuration.SetPortName(port.c_str());
        ready_.SetEvent();
        for (MSG message;
             GetMessageA(&message, nullptr, 0, 0) > 0 && message.message != WM_CLOSE;) {
            DispatchMessageA(&message);
        }
    }

    Progress& progress_;
    CEvent ready_;
    std::thread client_;
};

struct Outcome {
    double records_a_second;
    double ns_a_record;
};

/// How the machine sends record `number`, or what waits for that.
using Pace = void (*)(const Progress& progress, int number);

void without_pause(const Progress&, int) {}

/// About 800 bytes are on their way.
void windowed(const Progress& progress, int number) {
    while (number - progress.parsed.load(std::memory_order_relaxed) > 800 / record_length) {
        std::this_thread::yield();
    }
}

void every_200_us(const Progress&, int) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
}

template <typename Road>
Outcome send(int count, int at_once, Pace pace) {
    support::Pty machine;
    Progress progress(count);
    Road road(machine.path(), progress);
    std::vector<std::string> blocks;
    for (int i = 0; i < count; ++i) {
        i % at_once ? void(blocks.back() += record(i)) : blocks.push_back(record(i));
    }
    const double time = bench::seconds([&] {
        int number = 0;
        for (const std::string& block : blocks) {
            pace(progress, number);
            machine.send(block);
            number += at_once;
        }
        while (progress.handled.load(std::memory_order_acquire) < count) {
            std::this_thread::yield();
        }
    });
    return {count / time, progress.cpu * 1e9 / count};
}

/// Microseconds from the write on the machine's end to the client's handler; the given part is
/// faster.
template <typename Road>
double latency(double part) {
    constexpr int count = 2'000;
    support::Pty machine;
    Progress progress(count);
    std::vector<double> delays;
    Clock::time_point sent;
    progress.on_point = [&] {
        delays.push_back(std::chrono::duration<double, std::micro>(Clock::now() - sent).count());
    };
    Road road(machine.path(), progress);
    for (int i = 0; i < count; ++i) {
        const std::string text = record(i);
        sent = Clock::now();
        machine.send(text);
        while (progress.handled.load(std::memory_order_acquire) <= i) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    const auto place = static_cast<std::ptrdiff_t>(part * count);
    std::nth_element(delays.begin(), delays.begin() + place, delays.end());
    return delays[static_cast<std::size_t>(place)];
}

/// Both measures of one way to send, the rate and the reader's time a record.
void compare(const std::string& area, int count, int at_once, Pace pace) {
    std::vector<double> ours, theirs;
    const auto run = [&](Outcome outcome, std::vector<double>& cpu) {
        cpu.push_back(outcome.ns_a_record);
        return outcome.records_a_second;
    };
    bench::report(area,
                  bench::compare([&] { return run(send<Protocol>(count, at_once, pace), ours); },
                                 [&] { return run(send<ByHand>(count, at_once, pace), theirs); },
                                 7),
                  "records/s");
    const double tarnel = bench::median(ours), minimum = bench::median(theirs);
    bench::report(area + ".cpu", {tarnel, minimum, tarnel / minimum}, "ns");
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 2) { // one run alone, to be looked at with other tools: t|m records [paced]
        const auto run = *argv[1] == 't' ? &send<Protocol> : &send<ByHand>;
        argc > 3 ? run(std::atoi(argv[2]), 1, &every_200_us)
                 : run(std::atoi(argv[2]), 1'000, &without_pause);
        return 0;
    }
    compare("a.serial.flood", 300'000, 1'000, &without_pause);
    compare("a.serial.windowed", 30'000, 1, &windowed);
    compare("a.serial.paced", 3'000, 1, &every_200_us);
    for (const auto& [name, part] : {std::pair{"p50", 0.5}, std::pair{"p99", 0.99}}) {
        bench::report(std::string("a.serial.latency.") + name,
                      bench::compare([part = part] { return latency<Protocol>(part); },
                                     [part = part] { return latency<ByHand>(part); }, 7),
                      "us");
    }
}
