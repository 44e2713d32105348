#include "platform/companions/registry_key.h"
#include "platform/registry/application.h"
#include "serial/PortConfiguration.h"
#include "tests/support/temporary_registry.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

struct Configuration : CComDeviceConfiguration {
    using CComDeviceConfiguration::GetMap;
};

class PortConfiguration : public testing::Test {
  protected:
    PortConfiguration() {
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Port", 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &key_, nullptr),
                  static_cast<LONG>(ERROR_SUCCESS));
    }

    ~PortConfiguration() override { RegCloseKey(key_); }

    std::string stored(const char* name) {
        return CRegistryKey(key_, 0).GetValue(name, "missing").GetString();
    }

    std::string read_info() {
        Configuration configuration;
        configuration.ReadFromRegistry(key_);
        return configuration.GetInfoString().GetString();
    }

    support::TemporaryRegistry registry_;
    HKEY key_ = nullptr;
};

TEST_F(PortConfiguration, IsStoredInNineValues) {
    CComDeviceConfiguration().WriteToRegistry(key_);
    const std::map<std::string, std::string> texts = {
        {"Port", "COM1:"}, {"Baud", "9600"},  {"Parity", "Even"}, {"Stop Bits", "1"},
        {"DTRDSR", "OFF"}, {"RTSCTS", "OFF"}, {"XONXOFF", "OFF"}, {"AutoConnect", "OFF"}};
    for (const auto& [name, text] : texts) {
        EXPECT_EQ(stored(name.c_str()), text) << name;
    }
    EXPECT_EQ(CRegistryKey(key_, 0).GetValue("Byte Size", 0), 7U);
    char name[32];
    DWORD length = sizeof(name);
    EXPECT_EQ(RegEnumValueA(key_, 9, name, &length, nullptr, nullptr, nullptr, nullptr), 259);
}

TEST_F(PortConfiguration, ComesBackAsItWas) {
    Configuration written;
    written.SetPortName(12);
    EXPECT_EQ(written.SetBaudRate(19200), 1);
    written.m_wByteSize = 8;
    written.m_wParity = 1;
    written.m_wStopBits = 2;
    written.SetRtsCts(1);
    written.m_bConnectOnLoad = 5;
    written.WriteToRegistry(key_);
    Configuration read;
    read.SetXonXoff(1);
    read.ReadFromRegistry(key_);
    EXPECT_STREQ(read.GetInfoString(), "COM12: 19200,8,1,2 (X  )");
    EXPECT_EQ(read.GetConnectOnLoad(), 1);

    EXPECT_EQ(stored("Baud"), "19.2k");
    EXPECT_EQ(stored("Stop Bits"), "2");
}

TEST_F(PortConfiguration, KeepsWhatTheRegistryDoesNotHave) {
    Configuration configuration;
    configuration.SetPortName("COM7:");
    configuration.SetBaudRate(115200);
    configuration.m_wParity = 4;
    configuration.m_wByteSize = 5;
    configuration.SetXonXoff(-1);
    configuration.SetRtsCts(1);
    configuration.SetRtsCts(0);
    configuration.SetDtrDsr(7);
    EXPECT_EQ(configuration.m_byFlags, 5);
    configuration.m_bConnectOnLoad = TRUE;
    configuration.ReadFromRegistry(key_);
    EXPECT_STREQ(configuration.GetInfoString(), "COM7: 115200,5,4,0 ( XX)");
    EXPECT_EQ(configuration.GetConnectOnLoad(), 1);
    EXPECT_EQ(stored("Port"), "missing");
}

TEST_F(PortConfiguration, GivesUnlistedValuesTheirCode) {
    CRegistryKey key(key_, 0);
    key.WriteValue("Baud", "19200");
    key.WriteValue("Parity", "even");
    key.WriteValue("Stop Bits", "");
    key.WriteValue("DTRDSR", "on");
    key.WriteValue("RTSCTS", "ON ");
    EXPECT_EQ(read_info(), "COM1: -1,7,65535,65535 (   )");

    Configuration configuration;
    configuration.ReadFromRegistry(key_);
    configuration.WriteToRegistry(key_);
    for (const char* name : {"Baud", "Parity", "Stop Bits"}) {
        EXPECT_EQ(stored(name), "NOT FOUND") << name;
    }
    EXPECT_EQ(configuration.SetBaudRate(75), 1);
    EXPECT_EQ(configuration.SetBaudRate(19201), 0);
    EXPECT_EQ(configuration.SetBaudRate(-1), 0);
    EXPECT_EQ(configuration.m_dwBaudRate, CComDeviceConfiguration::unlisted_rate);
}

TEST_F(PortConfiguration, LiesInASectionOfTheApplication) {
    Configuration configuration;
    configuration.SetPortName(5);
    configuration.WriteToRegistry("Line");
    CWinApp application;
    application.m_pszProfileName = "measuring";
    configuration.WriteToRegistry("Line");
    configuration.ReadFromRegistry("Line");
    EXPECT_STREQ(configuration.GetInfoString(), "COM5: 9600,7,2,0 (   )");

    application.SetRegistryKey("Company");
    Configuration other;
    other.ReadFromRegistry("Line");
    EXPECT_STREQ(other.GetPortName(), "COM1:");
    configuration.WriteToRegistry("Line");
    other.ReadFromRegistry("Line");
    EXPECT_STREQ(other.GetPortName(), "COM5:");
    HKEY key = nullptr;
    EXPECT_EQ(
        RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Company\\measuring\\Line", 0, KEY_READ, &key),
        static_cast<LONG>(ERROR_SUCCESS));
    EXPECT_STREQ(CRegistryKey(key, 1).GetValue("Port", ""), "COM5:");
}

// A rebuilt list is told by its text, since it may lie where the old one was.
TEST_F(PortConfiguration, SharesItsListsWithItsCopies) {
    const auto first_parity = [](Configuration& configuration) -> CString& {
        return configuration.GetMap()->m_parities[0]->m_strText;
    };
    auto original = std::make_unique<Configuration>();
    first_parity(*original) = "changed";
    auto copy = std::make_unique<Configuration>(*original);
    Configuration assigned;
    assigned = *copy;
    original.reset();
    EXPECT_STREQ(first_parity(*copy), "changed");
    copy.reset();
    EXPECT_STREQ(first_parity(assigned), "None");
}

TEST_F(PortConfiguration, ListsSettingsInTheirOrder) {
    VariousMap* const map = VariousMap::Acquire();
    std::string texts;
    for (INT_PTR position = 0; position < map->m_baudRates.GetSize(); ++position) {
        const CComCfgItem* const item = map->m_baudRates[position];
        texts += std::string(item->m_strText.GetString()) + ' ';
        EXPECT_EQ(map->m_baudRates.FindText(item->m_nValue), item->m_strText);
    }
    EXPECT_EQ(texts,
              "75 110 150 300 600 1200 1800 2400 4800 7200 9600 14.4k 19.2k 38.4k 56k 115200 "
              "128k 256k ");
    EXPECT_EQ(map->m_baudRates.FindValue("56k"), 56000);
    EXPECT_EQ(map->m_parities.FindValue("Odd"), 1);
    EXPECT_EQ(map->m_parities.FindText(2), "Even");
    EXPECT_EQ(map->m_stopBits.FindValue("1.5"), 1);
    map->Release();
}

} // namespace
