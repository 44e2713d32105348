#include "tests/support/eventually.h"
#include "tests/support/slow_build.h"
#include "tests/support/temporary_registry.h"
#include "tests/support/tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

// The whole road of a measured point, with two programs on a real pseudo terminal: what a simulated
// machine has sent, and what `tarnel monitor` makes of it.

namespace {

constexpr int many = 200'000 / support::slow_build_divisor;

using Row = std::vector<std::string>;

/// The rows of a CSV text without its heading.
std::vector<Row> rows_of(std::istream&& text) {
    std::vector<Row> rows;
    std::string line;
    std::getline(text, line);
    while (std::getline(text, line)) {
        std::istringstream fields(line);
        Row row;
        for (std::string field; std::getline(fields, field, ',');) {
            row.push_back(field);
        }
        rows.push_back(row);
    }
    return rows;
}

std::string as_csv(const Row& row) {
    std::string line = "\n";
    for (const std::string& field : row) {
        line += field + ',';
    }
    return line;
}

/// The number and the coordinates, which stand from `first` on.
Row point_of(const Row& row, std::ptrdiff_t first) {
    return {row.begin() + first, row.begin() + first + 7};
}

class Road : public testing::Test {
  protected:
    std::string file(const std::string& name) const { return (registry_.folder / name).string(); }

    /// Starts a verb that makes a line of its own, and waits until that is there.
    void start_machine(support::Tool& machine) const {
        ASSERT_TRUE(machine.prints(link() + "\n")) << machine.diagnostics();
    }

    std::string link() const { return file("machine"); }

    std::string simulate(const std::string& protocol, int count, const std::string& options) const {
        return "simulate '" + protocol + "' --rate max --count " + std::to_string(count) +
               " --link " + link() + " --truth " + file("truth") + " " + options;
    }

    std::string monitor(const std::string& protocol, const std::string& options) const {
        return "monitor '" + protocol + "' --port " + link() + " --format csv " + options;
    }

    std::vector<Row> truth() const { return rows_of(std::ifstream(file("truth"))); }

    /// The points that must come.
    std::vector<Row> true_points() const {
        std::vector<Row> points;
        for (const Row& row : truth()) {
            if (!row[2].empty()) {
                points.push_back(point_of(row, 2));
            }
        }
        return points;
    }

    static std::vector<Row> points(const std::string& csv) {
        std::vector<Row> points;
        for (const Row& row : rows_of(std::istringstream(csv))) {
            points.push_back(point_of(row, 0));
        }
        return points;
    }

    std::size_t records_with(const std::string& fault) const {
        const std::vector<Row> rows = truth();
        return static_cast<std::size_t>(std::count_if(
            rows.begin(), rows.end(), [&](const Row& row) { return row[1] == fault; }));
    }

    /// Has a machine measure to its end, and the monitor take all of it.
    std::string measure(const std::string& protocol, int count, const std::string& options,
                        const std::string& monitor_options = "") const {
        support::Tool machine(simulate(protocol, count, options));
        start_machine(machine);
        support::Tool watcher(monitor(protocol, monitor_options));
        EXPECT_EQ(machine.wait(), 0) << machine.diagnostics();
        EXPECT_TRUE(watcher.prints(as_csv(true_points().back()))) << watcher.diagnostics();
        watcher.signal(SIGINT);
        EXPECT_EQ(watcher.wait(), 0) << watcher.diagnostics();
        return watcher.output();
    }

    support::TemporaryRegistry registry_;
};

TEST_F(Road, EachOfManyPointsArrives) {
    for (const char* const protocol : {"METROLEC", "PERCEVAL MICRON"}) {
        const std::string csv = measure(protocol, many, "");
        EXPECT_EQ(true_points().size(), static_cast<std::size_t>(many));
        EXPECT_TRUE(points(csv) == true_points()) << protocol;
    }
}

TEST_F(Road, AMachineIsNoFasterThanTheLinesPace) {
    const std::string csv = measure("METROLEC", 500, "--pace 115200 --shape sphere --seed 4");
    EXPECT_EQ(points(csv), true_points());
    const auto sent_at = [](const Row& row) { return std::stoll(row[9]); };
    EXPECT_GT(sent_at(truth().back()) - sent_at(truth().front()), 700'000'000); // ns
}

TEST_F(Road, DamageCostsTheDamagedRecordsAlone) {
    const char* const faults[] = {"split", "merge", "flip", "cut", "flood"};
    for (const char* const protocol : {"METROLEC", "PERCEVAL 1/100"}) {
        for (const char* const fault : faults) {
            const std::string csv =
                measure(protocol, 400, std::string("--seed 2 --shape plane --fault ") + fault);
            EXPECT_GT(records_with(fault), 5U);
            EXPECT_EQ(points(csv), true_points()) << protocol << ", " << fault;
        }
    }
}

TEST_F(Road, ALineEndOfOneCharacterCostsPercevalEveryOtherPoint) {
    const std::string csv = measure("PERCEVAL MICRON", 100, "--end cr --fault flood,merge,split");
    EXPECT_EQ(true_points().size(), 50U);
    EXPECT_EQ(points(csv), true_points());
}

TEST_F(Road, ARunWithPulledCablesIsReplayedAsItWas) {
    const std::string csv = measure("PERCEVAL MICRON", 120, "--fault unplug,flip,split --seed 5",
                                    "--record " + file("run"));
    EXPECT_GT(records_with("unplug"), 1U);
    EXPECT_EQ(points(csv), true_points());

    support::Tool player("replay " + file("run") + " --speed max --link " + link());
    start_machine(player);
    support::Tool watcher(
        monitor("PERCEVAL MICRON", "--count " + std::to_string(true_points().size())));
    EXPECT_EQ(watcher.wait(), 0) << watcher.diagnostics();
    EXPECT_EQ(player.wait(), 0) << player.diagnostics();
    EXPECT_EQ(points(watcher.output()), true_points());
}

TEST_F(Road, WhatAKilledRecorderHasKeptPlays) {
    support::Tool machine(simulate("METROLEC", 1'000'000'000, ""));
    start_machine(machine);
    const std::string record = "record --port " + link() + " " + file("run");
    support::Tool recorder(record);
    const auto size = [this] {
        std::error_code absent;
        const auto bytes = std::filesystem::file_size(file("run"), absent);
        return absent ? 0 : bytes;
    };
    EXPECT_TRUE(support::eventually([&] { return size() > 100'000; }));
    recorder.signal(SIGKILL);
    recorder.wait();
    machine.signal(SIGINT);
    EXPECT_EQ(machine.wait(), 0);
    EXPECT_EQ(support::run_tool(record).exit_code, 6);

    std::filesystem::resize_file(file("run"), size() - 10);
    support::Tool player("replay " + file("run") + " --speed 1000 --link " + link());
    start_machine(player);
    support::Tool watcher(monitor("METROLEC", ""));
    EXPECT_EQ(player.wait(), 0);
    EXPECT_TRUE(support::has(player.diagnostics(), "was cut"));
    EXPECT_TRUE(watcher.prints("\n2000,")) << watcher.diagnostics();
    watcher.signal(SIGINT);
    EXPECT_EQ(watcher.wait(), 0);
    std::vector<Row> sent = true_points();
    const std::vector<Row> replayed = points(watcher.output());
    ASSERT_LE(replayed.size(), sent.size());
    sent.resize(replayed.size());
    EXPECT_EQ(replayed, sent);
}

TEST_F(Road, WhatIsNoRecordingIsNotPlayed) {
    const std::string head = "TARNEL RECORDING 1\nprotocol: \nport: \nstarted: \n\n";
    const std::pair<std::string, const char*> damaged[] = {
        {"", "byte 0"},
        {"solid cube\n", "byte 0"},
        {"TARNEL RECORDING 1\nprotocol: \n", "byte 30"},
        {head + "@0 2\nABC\n", "byte 55"},
        {head + "@0 2\nAB\n@x 1\nA\n", "byte 56"},
        {head + "@0 99999999999\n", "byte 48"}};
    for (const auto& [text, place] : damaged) {
        std::ofstream(file("odd"), std::ios::trunc) << text;
        const support::ToolResult result = support::run_tool("replay " + file("odd"));
        EXPECT_EQ(result.exit_code, 2) << text;
        EXPECT_TRUE(support::has(result.diagnostics, place));
    }
    EXPECT_EQ(support::run_tool("replay " + file("absent")).exit_code, 2);
}

TEST_F(Road, AMachineRefusesWhatItCannotDo) {
    EXPECT_EQ(support::run_tool("simulate NOBODY").exit_code, 5);
    EXPECT_EQ(support::run_tool("simulate METROLEC --rate fast").exit_code, 3);
    EXPECT_EQ(support::run_tool("simulate METROLEC --fault unplug").exit_code, 3);
    EXPECT_EQ(support::run_tool("simulate 'PERCEVAL 1/100' --end cr --fault cut").exit_code, 3);
    std::ofstream(file("taken")) << "kept";
    EXPECT_EQ(support::run_tool("simulate METROLEC --link " + file("taken")).exit_code, 4);
    EXPECT_EQ(std::filesystem::file_size(file("taken")), 4U);
}

} // namespace
