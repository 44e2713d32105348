#include "platform/comm/tty.h"
#include "protocols/MetrolecProtocol.h"
#include "tests/protocols/station.h"
#include "tests/support/client_window.h"
#include "tests/support/reports.h"
#include "tests/support/scripted_presenter.h"

#include <linux/serial.h>
#include <sys/ioctl.h>

#include <thread>

namespace {

using namespace support;

class SerialProtocol : public EveryProtocol {};

INSTANTIATE_TEST_SUITE_P(All, SerialProtocol,
                         testing::Values(metrolec, "PERCEVAL 1/100", "PERCEVAL MICRON"));

/// The client reads and acknowledges under the lock, so that the last point is never lost on it.
TEST_P(SerialProtocol, TellsABusyClientOfTheLastPointAtLeast) {
    const int count = 20'000 / slow_build_divisor;
    ClientWindow client;
    Station station(GetParam());
    station.protocol->SetPointObserver(nullptr);
    station.protocol->Initialize(&client);
    ASSERT_EQ(station.protocol->Connect(), 1);
    int last = -1;
    client.on_point = [&] {
        const tarnel::SectionGuard guard(station.protocol->m_Lock);
        EXPECT_GT(station.protocol->m_LastPoint.number, last);
        last = station.protocol->m_LastPoint.number;
        station.protocol->AcknowledgeLastPoint();
    };
    std::thread flood([&] {
        for (int i = 0; i < count; ++i) {
            station.machine.send(record(GetParam(), i, "\r"));
        }
    });
    const int end = count - (!is_metrolec());
    EXPECT_TRUE(dispatch_until([&] { return client.told(), last == end; }));
    flood.join();
}

TEST_P(SerialProtocol, DropsTheRecordsAroundAPulledCable) {
    for (const bool in_a_record : {true, false}) {
        const Reports reports;
        PortName name;
        auto machine = std::make_unique<Pty>();
        name.point_to(*machine);
        Station station(GetParam(), name.path);
        ASSERT_EQ(station.protocol->Connect(), 1);
        const std::string before = record(GetParam(), 1) + (in_a_record ? "-77 +88 " : "");
        machine->send(before);
        EXPECT_TRUE(station.wait([&] { return station.seen.bytes.size() == before.size(); }));

        machine.reset();
        Pty again;
        name.point_to(again);
        EXPECT_TRUE(station.wait([&] { return reports.count("is back") == 1; }));
        // A line end that comes first may be a damaged byte.
        again.send((in_a_record ? "-9 " : "\r") + record(GetParam(), 2) + record(GetParam(), 3) +
                   record(GetParam(), 4));
        EXPECT_TRUE(station.wait([&] { return station.seen.points.size() == 3; }));
        EXPECT_EQ(station.seen.x(unit_of(GetParam())), (std::vector<long>{1, 3, 4}));
        EXPECT_EQ(station.seen.breaks, 1);
    }
}

/// A port with error counters, played on a pseudo terminal.
std::atomic<int> overruns;

int control(int descriptor, unsigned long request, void* argument) {
    if (request == TIOCGICOUNT) {
        auto& counts = *static_cast<serial_icounter_struct*>(argument);
        counts = {};
        counts.overrun = overruns;
        return 0;
    }
    return ::ioctl(descriptor, request, argument);
}

TEST_P(SerialProtocol, DropsTheRecordsInWhichBytesAreMissing) {
    tarnel::set_tty_control(&control);
    {
        Station station(GetParam());
        ASSERT_EQ(station.protocol->Connect(), 1);
        const std::string cut = record(GetParam(), 98);
        station.send(record(GetParam(), 1) + cut.substr(0, 2));
        ++overruns;
        station.send("\r\n" + cut.substr(2, 2)); // somewhere here, so its line end may be none
        station.send(cut.substr(4) + record(GetParam(), 3));
        EXPECT_EQ(station.seen.x(unit_of(GetParam())), (std::vector<long>{1, 3}));
        EXPECT_GE(station.seen.breaks, 1);
    }
    tarnel::set_tty_control(nullptr);
}

TEST_P(SerialProtocol, MakesNoPointOfTheEndOfAFlood) {
    for (const std::string& garbage :
         {std::string(3'000, 'x'), "\xFF" + std::string(2'000, '7'), std::string(5'000, '\0')}) {
        Station station(GetParam());
        ASSERT_EQ(station.protocol->Connect(), 1);
        station.send("-5 " + garbage);
        station.send("-7 +8 -9 +10\r" + record(GetParam(), 2) + record(GetParam(), 3));
        EXPECT_TRUE(station.wait([&] {
            const auto x = station.seen.x(unit_of(GetParam()));
            return !x.empty() && x.back() == 3;
        }));
        if (is_metrolec()) { // the others have read the numbers in it
            EXPECT_EQ(station.seen.x(0.001), (std::vector<long>{2, 3}));
        }
    }
}

TEST(SerialProtocolParsing, TakesOneMetrolecRecordABlockWhenNobodyObserves) {
    const std::string two = record("METROLEC", 1) + record("METROLEC", 2);
    for (const bool observed : {true, false}) {
        Station station("METROLEC");
        if (!observed) {
            station.protocol->SetPointObserver(nullptr);
        }
        station.machine.send(two); // one block, as it is there when the port is opened
        const auto number = [&] { return station.protocol->m_LastPoint.number; };
        ASSERT_EQ(station.protocol->Connect(), 1);
        EXPECT_TRUE(station.wait([&] { return number() == (observed ? 2 : 1); }));
        station.machine.send(" ");
        EXPECT_TRUE(station.wait([&] { return number() == 2; }));
    }
}

/// Each byte is a point: 't' a tracking point, any other a measured one.
class Bytes final : public CMMProtocolRS232 {
    DECLARE_DYNAMIC(Bytes)

    ~Bytes() override { Disconnect(); }

    int ExtractPoint(__PointMMT& point) override {
        EXPECT_EQ(point != __PointMMT(), 0) << "not a fresh one";
        if (ring().GetNbChar() == 0) {
            return tarnel::NO_POINT;
        }
        point.number = m_Parse.point_counter++;
        return ring().Get() == 't' ? TRACK_POINT : MEASURED_POINT;
    }

    int waiting() { return ring().GetNbChar(); }
};

IMPLEMENT_DYNAMIC(Bytes, CMMProtocolRS232)

TEST(SerialProtocolParsing, Takes100PointsABlock) {
    Station station("METROLEC");
    Bytes protocol;
    ClientWindow client;
    protocol.m_Device.m_Configuration.SetPortName(station.machine.path().c_str());
    protocol.Initialize(&client);
    const auto wait_for = [&](int last, int left) {
        return station.wait([&] {
            const tarnel::SectionGuard guard(protocol.m_Lock);
            return protocol.m_LastPoint.number == last && protocol.waiting() == left;
        });
    };
    station.machine.send(std::string(150, 'm'));
    ASSERT_EQ(protocol.Connect(), 1);
    EXPECT_TRUE(wait_for(99, 50));
    EXPECT_EQ(protocol.Disconnect(), 1);
    EXPECT_EQ(protocol.Disconnect(), 0);
    ASSERT_EQ(protocol.Connect(), 1);
    station.machine.send("m");
    EXPECT_TRUE(wait_for(150, 0));
    EXPECT_EQ(client.told(), "point 2");

    station.machine.send("tttm");
    EXPECT_TRUE(wait_for(154, 0));
    EXPECT_EQ(client.told(), "track 1");
    EXPECT_EQ(protocol.m_TrackPoint.number, 153);
    EXPECT_EQ(protocol.m_bPointAcknowledged, 0);
}

TEST(SerialProtocolParsing, GoesOnWithWhatIsLeftAfterDisconnecting) {
    Station station("METROLEC");
    ASSERT_EQ(station.protocol->Connect(), 1);
    station.send("1000 2000 ");
    EXPECT_EQ(station.protocol->Disconnect(), 1);
    ASSERT_EQ(station.protocol->Connect(), 1);
    station.send("3000 +\r");
    EXPECT_EQ(station.seen.points.at(0) == __PointMMT(1, 1, 2, 3, 0, 2, 3), 1);
}

TEST(SerialProtocolParsing, DropsWhatComesBeforeInitialize) {
    Pty machine;
    MPOProtocol protocol;
    protocol.m_Device.m_Configuration.SetPortName(machine.path().c_str());
    ASSERT_EQ(protocol.Connect(), 1);
    std::string early;
    while (early.size() < 1'000'000) { // far more than a line holds back
        early += record("METROLEC", 1);
    }
    machine.send(early);
    protocol.Initialize(nullptr);
    const auto x = [&] {
        const tarnel::SectionGuard guard(protocol.m_Lock);
        return protocol.m_LastPoint.x;
    };
    do {
        machine.send(record("METROLEC", 5));
        Sleep(1);
    } while (x() != 0.005);
    EXPECT_LT(protocol.m_LastPoint.number, 20'000);
}

} // namespace
