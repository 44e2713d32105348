#include "platform/companions/registry_key.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using support::run_tool;

class LineVerb : public testing::Test {
  protected:
    support::TemporaryRegistry registry_;
};

TEST_F(LineVerb, keepsALineUnderItsName) {
    EXPECT_EQ(run_tool("line show probe").exit_code, 2);
    EXPECT_EQ(run_tool("line set probe").output, "COM1: 9600,7,2,0 (   )\n");
    const auto changed =
        run_tool("line set probe port=/dev/ttyUSB0 baud=19200 parity=none stop=1.5 "
                 "bits=8 dtrdsr=on rtscts=ON xonxoff=on autoconnect=on");
    EXPECT_EQ(changed.output, "/dev/ttyUSB0 19200,8,0,1 (XXX)\n") << changed.diagnostics;
    EXPECT_EQ(run_tool("line set probe baud=14.4K rtscts=off").exit_code, 0);
    const std::string csv = "Field,Value,Unit\n"
                            "summary,\"/dev/ttyUSB0 14400,8,0,1 ( XX)\",\n"
                            "port,/dev/ttyUSB0,\nbaud,14.4k,bit/s\nparity,None,\nstop,1.5,bits\n"
                            "bits,8,bits\ndtrdsr,on,\nrtscts,off,\nxonxoff,on,\nautoconnect,on,\n";
    EXPECT_EQ(run_tool("line show probe --format csv").output, csv);
    EXPECT_TRUE(
        support::has(run_tool("line show probe --format json").output, "{\"field\": \"bits\""));

    tarnel::close_registry();
    HKEY key = nullptr;
    RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Tarnel\\tarnel\\Lines\\probe", 0, KEY_READ, &key);
    EXPECT_STREQ(CRegistryKey(key, 1).GetValue("Baud", ""), "14.4k");
}

TEST_F(LineVerb, storesNothingOfALineWithAFault) {
    run_tool("line set probe baud=300");

    struct {
        const char* setting;
        const char* hint;
    } const faults[] = {
        {"baud=12345", "1200, 1800"}, {"baud=", "115200"},        {"parity=both", "None, Even"},
        {"stop=0", "1, 1.5, 2"},      {"bits=9", "5, 6, 7 or 8"}, {"rtscts=1", "on or off"},
        {"port=", "COM3:"},           {"speed=9600", "baud"},     {"baud", "FIELD=VALUE"}};

    for (const auto& [setting, hint] : faults) {
        const auto refused = run_tool(std::string("line set probe bits=8 ") + setting);
        EXPECT_EQ(refused.exit_code, 3) << setting;
        EXPECT_TRUE(support::has(refused.diagnostics, hint));
        EXPECT_EQ(refused.output, "");
    }
    EXPECT_NE(run_tool("line set 'a\\b'").exit_code, 0);
    EXPECT_NE(run_tool("line set ''").exit_code, 0);
    EXPECT_EQ(run_tool("line set probe").output, "COM1: 300,7,2,0 (   )\n");
}

TEST_F(LineVerb, showsTheLibraryComeAndGo) {
    EXPECT_TRUE(run_tool("loading").output.ends_with("TarnelToolboxLib.DLL Terminating!\n"
                                                     " Removing Protocol PERCEVAL MICRON\n"
                                                     " Removing Protocol PERCEVAL 1/100\n"
                                                     " Removing Protocol METROLEC\n"
                                                     "Loaded and unloaded 1 time.\n"));
}

} // namespace
