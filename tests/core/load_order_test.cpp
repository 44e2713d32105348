#include "core/entry_point.h"
#include "core/resource_manager.h"
#include "platform/base/string.h"
#include "platform/companions/locale_manager_base.h"
#include "platform/modules/module_state.h"
#include "tests/support/environment.h"

#include <gtest/gtest.h>

// The library's objects are part of this program, so that a test sees what it keeps to itself.

namespace {

TEST(LoadOrder, TheEntryPointFindsTheLocaleManagerComplete) {
    support::Environment environment;
    environment.speak("en");
    lm_reload_resources();
    // Built after the entry point, it would have lost the module that it was attached to.
    const HINSTANCE own = tarnel::resource_manager->get_resource_handle();
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own, tarnel::library_module());
    EXPECT_NE(own, AfxGetResourceHandle());

    CString text;
    EXPECT_TRUE(text.LoadString(own, 12526));
    EXPECT_EQ(text, "14.4k");
}

TEST(LoadOrder, TheLibraryStandsInTheChainOfExtensionLibraries) {
    CString text;
    EXPECT_TRUE(text.LoadString(12547)); // the executable has no strings
    EXPECT_EQ(text, "Approach");
}

} // namespace
