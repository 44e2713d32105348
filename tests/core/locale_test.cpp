#include "core/entry_point.h"
#include "core/locale_manager.h"
#include "core/resource_scope.h"
#include "platform/base/diagnostics.h"
#include "platform/base/string.h"
#include "platform/modules/module.h"
#include "tests/support/environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

// The library's own locale manager, with scripts in a folder of the test's own.

namespace {

using tarnel::resource_manager;

/// String `id` as the library finds it for its user.
std::string text_of(UINT id) {
    const CLocaleResourceScope scope;
    CString text = "?";
    text.LoadString(id);
    return text.GetString();
}

class Locale : public testing::Test {
  protected:
    Locale() {
        std::string pattern = std::filesystem::temp_directory_path() / "locale-XXXXXX";
        folder_ = std::filesystem::canonical(::mkdtemp(pattern.data()));
        choose("en");
    }

    ~Locale() override {
        choose("en");
        std::filesystem::remove_all(folder_);
    }

    /// Writes the script of `language`; string 12547 is `approach`.
    std::string write(const std::string& language, const std::string& approach) {
        const std::string path = folder_ / language / "TarnelToolBoxLib.rc";
        std::filesystem::create_directory(folder_ / language);
        std::ofstream(path) << "STRINGTABLE BEGIN 12547 \"" << approach << "\" END\n";
        return path;
    }

    void choose(const std::string& languages) {
        environment_.speak(languages);
        environment_.set("TARNEL_RESOURCE_DIR", folder_);
        lm_reload_resources();
    }

    support::Environment environment_;
    std::filesystem::path folder_;
};

TEST_F(Locale, WithoutAScriptTheBuiltInTextsServe) {
    choose("de:fr");
    EXPECT_EQ(resource_manager->get_resource_handle(), tarnel::library_module());
    EXPECT_EQ(text_of(12547), "Approach");
}

TEST_F(Locale, TheFirstLanguageWithAScriptIsTaken) {
    write("de", "Anfahrweg");
    write("fr", "Distance d'approche");
    choose("it:de_AT:fr");
    EXPECT_EQ(text_of(12547), "Anfahrweg");
    EXPECT_EQ(text_of(12548), "Search") << "what a language lacks is in the built-in language";
    choose("fr:de");
    EXPECT_EQ(text_of(12547), "Distance d'approche");
    choose("en_GB:de");
    EXPECT_EQ(text_of(12547), "Approach");
    write("en_GB", "Run-in");
    choose("en_GB:de");
    EXPECT_EQ(text_of(12547), "Run-in");
    std::filesystem::create_directories(folder_ / "sv" / "TarnelToolBoxLib.rc");
    choose("sv:de");
    EXPECT_EQ(text_of(12547), "Anfahrweg") << "a folder is no script";
}

TEST_F(Locale, AScriptThatIsFoundAgainIsLoadedOnce) {
    write("de", "Anfahrweg");
    choose("de");
    const HINSTANCE german = resource_manager->get_resource_handle();
    write("de", "Anfahrt");
    choose("de");
    EXPECT_EQ(resource_manager->get_resource_handle(), german);
    EXPECT_EQ(text_of(12547), "Anfahrweg");
    choose("en");
    EXPECT_FALSE(FreeLibrary(german)) << "one load, one release";
    choose("de");
    EXPECT_EQ(text_of(12547), "Anfahrt") << "after a reload without, it is loaded again";
}

TEST_F(Locale, AnotherLanguageTakesThePlaceOfTheFirst) {
    write("de", "Anfahrweg");
    write("fr", "Distance d'approche");
    choose("de");
    const HINSTANCE german = resource_manager->get_resource_handle();
    choose("fr");
    EXPECT_EQ(text_of(12547), "Distance d'approche");
    EXPECT_FALSE(FreeLibrary(german));
}

TEST_F(Locale, ADamagedScriptIsReportedAndTheBuiltInTextsServe) {
    write("de", "Anfahrweg");
    choose("de");
    const std::string path = write("fr", "\n");
    std::vector<std::string> reports;
    tarnel::set_report_sink(
        [](void* lines, std::string_view line) {
            static_cast<std::vector<std::string>*>(lines)->emplace_back(line);
        },
        &reports);
    choose("fr");
    choose("fr");
    tarnel::set_report_sink(nullptr, nullptr);
    EXPECT_EQ(reports, std::vector<std::string>{path + ":1:25: line break inside a string\n"});
    EXPECT_EQ(resource_manager->get_resource_handle(), tarnel::library_module());
    EXPECT_EQ(text_of(12547), "Approach");
}

TEST_F(Locale, AManagerGivesBackWhatItLoaded) {
    write("de", "Anfahrweg");
    choose("de");
    const HINSTANCE first = resource_manager->get_resource_handle();
    {
        lmLocaleManagerMFC another;
        EXPECT_EQ(another.get_resource_handle(), nullptr);
        another.attach(tarnel::library_module());
        EXPECT_EQ(another.get_resource_handle(), first) << "attaching chooses";
        another.detach();
        choose("en");
        EXPECT_EQ(another.get_resource_handle(), first) << "it is no longer told";
        another.attach(tarnel::library_module());
        choose("de");
    }
    const HINSTANCE second = resource_manager->get_resource_handle();
    choose("en");
    EXPECT_FALSE(FreeLibrary(first));
    EXPECT_FALSE(FreeLibrary(second));
}

TEST_F(Locale, AScopeRestoresWhatItFound) {
    write("de", "Anfahrweg");
    choose("de");
    const HINSTANCE german = resource_manager->get_resource_handle();
    const HINSTANCE before = AfxGetResourceHandle();
    try {
        const CLocaleResourceScope outer;
        EXPECT_EQ(AfxGetResourceHandle(), german);
        choose("en");
        {
            const CLocaleResourceScope inner;
            EXPECT_EQ(AfxGetResourceHandle(), tarnel::library_module());
        }
        EXPECT_EQ(AfxGetResourceHandle(), german);
        throw std::runtime_error("leaves the scope");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(AfxGetResourceHandle(), before);
    }
}

} // namespace
