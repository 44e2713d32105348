#include "platform/base/diagnostics.h"
#include "tests/support/process_facts.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

// The library as an application has it that loads and unloads it at run time.

namespace {

/// What was written to the diagnostic output while this object lived, piece by piece.
class DebugOutput {
  public:
    DebugOutput() { tarnel::set_debug_sink(&DebugOutput::add, this); }

    ~DebugOutput() { tarnel::set_debug_sink(nullptr, nullptr); }

    std::vector<std::string> pieces;

  private:
    static void add(void* self, std::string_view text) {
        static_cast<DebugOutput*>(self)->pieces.emplace_back(text);
    }
};

TEST(Loading, LeavesNothingBehind) {
    const auto before = support::process_facts();
    for (int round = 0; round < 100; ++round) {
        DebugOutput output;
        void* library = ::dlopen(TARNEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << ::dlerror();
        EXPECT_EQ(output.pieces, std::vector<std::string>{"TarnelToolboxLib.DLL Initializing!\n"});
        EXPECT_NE(support::process_facts(), before);
        ASSERT_EQ(::dlclose(library), 0);
        EXPECT_EQ(output.pieces, (std::vector<std::string>{"TarnelToolboxLib.DLL Initializing!\n",
                                                           "TarnelToolboxLib.DLL Terminating!\n"}));
        ASSERT_TRUE(support::back_to(before));
    }
    EXPECT_TRUE(support::no_leaks());
}

} // namespace
