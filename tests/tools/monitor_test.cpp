#include "tests/support/pty.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

// `tarnel monitor` as a person runs it, at the other end of a real line.

namespace {

using std::filesystem::path;
using support::Tool;

constexpr const char* records = "+1 -20 +300 -4000 +50000 -600000\r\n"
                                "X+12345 Y-7 Z+0 +12345 -7 +1000\r\n"
                                "+3 -2 +1 -1 +2 -3\r\n";

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

std::string content(const path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

class Monitor : public testing::Test {
  protected:
    std::string arguments(const std::string& more = "") const {
        return "monitor 'perceval micron' --port " + machine.path() + ' ' + more;
    }

    /// What it prints of the three records.
    std::string points(const std::string& more) {
        Tool tool(arguments("--count 3 " + more));
        EXPECT_TRUE(tool.says("Monitoring PERCEVAL MICRON at")) << tool.diagnostics();
        machine.send(records);
        EXPECT_EQ(tool.wait(), 0) << tool.diagnostics();
        return tool.output();
    }

    support::TemporaryRegistry registry;
    const path folder = registry.folder;
    support::Pty machine;
};

/// The fields of each line, without what a format puts around them.
std::vector<std::vector<std::string>> rows_of(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        rows.emplace_back();
        for (std::string field; std::getline(fields, field, ',');) {
            const std::size_t name = field.find("\": ");
            field.erase(0, name == field.npos ? 0 : name + 3);
            std::erase_if(field, [](char c) { return c == '{' || c == '}' || c == '"'; });
            rows.back().push_back(field);
        }
    }
    return rows;
}

/// With a zero for each digit.
std::string shape(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
    return text;
}

TEST_F(Monitor, WritesExactNumbersForPrograms) {
    auto csv = rows_of(points("--format csv"));
    const auto json = rows_of(points("--format json"));
    ASSERT_EQ(csv.size(), 4U);
    ASSERT_EQ(json.size(), 3U);
    EXPECT_EQ(csv[0], (std::vector<std::string>{"number", "x", "y", "z", "x2", "y2", "z2", "time",
                                                "monotonic_ns"}));
    csv.erase(csv.begin());
    const int counts[3][6] = {{1, -20, 300, -4000, 50000, -600000},
                              {12345, -7, 0, 12345, -7, 1000},
                              {3, -2, 1, -1, 2, -3}};
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_EQ(csv[i].size(), 9U);
        ASSERT_EQ(json[i].size(), 9U);
        EXPECT_EQ(csv[i][0], std::to_string(i));
        for (std::size_t k = 0; k < 6; ++k) {
            double mm = -1;
            const std::string& text = csv[i][k + 1];
            std::from_chars(text.data(), text.data() + text.size(), mm);
            EXPECT_EQ(mm, counts[i][k] / 1000.0) << text;
        }
        EXPECT_TRUE(std::equal(csv[i].begin(), csv[i].begin() + 7, json[i].begin()));
        EXPECT_EQ(shape(csv[i][7]), "0000-00-00T00:00:00.000000Z");
        EXPECT_EQ(shape(json[i][7]), shape(csv[i][7]));
    }
}

TEST_F(Monitor, ShowsAPersonATableAndSumsUpOnCtrlC) {
    Tool tool(arguments());
    ASSERT_TRUE(tool.prints("time UTC\n")) << tool.diagnostics();
    const std::string all = records;
    const std::size_t first = all.find('\n') + 1;
    machine.send(all.substr(0, first));
    ASSERT_TRUE(tool.prints("\n     0 ")) << tool.output();
    machine.send(all.substr(first));
    ASSERT_TRUE(tool.prints("\n     1     12.345        -0.007         0.000   ")) << tool.output();
    ASSERT_TRUE(tool.prints("\n     2 "));
    tool.signal(SIGINT);
    EXPECT_EQ(tool.wait(), 0);
    const std::string summary = std::to_string(all.size()) + " bytes, 0 damaged";
    EXPECT_TRUE(support::has(tool.diagnostics(), "3 points, " + summary));
    EXPECT_TRUE(support::has(tool.diagnostics(), "has number 2\n"));
}

TEST_F(Monitor, ShowsALineThatIsLostAndBackAtItsPlace) {
    support::PortName port;
    port.point_to(machine);
    Tool tool("monitor METROLEC --port " + port.path.string());
    ASSERT_TRUE(tool.prints("time UTC\n")) << tool.diagnostics();
    machine.send("100 200 300 0\r400 500");
    ASSERT_TRUE(tool.prints("\n     1 ")) << tool.output();
    machine.unplug();
    ASSERT_TRUE(tool.prints("the line is lost")) << tool.output();
    support::Pty again;
    port.point_to(again);
    ASSERT_TRUE(tool.prints("the line is back")) << tool.output();
    again.send(" 600 0\r700 800 900 0\r");
    ASSERT_TRUE(tool.prints("\n     2      0.700 ")) << tool.output();
    tool.signal(SIGTERM);
    EXPECT_EQ(tool.wait(), 0);

    const std::string& table = tool.output();
    const auto dropped = table.find("\n-- the record around here was dropped --\n     2 ");
    EXPECT_NE(dropped, std::string::npos) << table;
    EXPECT_LT(table.find("\n     1 "), table.find("the line is lost"));
    EXPECT_EQ(count(table, "\n"), 6U) << table;
    EXPECT_TRUE(support::has(tool.diagnostics(), "2 points, 42 bytes, 1 damaged"));
}

TEST_F(Monitor, KeepsWhatAFileHolds) {
    const std::string file = (folder / "points.csv").string();
    points("--format csv --output " + file);
    const std::string first = content(file);
    EXPECT_EQ(count(first, "\n"), 4U) << first;
    const auto refused = support::run_tool(arguments("--format csv --for 0 --output " + file));
    EXPECT_EQ(refused.exit_code, 6);
    EXPECT_NE(refused.diagnostics.find("exists; use --append"), std::string::npos);
    points("--format csv --append --output " + file);
    EXPECT_TRUE(content(file).starts_with(first));
    EXPECT_EQ(count(content(file), "\n"), 7U) << "a heading once";
    EXPECT_EQ(count(content(file), "number"), 1U);
}

TEST_F(Monitor, SaysWhenItCannotWrite) {
    Tool full(arguments("--format csv >/dev/full"));
    EXPECT_EQ(full.wait(), 7) << "at its heading";
    EXPECT_TRUE(full.says("No space left on device")) << full.diagnostics();
    EXPECT_TRUE(full.says("0 points, ")) << full.diagnostics();
    const auto nowhere =
        support::run_tool(arguments("--plot " + (folder / "no/plot.svg").string()));
    EXPECT_EQ(nowhere.exit_code, 7) << nowhere.diagnostics;

    Tool unread(arguments("--format csv"));
    ASSERT_TRUE(unread.prints("monotonic_ns\n"));
    unread.close_output();
    EXPECT_EQ(unread.wait(), 0) << "quietly";
    EXPECT_EQ(count(unread.diagnostics(), "\n"), 2U) << unread.diagnostics();
}

TEST_F(Monitor, EndsThoughNobodyTakesItsPoints) {
    const path pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC);
    Tool stuck(arguments("--format json >" + pipe.string()));
    ASSERT_TRUE(stuck.says("Monitoring")) << stuck.diagnostics();
    for (int i = 0; i < 300; ++i) { // more than a pipe takes
        machine.send(records);
    }
    for (int waiting = 0; waiting < 50'000; ::ioctl(reader, FIONREAD, &waiting)) {
        ::usleep(1'000);
    }
    stuck.signal(SIGTERM);
    EXPECT_EQ(stuck.wait(), 0) << stuck.diagnostics();
    ::close(reader);
}

TEST_F(Monitor, RecordsAndDraws) {
    const path recording = folder / "part.rec";
    const path plot = folder / "part.svg";
    points("--record " + recording.string() + " --plot " + plot.string());
    EXPECT_TRUE(support::has(content(recording), "\nprotocol: PERCEVAL MICRON\n"));
    EXPECT_NE(content(recording).find(records), std::string::npos) << "in one block";
    EXPECT_EQ(count(content(plot), "<circle "), 2 * 3U);
    EXPECT_EQ(count(content(plot), ">1</text>"), 2U);
    EXPECT_EQ(count(content(plot), ">2</text>"), 1U) << "a number only where there is room";

    EXPECT_EQ(support::run_tool(arguments("--for 0 --plot " + plot.string())).exit_code, 0);
    const std::string empty = content(plot);
    EXPECT_TRUE(empty.ends_with("</svg>\n"));
    EXPECT_EQ(count(empty, "nan") + count(empty, "inf") + count(empty, "<circle "), 0U) << empty;
}

TEST_F(Monitor, RefusesWhatMakesNoSense) {
    const std::string port = "--port " + machine.path();
    const auto unknown = support::run_tool("monitor LASER " + port);
    EXPECT_EQ(unknown.exit_code, 5);
    EXPECT_TRUE(support::has(unknown.diagnostics, "PERCEVAL MICRON, PERCEVAL 1/100, METROLEC"));
    EXPECT_EQ(support::run_tool("monitor METROLEC").exit_code, 3);
    EXPECT_EQ(support::run_tool("monitor METROLEC --line nobody").exit_code, 2);
    EXPECT_EQ(support::run_tool("monitor METROLEC --baud 19201 " + port).exit_code, 3);
    EXPECT_NE(support::run_tool("monitor METROLEC --append " + port).exit_code, 0);

    Tool holder(arguments());
    ASSERT_TRUE(holder.says("Monitoring"));
    const auto held = support::run_tool("monitor METROLEC " + port);
    EXPECT_EQ(held.exit_code, 4);
    EXPECT_TRUE(support::has(held.diagnostics, "is in use by tarnel (process "));

    EXPECT_EQ(support::run_tool("protocols --format csv").output,
              "Name,Class\nPERCEVAL MICRON,PercevalMicronProtocol\n"
              "PERCEVAL 1/100,PercevalProtocol\nMETROLEC,MPOProtocol\n");
}

} // namespace
