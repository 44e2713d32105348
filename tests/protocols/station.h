#pragma once

#include "platform/threads/clock.h"
#include "protocols/ProtocolRegister.h"
#include "protocols/SerialProtocol.h"
#include "tests/support/eventually.h"
#include "tests/support/pty.h"
#include "tests/support/slow_build.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Serial protocols, each on a machine that the test plays.

namespace support {

constexpr const char* metrolec = "METROLEC";

inline std::unique_ptr<CMMProtocolRS232> create(const std::string& name) {
    const ProtocolRegister* node = ProtocolRegister::m_Root;
    while (node->name != name) {
        node = node->next;
    }
    return std::unique_ptr<CMMProtocolRS232>(
        dynamic_cast<CMMProtocolRS232*>(node->runtime_class->CreateObject()));
}

/// A record that its machine ends with `end`, with x = `x` thousandths or hundredths.
inline std::string record(const std::string& name, int x, const std::string& end = "\r\n") {
    return name == "METROLEC" ? std::to_string(x) + " -20 30.5 +-0" + end
                              : "+" + std::to_string(x) + " -20 +30 -4 +50 -60 " + end;
}

inline double unit_of(const std::string& name) {
    return name == "PERCEVAL 1/100" ? 0.01 : 0.001; // mm
}

/// Everything that the line brings. Read under the protocol's lock.
struct Recorder final : tarnel::PointObserver {
    void OnPoint(const __PointMMT& point, int type, const tarnel::ReadTime& time) override {
        EXPECT_EQ(type, _CMMProtocol::MEASURED_POINT);
        EXPECT_EQ(time.monotonic_ns, newest.monotonic_ns) << "that of the block";
        points.push_back(point);
    }

    void OnBytes(std::span<const char> block, const tarnel::ReadTime& time) override {
        EXPECT_GE(time.monotonic_ns, newest.monotonic_ns);
        EXPECT_GT(time.utc_us, 0);
        newest = time;
        bytes.append(block.data(), block.size());
    }

    void OnBreak(const tarnel::ReadTime&) override { ++breaks; }

    /// The x coordinates in counts of `unit` millimetres.
    std::vector<long> x(double unit) const {
        std::vector<long> all;
        for (const __PointMMT& point : points) {
            all.push_back(std::lround(point.x / unit));
        }
        return all;
    }

    std::vector<__PointMMT> points;
    std::string bytes;
    int breaks = 0;
    tarnel::ReadTime newest;
};

/// A protocol of that name on a machine of its own, observed from the beginning.
struct Station {
    explicit Station(const std::string& name_, const std::string& port = "")
        : name(name_), protocol(create(name_)) {
        protocol->m_Device.m_Configuration.SetPortName(
            (port.empty() ? machine.path() : port).c_str());
        protocol->Initialize(nullptr);
        protocol->SetPointObserver(&seen);
    }

    /// Waits until the condition holds under the protocol's lock; false when it does not come.
    bool wait(const std::function<bool()>& condition) const {
        return eventually([&] {
            const tarnel::SectionGuard guard(protocol->m_Lock);
            return condition();
        });
    }

    /// Sends, and waits until all of it has been seen.
    void send(const std::string& bytes) {
        machine.send(bytes);
        sent += bytes.size();
        EXPECT_TRUE(wait([&] { return seen.bytes.size() == sent; }));
    }

    const std::string name;
    Pty machine;
    std::size_t sent = 0;
    Recorder seen;
    std::unique_ptr<CMMProtocolRS232> protocol;
};

/// A test of every protocol.
class EveryProtocol : public testing::TestWithParam<const char*> {
  protected:
    static bool is_metrolec() { return std::string_view(GetParam()) == metrolec; }
};

} // namespace support
