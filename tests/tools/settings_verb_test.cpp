#include "core/MachineSettings.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"

#include <fstream>

// `tarnel settings`: another program's view of what an application keeps.

namespace {

using std::filesystem::perms;
using support::expect;

class SettingsVerb : public testing::Test {
  protected:
    SettingsVerb() {
        std::filesystem::create_directory(folder); // not where an application's bare name lies
        std::filesystem::current_path(folder);
    }

    ~SettingsVerb() override { std::filesystem::current_path("/"); }

    static void expect_both_ways(const std::string& place, LocalMachineRegistry application,
                                 support::ToolCall listed) {
        SCOPED_TRACE(place);
        unsigned char bytes[] = {0x00, 0xFF, 0x5A};
        EXPECT_TRUE(application.WriteProfileInt("S", "int", -5));
        EXPECT_TRUE(application.WriteProfileStringA("S", "text", "Prüfling, 1"));
        EXPECT_TRUE(application.WriteProfileDouble("S", "double", 1.0 / 3));
        EXPECT_TRUE(application.WriteProfileBinary("S", "block", bytes, sizeof bytes));
        EXPECT_EQ(application.GetProfileIntA("S", "missing", 7), 7U);
        expect({listed,
                {"settings get s INT", 0, "-5\n"},
                {"settings get S none", 4, ""},
                {"settings set S int --type int -2147483648", 0, "-2147483648\n"},
                {"settings set S int --type int 2147483648", 2, ""},
                {"settings set S double --type double 0.12345678912", 0, "0.1234567891\n"},
                {"settings set S block --type binary 0aF0", 0, "0af0\n"},
                {"settings set S block --type binary 0g", 2, ""},
                {"settings set S text 'a  b'", 0, "a  b\n"},
                {"settings set S gone x", 0, "x\n"},
                {"settings delete S gone", 0, ""},
                {"settings delete S gone", 4, ""}},
               place);
        EXPECT_EQ(static_cast<int>(application.GetProfileIntA("S", "int", 0)), -2147483647 - 1);
        EXPECT_EQ(application.GetProfileStringA("S", "text", ""), "a  b");
        EXPECT_EQ(application.GetProfileDouble("S", "double", 0), 0.1234567891);
        expect({{"settings delete S --all", 0, ""},
                {"settings get S int", 4, ""},
                {"settings list S", 4, ""}},
               place);
    }

    const support::TemporaryRegistry registry;
    const std::filesystem::path folder = registry.folder / "here";
};

TEST_F(SettingsVerb, ShowsWhatApplicationsKeepAndStoresWhatTheyRead) {
    expect_both_ways(
        " --machine Maker/Tool/1.0", {"Maker", "Tool", "1.0"},
        {"settings list --format csv", 0,
         "Section,Entry,Kind,Value\nS,block,binary,00ff5a\nS,double,text,0.3333333333\n"
         "S,int,int,-5\nS,missing,int,7\nS,text,text,\"Prüfling, 1\"\n"});
    expect_both_ways(" --ini tool.ini", {nullptr, (folder / "tool.ini").c_str(), nullptr},
                     {"settings list --format csv", 0,
                      "Section,Entry,Kind,Value\nS,int,text,-5\nS,text,text,\"Prüfling, 1\"\n"
                      "S,double,text,0.3333333333\nS,block,text,AAPPKF\n"});
}

TEST_F(SettingsVerb, TakesFilesAndSectionsAsTheyAre) {
    std::ofstream("tool.ini") << "[S]\nnumber=0x1Fmm\nreal=1.5e1mm\nblock=KF\n[T]\n";
    expect({{"settings get S number --type int", 0, "31\n"},
            {"settings get S real --type double", 0, "15\n"},
            {"settings get S block --type binary", 0, "5a\n"},
            {"settings list T --format csv", 0, "Section,Entry,Kind,Value\nT,,,\n"},
            {"settings set S text ' \"a\" '", 0, "a\n"},
            {"settings set S a=b c", 2, ""},
            {"settings delete S", 2, ""}},
           " --ini tool.ini");
    expect({{"settings set S a b --ini none/tool.ini", 5, ""},
            {"settings set 'S\\T' e 1 --machine 'Maker\\A/B\\1'", 0, "1\n"},
            {"settings delete S --all --machine 'Maker\\A/B\\1'", 5, ""},
            {"settings list --format csv --machine Maker", 0,
             "Section,Entry,Kind,Value\nA/B\\1\\S\\T,e,text,1\n"},
            {"settings set S e 1 --machine A/B", 2, ""},
            {"settings set S e 1 --machine A//B", 2, ""},
            {"settings set S e 1 --machine A/B/C/D", 2, ""}});
}

TEST_F(SettingsVerb, TellsWhoHasNoRights) {
    LocalMachineRegistry("Maker", "Tool", "1.0").WriteProfileInt("S", "int", 3);
    tarnel::close_registry();
    std::ofstream("../tool.ini") << "[S]\nint=3\n";
    permissions(registry.folder / "machine.db", perms(0444));
    permissions(registry.folder, perms(0555));
    support::as_nobody([] {
        for (const char* const place : {" --machine Maker/Tool/1.0", " --ini ../tool.ini"}) {
            expect({{"settings get S int", 0, "3\n"},
                    {"settings set S int 4", 3, ""},
                    {"settings delete S int", 3, ""}},
                   place);
        }
    });
    permissions(registry.folder, perms(0755));
}

} // namespace
