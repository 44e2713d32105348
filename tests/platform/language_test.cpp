#include "platform/modules/language.h"
#include "tests/support/environment.h"

#include <gtest/gtest.h>

namespace {

using List = std::vector<std::string>;
using tarnel::languages;

TEST(Languages, TheFirstLocaleThatIsSetDecides) {
    EXPECT_EQ(languages({}), List{});
    EXPECT_EQ(languages({"", "", "", "de_AT.UTF-8"}), (List{"de_AT", "de"}));
    EXPECT_EQ(languages({"", "", "fr", "de"}), List{"fr"});
    EXPECT_EQ(languages({"", "it", "fr", "de"}), List{"it"});
    for (const char* locale : {"C", "C.UTF-8", "POSIX"}) {
        EXPECT_EQ(languages({"de", locale, "fr", "fr"}), List{}) << locale;
    }
}

TEST(Languages, AListIsReadInItsOrderUpToTheBuiltInTexts) {
    const struct {
        const char* language;
        List list;
    } cases[] = {
        {"fr:de", {"fr", "de"}},
        {"de_AT:de_DE:fr", {"de_AT", "de", "de_DE", "fr"}},
        {":fr::de:", {"fr", "de"}},
        {"fr:en_US:de", {"fr", "en_US", "en"}},
        {"en:de", {"en"}},
        {"fr:C:de", {"fr"}},
        {"POSIX:de", {}},
        {"C.UTF-8:de", {}},
        {"sr_RS.UTF-8@latin", {"sr_RS@latin", "sr@latin", "sr_RS", "sr"}},
        {"de.ISO-8859-1", {"de"}},
        {"eng:enm:de", {"eng", "enm", "de"}},
        {"../de:fr", {"fr"}},
        {"..:.:/etc:de/fr:de_/..:de@../x:d e:\xC3\xA4:_AT:@euro:fr", {"fr"}},
        {"de.../../etc", {"de"}},
    };

    for (const auto& [language, list] : cases) {
        EXPECT_EQ(languages({language, "", "", "sv_SE"}), list) << language;
    }
}

TEST(Languages, TheEnvironmentIsReadAtEachCall) {
    support::Environment environment;
    environment.speak("de");
    EXPECT_EQ(tarnel::user_languages(), List{"de"});
    environment.set("LANGUAGE", "");
    EXPECT_EQ(tarnel::user_languages(), (List{"sv_SE", "sv"}));
    environment.set("LC_MESSAGES", "it");
    EXPECT_EQ(tarnel::user_languages(), List{"it"});
    environment.set("LC_ALL", "C");
    EXPECT_EQ(tarnel::user_languages(), List{});
}

} // namespace
