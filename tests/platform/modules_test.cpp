#include "platform/base/last_error.h"
#include "platform/base/string.h"
#include "platform/modules/extension_module.h"
#include "platform/modules/module.h"
#include "platform/modules/module_state.h"
#include "tests/support/reports.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::string_literals;

std::string table(const std::string& entries) {
    return "STRINGTABLE BEGIN\n" + entries + "\nEND\n";
}

/// String `id` as the calling thread finds it, "?" when it does not.
std::string found(UINT id) {
    CString text;
    return text.LoadString(id) ? text.GetString() : "?";
}

std::string found_in(HINSTANCE module, UINT id) {
    CString text;
    return text.LoadString(module, id) ? text.GetString() : "?";
}

/// A folder for scripts, and the reports that loading them gives.
class Modules : public testing::Test {
  protected:
    Modules() {
        std::string pattern = std::filesystem::temp_directory_path() / "modules-XXXXXX";
        folder_ = std::filesystem::canonical(::mkdtemp(pattern.data()));
    }

    ~Modules() override {
        AfxSetResourceHandle(GetModuleHandleA(nullptr));
        std::filesystem::remove_all(folder_);
    }

    std::string write(const std::string& name, const std::string& script) {
        const std::string path = folder_ / name;
        std::ofstream(path, std::ios::binary) << script;
        return path;
    }

    HMODULE load(const std::string& script) {
        const HMODULE library =
            LoadLibraryA(write(std::to_string(scripts_++) + ".rc", script).c_str());
        EXPECT_NE(library, nullptr) << testing::PrintToString(reports_.lines());
        return library;
    }

    /// What is reported when `script` is refused, without its path.
    std::string damage(const std::string& script) {
        const support::Reports reports;
        const std::string path = write("damaged.rc", script);
        EXPECT_EQ(LoadLibraryA(path.c_str()), nullptr) << script;
        EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
        const auto lines = reports.lines();
        const bool told = lines.size() == 1 && lines[0].starts_with(path + ":");
        EXPECT_TRUE(told) << script;
        return told ? lines[0].substr(path.size() + 1) : "";
    }

    std::filesystem::path folder_;
    const support::Reports reports_;
    int scripts_ = 0;
};

/// An extension library over the script of a resource library.
struct Extension {
    Extension(HMODULE module, BOOL system = FALSE) {
        EXPECT_TRUE(AfxInitExtensionModule(state, module));
        new CDynLinkLibrary(state, system);
    }

    ~Extension() { AfxTermExtensionModule(state); }

    AFX_EXTENSION_MODULE state{};
};

TEST_F(Modules, LooksInTheCurrentModuleAndThenInTheChainFromItsHead) {
    const HMODULE current = load(table("1 \"current\" 5 \"\""));
    const Extension first(load(table("1 \"a\" 2 \"first\" 3 \"first\" 5 \"first\"")));
    const HMODULE second = load(table("1 \"b\" 2 \"second\" 6 \"\""));
    const Extension system(load(table("2 \"system\" 4 \"system\"")), TRUE);
    AfxSetResourceHandle(current);
    {
        const Extension head(second);
        EXPECT_EQ(found(1), "current");
        EXPECT_EQ(found(2), "second") << "the last loaded comes first";
        EXPECT_EQ(found(3), "first");
        EXPECT_EQ(found(4), "?") << "system libraries are not searched";
        EXPECT_EQ(found(5), "first") << "an empty entry is as good as none";
        EXPECT_EQ(found(6), "?");
        EXPECT_EQ(found(1 + 0x10000), "?");
        EXPECT_EQ(GetLastError(), ERROR_RESOURCE_NAME_NOT_FOUND);
    }
    EXPECT_EQ(found(2), "first") << "termination takes its library out of the chain, and no other";
    EXPECT_EQ(found_in(current, 2), "?") << "a named module is searched alone";
    EXPECT_EQ(found_in(nullptr, 1), "?");
}

TEST_F(Modules, CountsTheReferencesOfAPath) {
    const std::string path = write("de.rc", table("1 \"eins\""));
    const HMODULE library = LoadLibraryA(path.c_str());
    write("de.rc", table("1 \"uno\""));
    EXPECT_EQ(LoadLibraryA((folder_ / "." / "de.rc").c_str()), library);
    EXPECT_EQ(found_in(library, 1), "eins");
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(found_in(library, 1), "eins");
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(found_in(library, 1), "?");
    EXPECT_FALSE(FreeLibrary(library));
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);

    const HMODULE again = LoadLibraryA(path.c_str());
    EXPECT_NE(again, library) << "a stale handle must not come to name a later module";
    EXPECT_EQ(found_in(again, 1), "uno");
    EXPECT_TRUE(FreeLibrary(again));
}

TEST_F(Modules, SaysWhyALibraryCannotBeLoaded) {
    const auto error_of = [](LPCSTR path) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(LoadLibraryA(path), nullptr);
        return GetLastError();
    };
    const std::string script = write("script.rc", table("1 \"one\""));
    EXPECT_EQ(error_of(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(error_of(""), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of((script + "x").c_str()), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(error_of(folder_.c_str()), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(reports_.lines().empty());

    EXPECT_FALSE(FreeLibrary(GetModuleHandleA(nullptr)));
    EXPECT_EQ(GetModuleHandleA("script"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST_F(Modules, AcceptsTheFormsOfRealScripts) {
    const HMODULE library = load("\xEF\xBB\xBF#pragma code_page(65001)\r\n"
                                 R"(
// comment /*
/* BEGIN "*/ language 0x09, SUBLANG_DEFAULT
StringTable DISCARDABLE PURE
LANGUAGE LANG_GERMAN, 1
CHARACTERISTICS 7 VERSION 0x1
begin
    0, "zero" 0XfFfF L"last"1""2,""""
    3 "a""b\n\t\r\\\"" 4 "// /* END"
    5 "Größe – 寸法" 7 "C:\\"
End
STRINGTABLE{}STRINGTABLE{6"six"}//)");
    EXPECT_EQ(found_in(library, 0), "zero");
    EXPECT_EQ(found_in(library, 0xFFFF), "last");
    EXPECT_EQ(found_in(library, 1), "?");
    EXPECT_EQ(found_in(library, 2), "\"");
    EXPECT_EQ(found_in(library, 3), "a\"b\n\t\r\\\"");
    EXPECT_EQ(found_in(library, 4), "// /* END");
    EXPECT_EQ(found_in(library, 5), "Größe – 寸法");
    EXPECT_EQ(found_in(library, 6), "six");
    EXPECT_EQ(found_in(library, 7), "C:\\");
    EXPECT_NE(load(""), nullptr);
    EXPECT_TRUE(reports_.lines().empty());
}

TEST_F(Modules, ReportsThePlaceOfDamage) {
    const struct {
        std::string script;
        std::string report;
    } cases[] = {
        {table("1 \"abc"), "2:3: line break inside a string"},
        {"STRINGTABLE { 1 L\"abc\\\"", "1:17: string is not closed"},
        {"\n /* * /", "2:2: comment is not closed"},
        {table("1 \"ä\" 2 \"\xE4\""), "2:10: this is no text in UTF-8"},
        {table("1 \"\xC0\xAF\""), "2:4: this is no"},
        {table("1 \"\xF4\x90\x80\x80\""), "2:4: this is no"},
        {"\x7FSO", "1:1: this is no"},
        {table("1 \"ä\\0\""), "2:5: unknown escape"},
        {table("65536 \"x\""), "2:1: string identifier is out of range"},
        {table("12x \"x\""), "2:1: number is not well formed"},
        {table("7 \"x\"") + table("/* ä */ 7 \"y\""), "5:9: string 7 stands already in 2:1"},
        {table("IDS_ONE \"x\""), "2:1: expected a string identifier or END, found 'IDS_ONE'"},
        {table("1 \"x\" \"y\""), "2:7: expected a string identifier or END, found '\"y\"'"},
        {"STRINGTABLE\nVERSION 1\n1 \"x\"", "3:1: expected 'BEGIN', found '1'"},
        {"LANGUAGE LANG_GERMAN SUBLANG_GERMAN", "1:22: expected ',', found 'SUBLANG_GERMAN'"},
        {"7 STRINGTABLE {}", "1:1: expected 'STRINGTABLE', found '7'"},
        {"#include \"resource.h\"", "1:1: only the directive #pragma code_page(65001)"},
        {" #pragma code_page(1252)", "1:20: code page is not supported"},
        {std::string((16U << 20U) + 1, ' '), "1:1: script is longer than 16 MiB"},
    };

    for (const auto& [script, report] : cases) {
        EXPECT_EQ(damage(script).substr(0, report.size()), report);
    }
}

TEST_F(Modules, EveryThreadHasACurrentResourceHandleThatIsNeverNull) {
    const HINSTANCE executable = GetModuleHandleA(nullptr);
    ASSERT_NE(executable, nullptr);
    const HMODULE library = load(table("1 \"one\""));
    EXPECT_EQ(AfxGetResourceHandle(), executable);
    AfxGetModuleState()->m_hCurrentResourceHandle = library;
    EXPECT_EQ(AfxGetResourceHandle(), library);
    EXPECT_EQ(AfxGetModuleState()->m_hCurrentInstanceHandle, executable);
    std::thread([&] {
        EXPECT_EQ(AfxGetResourceHandle(), executable);
        EXPECT_EQ(found(1), "?");
    }).join();
    EXPECT_EQ(found(1), "one");
    AfxSetResourceHandle(nullptr);
    EXPECT_EQ(AfxGetResourceHandle(), executable);
}

TEST_F(Modules, AMaintainedStateIsCurrentUntilItsScopeEnds) {
    const HINSTANCE executable = GetModuleHandleA(nullptr);
    AFX_MODULE_STATE* const own = AfxGetModuleState();
    AFX_MODULE_STATE outer{};
    AFX_MODULE_STATE inner{};
    {
        const AFX_MAINTAIN_STATE2 outer_scope(&outer);
        EXPECT_EQ(AfxGetResourceHandle(), executable) << "a state is never without handles";
        EXPECT_EQ(outer.m_hCurrentInstanceHandle, executable);
        {
            const AFX_MAINTAIN_STATE2 inner_scope(&inner);
            AfxSetResourceHandle(reinterpret_cast<HINSTANCE>(&inner));
            const AFX_MAINTAIN_STATE2 none(nullptr);
            EXPECT_EQ(AfxGetModuleState(), own);
        }
        EXPECT_EQ(AfxGetModuleState(), &outer);
        std::thread([&] { EXPECT_NE(AfxGetModuleState(), &outer); }).join();
    }
    EXPECT_EQ(AfxGetResourceHandle(), executable);
    EXPECT_EQ(inner.m_hCurrentResourceHandle, reinterpret_cast<HINSTANCE>(&inner));
}

struct Call {
    HINSTANCE module;
    DWORD reason;
    std::string text; // string 1 of the module as it is found meanwhile
};

std::vector<Call> calls;

BOOL record_call(HINSTANCE module, DWORD reason, LPVOID) {
    calls.push_back({module, reason, found_in(module, 1)});
    return TRUE;
}

TEST_F(Modules, AnEntryAttachesAndDetachesItsLibrary) {
    calls.clear();
    {
        const tarnel::ModuleEntry entry(record_call, "Sample", table("1 \"sample\""));
        ASSERT_EQ(calls.size(), 1U);
        AfxSetResourceHandle(calls[0].module);
        EXPECT_EQ(found(1), "sample");
        EXPECT_FALSE(FreeLibrary(calls[0].module));
    }
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].reason, DLL_PROCESS_ATTACH);
    EXPECT_EQ(calls[1].reason, DLL_PROCESS_DETACH);
    EXPECT_EQ(calls[0].module, calls[1].module);
    EXPECT_EQ(calls[1].text, "sample") << "the module is still there while it is detached";
    EXPECT_EQ(found(1), "?") << "the current handle is stale";

    const tarnel::ModuleEntry damaged(record_call, "Sample", "STRINGTABLE\n1 \"sample\"");
    const Extension extension(calls[2].module);
    EXPECT_EQ(found(1), "?");
    EXPECT_EQ(found(1), "?");
    EXPECT_EQ(reports_.lines(),
              std::vector<std::string>{"Sample:2:1: expected 'BEGIN', found '1'"});
}

TEST_F(Modules, LookUpsAndUnloadingMeetOnSeveralThreads) {
    const std::string path = write("shared.rc", table("1 \"one\""));
    std::atomic<bool> stop = false;
    std::atomic<HMODULE> newest = nullptr;
    std::thread looker([&] {
        while (!stop) {
            AfxSetResourceHandle(newest);
            const std::string text = found(1);
            EXPECT_TRUE(text == "one" || text == "?") << text;
        }
    });
    const auto load_and_free = [&] {
        for (int i = 0; i < 300; ++i) {
            const HMODULE library = LoadLibraryA(path.c_str());
            newest = library;
            const Extension extension(library);
            EXPECT_EQ(found_in(library, 1), "one");
            EXPECT_TRUE(FreeLibrary(library));
        }
    };
    std::thread other(load_and_free);
    load_and_free();
    other.join();
    EXPECT_EQ(found_in(newest, 1), "?") << "both threads have given back what they loaded";
    stop = true;
    looker.join();
}

TEST_F(Modules, TheBuiltInScriptHoldsTheLibrarysTexts) {
    std::ostringstream script;
    script << std::ifstream(TARNEL_SOURCE_DIR "/resources/TarnelToolBoxLib.rc").rdbuf();
    const HMODULE library = load(script.str());
    std::vector<UINT> missing;
    for (UINT id = 0; id <= 0xFFFF; ++id) {
        const bool expected =
            (id >= 12505 && id <= 12531 && id != 12513) || (id >= 12547 && id <= 12590);
        if (expected != (found_in(library, id) != "?")) {
            missing.push_back(id);
        }
    }
    EXPECT_EQ(missing, std::vector<UINT>{});
    EXPECT_EQ(found_in(library, 12511), "1.5");
    EXPECT_EQ(found_in(library, 12526), "14.4k");
}

} // namespace
