#include "platform/windows/control_messages.h"
#include "tests/protocols/station.h"
#include "tests/support/client_window.h"
#include "tests/support/process_facts.h"
#include "tests/support/reports.h"
#include "tests/support/scripted_presenter.h"
#include "tests/support/temporary_registry.h"

#include <thread>

// A serial protocol's connection: how it comes, what it survives, and what it leaves behind.

namespace {

using namespace support;
using tarnel::DialogView;

class SerialProtocolPort : public EveryProtocol {};

INSTANTIATE_TEST_SUITE_P(All, SerialProtocolPort,
                         testing::Values(metrolec, "PERCEVAL 1/100", "PERCEVAL MICRON"));

TEST_P(SerialProtocolPort, ConnectsByItselfAsTheRegistrySays) {
    const TemporaryRegistry registry;
    const ScriptedPresenter screen;
    const Reports reports;
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Machine", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    Pty machine;
    {
        const auto writer = create(GetParam());
        writer->m_Device.m_Configuration.SetPortName(machine.path().c_str());
        writer->WriteToRegistry(key);
        writer->ReadFromRegistry(key);
        EXPECT_EQ(writer->IsConnected(), 0);
        writer->m_Device.m_Configuration.m_bConnectOnLoad = TRUE;
        writer->WriteToRegistry(key);
    }
    ClientWindow client;
    const auto protocol = create(GetParam());
    protocol->Initialize(&client);
    protocol->ReadFromRegistry(key);
    EXPECT_EQ(protocol->IsConnected(), 1);
    machine.send(record(GetParam(), 1234));
    EXPECT_TRUE(dispatch_until([&] { return client.told() == "point 2"; }));
    const tarnel::SectionGuard guard(protocol->m_Lock);
    EXPECT_DOUBLE_EQ(protocol->m_LastPoint.x, 1234 * unit_of(GetParam()));
    EXPECT_EQ(protocol->m_LastPoint.number, is_metrolec());

    machine.unplug();
    const auto too_late = create(GetParam());
    too_late->ReadFromRegistry(key);
    EXPECT_EQ(too_late->IsConnected(), 0);
    EXPECT_TRUE(screen.asked().empty()) << "nobody is there to be told";
    RegCloseKey(key);
}

TEST(SerialProtocolSettings, SaysWhenItCannotBeOpened) {
    ScriptedPresenter screen;
    const Reports reports;
    Station station("METROLEC", "/dev/no_such_port");
    EXPECT_EQ(station.protocol->Connect(), 0);
    ASSERT_EQ(screen.asked().size(), 1U);
    EXPECT_EQ(screen.asked()[0].text, "The Connection Failed");
    EXPECT_EQ(screen.asked()[0].caption, "METROLEC");
    EXPECT_EQ(screen.asked()[0].type, 0U);
    EXPECT_EQ(station.protocol->GetInfoString(), " METROLEC /dev/no_such_port 9600,7,2,0 (   ) ");
    station.protocol->m_Device.m_Configuration.SetPortName(station.machine.path().c_str());
    EXPECT_EQ(station.protocol->Connect(), 1);
    EXPECT_EQ(station.protocol->GetInfoString(),
              ("*  METROLEC " + station.machine.path() + " 9600,7,2,0 (   ) ").c_str());
}

TEST(SerialProtocolSettings, IsOpenedAnewWithEditedSettings) {
    ScriptedPresenter screen;
    Station station("METROLEC"), other("PERCEVAL MICRON");
    ASSERT_EQ(station.protocol->Connect(), 1);
    const HANDLE before = station.protocol->m_Device.GetHandle();
    const auto end_with = [&](UINT key) {
        screen.next_dialog([&, key](const DialogView& dialog) {
            EXPECT_FALSE(control(dialog, 544).enabled) << "the port is open";
            EXPECT_EQ(other.protocol->EditProtocolParameters(), 0);
            tarnel::user_chooses(control(dialog, 546).window, 0);
            tarnel::user_presses(dialog.window, key);
        });
        EXPECT_EQ(station.protocol->EditProtocolParameters(), 1);
        EXPECT_EQ(station.protocol->IsConnected(), 1);
    };
    end_with(VK_ESCAPE);
    EXPECT_EQ(station.protocol->m_Device.GetHandle(), before);
    end_with(VK_RETURN);
    EXPECT_NE(station.protocol->m_Device.GetHandle(), before);
    DCB settings{};
    settings.DCBlength = sizeof settings;
    EXPECT_TRUE(GetCommState(station.protocol->m_Device.GetHandle(), &settings));
    EXPECT_EQ(settings.ByteSize, 5);
    station.send(record("METROLEC", 1));
    EXPECT_EQ(station.seen.points.size(), 1U);
}

TEST_P(SerialProtocolPort, IsDestroyedUnderAFlood) {
    ClientWindow client;
    const auto before = process_facts();
    for (int round = 0; round < 100 / slow_build_divisor; ++round) {
        Pty machine;
        std::thread flood;
        {
            const auto protocol = create(GetParam());
            protocol->m_Device.m_Configuration.SetPortName(machine.path().c_str());
            protocol->Initialize(&client);
            ASSERT_EQ(protocol->Connect(), 1);
            flood = std::thread([&] {
                std::string all;
                for (int i = 0; i < 1'000; ++i) {
                    all += record(GetParam(), i);
                }
                machine.send(all);
            });
            for (const int enough = round * 7; round % 4;) {
                const tarnel::SectionGuard guard(protocol->m_Lock);
                if (protocol->m_LastPoint.number >= enough % 500) {
                    break;
                }
            }
        }
        Station rest("METROLEC", machine.path()); // takes what the flood still has
        ASSERT_EQ(rest.protocol->Connect(), 1);
        flood.join();
    }
    EXPECT_TRUE(back_to(before));
}

TEST_P(SerialProtocolPort, ChangesItsClientWhilePointsFlow) {
    ClientWindow one, two;
    Station station(GetParam());
    ASSERT_EQ(station.protocol->Connect(), 1);
    std::atomic<bool> enough = false;
    std::thread flood([&] {
        while (!enough) {
            station.machine.send(record(GetParam(), 1, "\r"));
        }
    });
    int told[2] = {};
    while (told[0] < 50 || told[1] < 50) {
        station.protocol->Initialize(&one);
        told[0] += !one.told().empty();
        station.protocol->Initialize(nullptr);
        station.protocol->Initialize(&two);
        told[1] += !two.told().empty();
    }
    enough = true;
    flood.join();
}

} // namespace
