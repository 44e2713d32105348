#include "platform/base/diagnostics.h"
#include "tests/support/environment.h"
#include "tests/support/process_facts.h"
#include "tests/support/reports.h"
#include "tests/support/scripted_presenter.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

// The library as an application has it that loads and unloads it at run time.

namespace {

constexpr const char* loading =
    " Installing Protocol METROLEC Before protocol NULL\n"
    " Installing Protocol PERCEVAL 1/100 Before protocol METROLEC\n"
    " Installing Protocol PERCEVAL MICRON Before protocol PERCEVAL 1/100\n"
    "TarnelToolboxLib.DLL Initializing!\n";
constexpr const char* unloading = "TarnelToolboxLib.DLL Terminating!\n"
                                  " Removing Protocol PERCEVAL MICRON\n"
                                  " Removing Protocol PERCEVAL 1/100\n"
                                  " Removing Protocol METROLEC\n";

void load_and_unload() {
    const auto before = support::process_facts();
    for (int round = 0; round < 100; ++round) {
        std::string output;
        tarnel::set_debug_sink(
            [](void* text, std::string_view piece) { *static_cast<std::string*>(text) += piece; },
            &output);
        void* library = ::dlopen(TARNEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << ::dlerror();
        EXPECT_EQ(output, loading);
        EXPECT_NE(support::process_facts(), before);
        ASSERT_EQ(::dlclose(library), 0);
        EXPECT_EQ(output, std::string(loading) + unloading);
        ASSERT_TRUE(support::back_to(before));
    }
    tarnel::set_debug_sink(nullptr, nullptr);
    EXPECT_TRUE(support::no_leaks());
}

TEST(Loading, LeavesNothingBehind) {
    support::Environment environment;
    environment.speak("en");
    load_and_unload();
    environment.speak("de");
    load_and_unload();
}

TEST(Loading, LeavesNothingBehindWhenItsDialogsWereUsed) {
    support::Environment environment;
    environment.speak("de");
    const auto before = support::process_facts();
    for (int round = 0; round < 10; ++round) {
        support::ScriptedPresenter screen;
        screen.next_dialog(
            [](const tarnel::DialogView& dialog) { tarnel::user_closes(dialog.window); });
        void* module = ::dlopen(TARNEL_DIALOG_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << ::dlerror();
        EXPECT_TRUE(reinterpret_cast<bool (*)()>(::dlsym(module, "use_dialogs"))());
        ASSERT_EQ(::dlclose(module), 0);
        EXPECT_EQ(screen.dialogs().size(), 2);
    }
    // The thread's bell stays, for as long as it has messages.
    auto after = support::process_facts();
    EXPECT_EQ(after.library_mappings, before.library_mappings);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_TRUE(support::no_leaks());
}

/// What is reported while the library in `folder` is loaded and unloaded.
std::string loading_report(const std::filesystem::path& folder) {
    const support::Reports reports;
    const std::string path = folder / "libTarnelToolBoxLib.so";
    void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_TRUE(library && ::dlclose(library) == 0) << ::dlerror();
    const auto lines = reports.lines();
    return lines.empty() ? "" : lines.front();
}

TEST(Loading, FindsItsLanguagesBelowAnyPrefix) {
    std::string pattern = std::filesystem::temp_directory_path() / "prefix-XXXXXX";
    const auto prefix = std::filesystem::canonical(::mkdtemp(pattern.data()));
    // A script that is damaged tells where it lies.
    const auto script = prefix / "share/TarnelToolBoxLib/de/TarnelToolBoxLib.rc";
    std::filesystem::create_directories(script.parent_path());
    std::ofstream(script) << "damaged";
    support::Environment environment;
    environment.speak("de");
    for (const char* name : {"lib", "lib/x86_64-linux-gnu", "lib/x/y", "lib/x/y/z"}) {
        const auto folder = prefix / name;
        std::filesystem::create_directories(folder);
        std::filesystem::copy(TARNEL_LIBRARY, folder / "libTarnelToolBoxLib.so");
        const bool far = std::string(name) == "lib/x/y/z";
        EXPECT_EQ(loading_report(folder).starts_with(script.string() + ":1:1:"), !far) << name;
    }
    std::filesystem::create_directory_symlink(prefix / "lib/x86_64-linux-gnu", prefix / "link");
    EXPECT_NE(loading_report(prefix / "link"), "") << "the library lies where the link leads";
    environment.set("TARNEL_RESOURCE_DIR", prefix / "share");
    EXPECT_EQ(loading_report(prefix / "lib"), "") << "the folder that is named serves alone";
    std::filesystem::remove_all(prefix);
}

} // namespace
