#include "tests/protocols/receiver.h"
#include "tests/protocols/record_model.h"
#include "tests/support/slow_build.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int stream_count = 20'000 / support::slow_build_divisor;
constexpr int records_a_stream = 40;

std::string printed(const std::vector<__PointMMT>& points) {
    std::ostringstream text;
    for (const __PointMMT& p : points) {
        text << '\n' << p.number << ' ' << p.x << ' ' << p.y << ' ' << p.z;
        text << ' ' << p.x2 << ' ' << p.y2 << ' ' << p.z2;
    }
    return text.str();
}

void expect_same(const std::vector<__PointMMT>& points, const std::vector<__PointMMT>& expected,
                 const std::string& text) {
    EXPECT_TRUE(same(points, expected)) << testing::PrintToString(text) << "\ngives"
                                        << printed(points) << "\nnot" << printed(expected);
}

struct Case {
    std::string text;
    std::vector<__PointMMT> points;
};

template <typename Machine>
void expect_points(const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        expect_same(points_of<Machine>(row.text, [] { return 1000; }), row.points, row.text);
    }
}

// Writes records, and damages them.
class Writer {
  public:
    explicit Writer(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t limit) { return random_() % limit; }

    std::string metrolec() {
        std::string record = pick({"", "", "Pt "});
        for (int axis = 0; axis < 3; ++axis) {
            record += pick({"", "", " ", "X", "Z= \t"}) + pick({"", "", "-", "+", "+-"});
            record += one_in(30) ? pick({"-", ".", "1-2", "1.2.3", "--5", "7x7"}) : digits(7);
            record += pick({"", "", ".", "." + digits(4)}) + pick({" ", " ", "\t", "  "});
        }
        for (std::size_t sign = below(4); sign > 0; --sign) {
            record += pick({"+", "-", "0", "0", "-5", "x+"});
        }
        return record + pick({"\r", "\r", "\n", "\r\n", " ", " \r\n"});
    }

    std::string perceval() {
        std::string record = pick({"", "", "P:"});
        for (int field = 0; field < 6; ++field) {
            record += pick({"", "X", " ", ", "}) + pick({"+", "-", "+", "-", "+0", "-00", ""});
            record += one_in(30) ? pick({"", "-", "1+2", "-+7", "2147483648"}) : digits(8);
            record += field < 5 ? pick({" ", " ", ",", "\t"}) : "";
        }
        return record + pick({"\r\n", "\r\n", " \r", ".\n", "\n\r", "\r"});
    }

    std::string noise(std::size_t longest) {
        std::string text;
        for (std::size_t left = below(longest + 1); left > 0; --left) {
            text += "+-0123456789. \t\r\nXyz\x80"[below(20)];
        }
        return text;
    }

    // With `flood` as characters that make a field too long.
    void damage(std::string& record, const std::string& flood) {
        const std::size_t at = below(record.size());
        const auto kind = below(6);
        if (kind == 0) {
            record[at] = static_cast<char>(below(256));
        } else if (kind == 1) {
            record.erase(at, 1 + below(10));
        } else if (kind == 2) {
            std::erase_if(record, [](char c) { return c == '\r' || c == '\n'; });
        } else if (kind == 3) {
            record.insert(at, flood.substr(0, below(300)));
        } else if (kind == 4) {
            record.insert(at, noise(20));
        } else {
            record.insert(at, one_in(30) ? "\xFF" : "++0");
        }
    }

    bool one_in(std::size_t count) { return below(count) == 0; }

  private:
    std::string pick(std::initializer_list<std::string_view> choices) {
        return std::string(choices.begin()[below(choices.size())]);
    }

    std::string digits(std::size_t most) {
        return std::to_string(random_()).substr(0, 1 + below(most));
    }

    std::mt19937 random_;
};

struct MetrolecRecords {
    using Machine = Metrolec;
    static constexpr auto model = metrolec_points;

    static std::string write(Writer& writer) { return writer.metrolec(); }
};

struct PercevalRecords {
    using Machine = Perceval;
    static constexpr auto model = perceval_points;

    static std::string write(Writer& writer) { return writer.perceval(); }
};

template <typename Records>
std::string stream(Writer& writer, int records) {
    static const std::string flood(300, '7');
    std::string text;
    for (int i = 0; i < records; ++i) {
        std::string record = Records::write(writer);
        if (writer.one_in(4)) {
            writer.damage(record, flood);
        }
        text += writer.one_in(20) ? writer.noise(100) + "\r\n" : record;
    }
    return text;
}

template <typename Records>
class Parser : public testing::Test {};

using Machines = testing::Types<MetrolecRecords, PercevalRecords>;
TYPED_TEST_SUITE(Parser, Machines);

TYPED_TEST(Parser, MakesTheSamePointsOfAStreamInAnyBlocks) {
    Writer writer(1);
    for (int i = 0; i < stream_count && !this->HasFailure(); ++i) {
        const std::string text = stream<TypeParam>(writer, records_a_stream);
        const std::size_t longest = std::array{1, 10, 60, 300}[writer.below(4)];
        expect_same(
            points_of<typename TypeParam::Machine>(text, [&] { return 1 + writer.below(longest); }),
            TypeParam::model(text), text);
    }
}

TEST(Metrolec, ReadsRecordsAsTheyAreWritten) {
    const std::string nines(99, '9');
    const double large = 1e99 / 1000;
    expect_points<Metrolec>({
        {"1234.5 -2000 500 +-0\r", {{1, 1.2345, -2, 0.5, 1.2345 - 1, -1, 0.5}}},
        {"100 200 300\r", {}},
        {"100 200 300 \r", {{1, 0.1, 0.2, 0.3, 0.1, 0.2, 0.3}}},
        {"100 200 300 +\r", {{1, 0.1, 0.2, 0.3, 0.1 - 1, 0.2, 0.3}}},
        {"X100 Y200 Z300 +-0\r", {{1, 0.1, 0.2, 0.3, 0.1 - 1, 1.2, 0.3}}},
        {"1 2 3 + -\r", {{1, 0.001, 0.002, 0.003, 0.001 - 1, 0.002, 0.003}}},
        {"1+0 2x0 3 \t 9-\n", {{1, 0.01, 0.02, 0.003, 1.01, 0.02, 0.003}}},
        {"12-5 1.2.3 --5 \r", {{1, 0.012, 0.0012, 0, 0.012, 0.0012, 0}}},
        {"- . -.5 \r", {{1, 0, 0, -0.0005, 0, 0, -0.0005}}},
        {"inf 1 nan 2 -inf \r", {{1, 0.001, 0.002, 0, 0.001, 0.002, 0}}},
        {"1 2 3 +-0\r4 5 6 \n",
         {{1, 0.001, 0.002, 0.003, 0.001 - 1, 1.002, 0.003},
          {2, 0.004, 0.005, 0.006, 0.004, 0.005, 0.006}}},
        {nines + " 0 0 \r", {{1, large, 0, 0, large, 0, 0}}},
        {nines + "9 0 0 \r1 2 3 +-00\r0 0 0 \r", {{1, 0, 0, 0, 0, 0, 0}}},
    });
}

TEST(Metrolec, LeavesWhatIsIncompleteInTheRing) {
    Metrolec machine;
    machine.receive("100 200 ");
    EXPECT_EQ(machine.ring.GetNbChar(), 8);
    machine.receive("300 +\r\n1 1 1 \r\n");
    EXPECT_EQ(machine.points.size(), 1u) << "the line feed alone makes no point";
    EXPECT_EQ(machine.ring.GetNbChar(), 8);
    machine.take_points();
    EXPECT_EQ(machine.points.size(), 2u);
    machine.receive("\xFF"
                    "1 1 1 \r");
    machine.drain();
    EXPECT_EQ(machine.points.size(), 2u) << "what comes behind a 0xFF waits";
}

TEST(Parsers, CountTheRecordsThatTheyDrop) {
    Metrolec metrolec;
    metrolec.receive("1 2 3 +\r\n\r\nready\r1 2\n" + std::string(100, '7') + " 2 3 \r1 2 3 ++++");
    metrolec.drain();
    metrolec.receive("++\r1 2 3 \r");
    metrolec.drain();
    EXPECT_EQ(metrolec.points.size(), 2u);
    EXPECT_EQ(metrolec.parse.damaged_records, 4u);

    Perceval perceval;
    perceval.receive("+1 +2147483648 +3\r" + std::string(200, '7') + "\r+1 +2 +3 +4 +5 +6\r\n");
    EXPECT_EQ(perceval.points.size(), 1u);
    EXPECT_EQ(perceval.parse.damaged_records, 2u);
}

TEST(Perceval, ReadsRecordsAsTheyAreWritten) {
    const std::string last = "+2 +3 +4 +5 +6\r\n";
    const std::string good = "+1 +2 +3 +4 +5 +6\r\n";
    const auto first_field = [&](const std::string& field, int value) {
        return Case{field + ' ' + last, {{0, double(value), 2, 3, 4, 5, 6}}};
    };
    expect_points<Perceval>({
        {"+1234 -020 +0 +100 +0 -50\r\n", {{0, 1234, -20, 0, 100, 0, -50}}},
        {"X+1 Y-2,Z+3/+4 +5 +6 \r", {{0, 1, -2, 3, 4, 5, 6}}},
        {good + "\n" + good, {{0, 1, 2, 3, 4, 5, 6}, {1, 1, 2, 3, 4, 5, 6}}},
        {"+1 +1 +1 +1 +1 +1\r+2 +2 +2 +2 +2 +2\r+3 +3 +3 +3 +3 +3\r+4 +4 +4 +4 +4 +4\r",
         {{0, 1, 1, 1, 1, 1, 1}, {1, 3, 3, 3, 3, 3, 3}}},
        {"+12.5 +2 +3 +4 +5 +6\r\n", {{0, 12, 5, 2, 3, 4, 5}}},
        {"+1 +2 +3 +4\r\n+5 +6 +7 +8 +9 +10\r\n" + good,
         {{0, 1, 2, 3, 4, 5, 6}, {1, 1, 2, 3, 4, 5, 6}}},
        first_field("+", 0),
        first_field("+-5", -5),
        first_field("+0-5", -5),
        first_field("-+5", 0),
        first_field("++-5", 0),
        first_field("+12-5", 12),
        first_field("501", 501),
        first_field("05", 5),
        first_field("+2147483647", INT32_MAX),
        first_field("-2147483648", INT32_MIN),
        first_field("+" + std::string(300, '0') + "5", 5),
        first_field("+5+" + std::string(197, '7'), 5), // 199 characters count
        {"+5+" + std::string(198, '7') + ' ' + last + good, {{0, 1, 2, 3, 4, 5, 6}}},
        first_field(std::string(198, '0') + "5", 5), // without a sign, zeros count too
        {std::string(199, '0') + "5 " + last + good, {{0, 1, 2, 3, 4, 5, 6}}},
        {"+2147483648 " + last + good, {{0, 1, 2, 3, 4, 5, 6}}},
        {"+9 +9 +9 +9 +9 -2147483649\r" + good, {{0, 1, 2, 3, 4, 5, 6}}},
    });
}

} // namespace
