#include "core/locale_manager.h"
#include "platform/base/string.h"
#include "platform/modules/module_state.h"

#include <gtest/gtest.h>

// The library's objects are part of this program, so that a test sees what it keeps to itself.

namespace {

TEST(LoadOrder, TheEntryPointFindsTheLocaleManagerComplete) {
    // Built after the entry point, it would have lost the module that it was attached to.
    const HINSTANCE own = locale_manager.get_resource_handle();
    ASSERT_NE(own, nullptr);
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
