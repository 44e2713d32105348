#include "tests/support/pty.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"

#include <gtest/gtest.h>

// `tarnel dump` and `tarnel write` as a person runs them, at the other end of a real line.

namespace {

/// With both channels in its output.
support::ToolResult run(const std::string& arguments) {
    return support::run_tool(arguments + " 2>&1");
}

class PortVerbs : public testing::Test {
  protected:
    support::TemporaryRegistry registry;
    support::Pty machine;
    const std::string port = "--port " + machine.path() + ' ';
};

TEST_F(PortVerbs, DumpShowsWhatArrives) {
    machine.send(std::string("X+12\rY\\\x07\xFF\n\0", 11));
    const auto text = run("dump " + port + "--for 0.2");
    EXPECT_EQ(text.exit_code, 0) << text.output;
    EXPECT_TRUE(support::has(text.output, "  X+12\\r\n"));
    EXPECT_TRUE(support::has(text.output, "  Y\\x5C\\x07\\xFF\\n\n"));
    EXPECT_TRUE(support::has(text.output, "\n11 bytes, 0 places"));

    machine.send("AB");
    const auto hex = run("dump --hex " + port + "--baud 19200 --parity none --bits 8 --for 0.2");
    EXPECT_TRUE(support::has(hex.output, "41 42 "));
    EXPECT_TRUE(support::has(hex.output, "19200,8,0,0"));
}

TEST_F(PortVerbs, WriteSendsEveryByte) {
    const auto result = run("write " + port + R"('MEAS 1\r\n\t\\\x00\xff')");
    EXPECT_EQ(result.exit_code, 0) << result.output;
    EXPECT_EQ(machine.receive(12), std::string("MEAS 1\r\n\t\\\0\xFF", 12));
    EXPECT_EQ(run("write " + port + R"('\q')").exit_code, 3);
    EXPECT_EQ(run("write " + port + R"('\x4')").exit_code, 3);
    EXPECT_EQ(run("dump --port /dev/null --for 1").exit_code, 4);
}

} // namespace
