#include "protocols/ParameterNames.h"
#include "tests/support/child_process.h"
#include "tests/support/environment.h"

namespace {

using Names = tbxCMMParamNamesConverter;

TEST(ParameterNames, AreTranslatedBothWaysInTheUsersLanguage) {
    const char* const languages[][2] = {
        {"en", "Measure speed"}, {"de", "Antastgeschwindigkeit"}, {"fr", "Vitesse de palpage"}};
    for (const auto& [language, readable] : languages) {
        support::Environment environment;
        environment.speak(language);
        // Names are read once a process.
        EXPECT_TRUE(support::ended_well(support::start_child([&] {
            EXPECT_EQ(Names::get_std_name(readable), "FEDRAT/MESVEL");
            EXPECT_EQ(Names::get_readable_name("FEDRAT/MESVEL"), readable);
            EXPECT_EQ(Names::m_names_map.size(), 42U);
            for (const auto& [std_name, name] : Names::m_names_map) {
                EXPECT_EQ(Names::get_std_name(name), std_name);
            }
            for (const char* none : {"fedrat/mesvel", "FEDRAT/MESVEL ", "", "Depth2"}) {
                EXPECT_TRUE(Names::get_readable_name(none).IsEmpty());
                EXPECT_TRUE(Names::get_std_name(none).IsEmpty());
            }
        })));
    }
}

} // namespace
