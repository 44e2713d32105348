#include "core/entry_point.h"
#include "core/locale_manager.h"
#include "core/resource_scope.h"
#include "platform/base/string.h"
#include "tests/support/environment.h"
#include "tests/support/reports.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
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

    ~Locale() override { std::filesystem::remove_all(folder_); }

    /// Writes the script of `language`; string 12547 is `approach`.
    std::string write(const std::string& language, const std::string& approach) {
        const std::string path = folder_ / language / "TarnelToolBoxLib.rc";
        std::filesystem::create_directory(folder_ / language);
        std::ofstream(path) << "STRINGTABLE BEGIN 12547 \"" << approach << "\" END\n";
        return path;
    }

    void choose(const std::string& languages) { environment_.speak(languages, folder_); }

    support::Environment environment_;
    std::filesystem::path folder_;
};

TEST_F(Locale, WithoutAScriptTheBuiltInTextsServe) {
    choose("de:fr");
    // Built after the entry point, the manager would have lost the module that it is attached to.
    const HINSTANCE own = resource_manager->get_resource_handle();
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own, tarnel::library_module());
    EXPECT_NE(own, AfxGetResourceHandle());
    EXPECT_EQ(text_of(12526), "14.4k");
    CString text;
    EXPECT_TRUE(text.LoadString(12547)) << "the library stands in the chain of extensions";
    EXPECT_EQ(text, "Approach");
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
    std::filesystem::create_directories(folder_ / "sv" / "TarnelToolBoxLib.rc");
    choose("sv:de");
    EXPECT_EQ(text_of(12547), "Anfahrweg") << "a folder is no script";
}

TEST_F(Locale, ADamagedScriptIsReportedAndTheBuiltInTextsServe) {
    write("de", "Anfahrweg");
    choose("de");
    const std::string path = write("fr", "\n");
    const support::Reports reports;
    choose("fr");
    choose("fr");
    EXPECT_EQ(reports.lines(),
              std::vector<std::string>{path + ":1:25: line break inside a string"});
    EXPECT_EQ(resource_manager->get_resource_handle(), tarnel::library_module());
    EXPECT_EQ(text_of(12547), "Approach");
}

TEST_F(Locale, AScopeRestoresWhatItFound) {
    write("de", "Anfahrweg");
    choose("de");
    const HINSTANCE german = resource_manager->get_resource_handle();
    const HINSTANCE before = AfxGetResourceHandle();
    {
        const CLocaleResourceScope outer;
        EXPECT_EQ(AfxGetResourceHandle(), german);
        choose("en");
        {
            const CLocaleResourceScope inner;
            EXPECT_EQ(AfxGetResourceHandle(), tarnel::library_module());
        }
        EXPECT_EQ(AfxGetResourceHandle(), german);
    }
    EXPECT_EQ(AfxGetResourceHandle(), before);
}

} // namespace
