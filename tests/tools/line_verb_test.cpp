#include "platform/companions/registry_key.h"
#include "tests/support/temporary_registry.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

struct Outcome {
    int exit_code;
    std::string output;
    std::string diagnostics;
};

class Tool : public testing::Test {
  protected:
    Outcome run(const std::string& arguments) const {
        const std::string diagnostics = (registry_.folder / "diagnostics").string();
        const std::string command = TARNEL_TOOL " " + arguments + " 2>" + diagnostics;
        std::FILE* const output = ::popen(command.c_str(), "r");
        std::string text;
        for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) {
            text += static_cast<char>(c);
        }
        const int status = ::pclose(output);
        std::ifstream file(diagnostics);
        return {WEXITSTATUS(status), text, std::string(std::istreambuf_iterator(file), {})};
    }

    support::TemporaryRegistry registry_;
};

TEST_F(Tool, keepsALineUnderItsName) {
    EXPECT_EQ(run("line show probe").exit_code, 2);
    EXPECT_EQ(run("line set probe").output, "COM1: 9600,7,2,0 (   )\n");
    const Outcome changed = run("line set probe port=/dev/ttyUSB0 baud=19200 parity=none stop=1.5 "
                                "bits=8 dtrdsr=on rtscts=ON xonxoff=on autoconnect=on");
    EXPECT_EQ(changed.output, "/dev/ttyUSB0 19200,8,0,1 (XXX)\n") << changed.diagnostics;
    EXPECT_EQ(run("line set probe baud=14.4K rtscts=off").exit_code, 0);
    const std::string csv = "Field,Value,Unit\n"
                            "summary,\"/dev/ttyUSB0 14400,8,0,1 ( XX)\",\n"
                            "port,/dev/ttyUSB0,\nbaud,14.4k,bit/s\nparity,None,\nstop,1.5,bits\n"
                            "bits,8,bits\ndtrdsr,on,\nrtscts,off,\nxonxoff,on,\nautoconnect,on,\n";
    EXPECT_EQ(run("line show probe --format csv").output, csv);
    EXPECT_NE(run("line show probe --format json").output.find("{\"field\": \"bits\""),
              std::string::npos);

    tarnel::close_registry();
    HKEY key = nullptr;
    RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Tarnel\\tarnel\\Lines\\probe", 0, KEY_READ, &key);
    EXPECT_STREQ(CRegistryKey(key, 1).GetValue("Baud", ""), "14.4k");
}

TEST_F(Tool, storesNothingOfALineWithAFault) {
    run("line set probe baud=300");

    struct {
        const char* setting;
        const char* hint;
    } const faults[] = {
        {"baud=12345", "1200, 1800"}, {"baud=", "115200"},        {"parity=both", "None, Even"},
        {"stop=0", "1, 1.5, 2"},      {"bits=9", "5, 6, 7 or 8"}, {"rtscts=1", "on or off"},
        {"port=", "COM3:"},           {"speed=9600", "baud"},     {"baud", "FIELD=VALUE"}};

    for (const auto& [setting, hint] : faults) {
        const Outcome refused = run(std::string("line set probe bits=8 ") + setting);
        EXPECT_EQ(refused.exit_code, 3) << setting;
        EXPECT_NE(refused.diagnostics.find(hint), std::string::npos) << refused.diagnostics;
        EXPECT_EQ(refused.output, "");
    }
    EXPECT_NE(run("line set 'a\\b'").exit_code, 0);
    EXPECT_NE(run("line set ''").exit_code, 0);
    EXPECT_EQ(run("line set probe").output, "COM1: 300,7,2,0 (   )\n");
}

TEST_F(Tool, showsTheLibraryComeAndGo) {
    EXPECT_EQ(run("loading").output, "TarnelToolboxLib.DLL Initializing!\n"
                                     "TarnelToolboxLib.DLL Terminating!\n"
                                     "Loaded and unloaded 1 time.\n");
}

} // namespace
