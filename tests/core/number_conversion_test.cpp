#include "core/NumberConversion.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <utility>

namespace {

using locale_independent::atof;
using locale_independent::wsprintfA;

constexpr double highest = std::numeric_limits<double>::max();

void expect_reads(const std::string& text, double value) {
    // Bit by bit, so that the sign of a zero counts.
    EXPECT_EQ(std::bit_cast<std::uint64_t>(atof(text.c_str())), std::bit_cast<std::uint64_t>(value))
        << text.substr(0, 40) << " reads as " << atof(text.c_str());
}

TEST(NumberConversion, readsWhatRegistriesAndMachinesHold) {
    using Case = std::pair<const char*, double>;
    for (const auto& [text, value] :
         {Case{"1.5", 1.5}, Case{"1.500000", 1.5}, Case{"100.", 100}, Case{"0.", 0},
          Case{"-314150.", -314150}, Case{"0.3333333333", 0.3333333333}, Case{"1.e-005", 1e-5},
          Case{"5.e-02", 0.05}, Case{"1.234567890123456e+015", 1.234567890123456e15},
          Case{"-2.5E3", -2500}, Case{"+7", 7}, Case{" \t\r\n\v\f12", 12}, Case{"-2000", -2000},
          Case{".5", 0.5}, Case{"-.5", -0.5}, Case{"007", 7}, Case{"-0", -0.0}}) {
        expect_reads(text, value);
    }
}

TEST(NumberConversion, stopsWhereTheNumberEnds) {
    for (const char* text : {"1", "1e", "1e+", "1E-x", "1-1", "1.0.5", "1,5", "1d5", "1 5", "1x"}) {
        expect_reads(text, 1);
    }
    for (const char* text : {"", " ", "-", "+", ".", "-.", ".e5", "e5", "X100", "+-1", "-+1", "--1",
                             "- 1", "0x10", "inf", "-inf", "nan", "Infinity"}) {
        expect_reads(text, 0);
    }
    EXPECT_EQ(atof(nullptr), 0);
}

TEST(NumberConversion, tellsTooLargeFromTooSmall) {
    const std::string zeros(400, '0');
    const std::string nines(40, '9');
    for (const auto& text : {std::string("1e309"), "1" + zeros, "1" + zeros + ".5rest.e-999",
                             "0.0001e" + nines, "." + zeros + "1e+" + nines, "1" + zeros + "e-1"}) {
        expect_reads(text, HUGE_VAL);
        expect_reads("-" + text, -HUGE_VAL);
    }
    for (const auto& text : {std::string("1e-400"), "." + zeros + "1", "1000e-" + nines,
                             "1" + zeros + "e-800", "0." + zeros + "1e5 e999", "0e" + nines}) {
        expect_reads(text, 0.0);
        expect_reads("-" + text, -0.0);
    }
    expect_reads("1" + zeros + "e-400", 1);
    expect_reads("." + zeros + "1e401", 1);
    expect_reads("4.9e-324", std::numeric_limits<double>::denorm_min());
}

TEST(NumberConversion, readsBackEveryBit) {
    std::mt19937_64 random(1);
    for (int count = 0; count < 20000; ++count) {
        const auto any = std::bit_cast<double>(random());
        // Every other number is a coordinate.
        const double value = count % 2 ? any : std::remainder(any, 1e7);
        if (!std::isfinite(value)) {
            continue;
        }
        char text[400];
        for (const auto format : {std::chars_format::general, std::chars_format::scientific,
                                  std::chars_format::fixed}) {
            *std::to_chars(text, std::end(text), value, format).ptr = '\0';
            expect_reads(text, value);
        }
        *std::to_chars(text, std::end(text), value, std::chars_format::general, 17).ptr = '\0';
        expect_reads(text, value);
    }
}

std::string written(double value) {
    char buffer[318];
    const int length = locale_independent::sprintf(buffer, "%lf", value);
    EXPECT_EQ(std::string(buffer).size(), static_cast<std::size_t>(length));
    return buffer;
}

TEST(NumberConversion, writesSixDecimals) {
    EXPECT_EQ(written(1.5), "1.500000");
    EXPECT_EQ(written(-0.0000016), "-0.000002");
    EXPECT_EQ(written(1e20), "100000000000000000000.000000");
    EXPECT_EQ(written(-highest).size(), 317U);
    char buffer[64];
    locale_independent::sprintf(buffer, "x=%f mm, %lf%%", 0.25, -2.0);
    EXPECT_STREQ(buffer, "x=0.250000 mm, -2.000000%");
}

TEST(NumberConversion, writesSignificantDigits) {
    using Case = std::tuple<double, int, const char*>;
    for (const auto& [value, digits, text] :
         {Case{1.5, 16, "1.5"}, Case{100, 10, "100."}, Case{0, 16, "0."}, Case{-0.1, 16, "-0.1"},
          Case{1.0 / 3, 3, "0.333"}, Case{0.05, 16, "5.e-002"}, Case{-314150, 7, "-314150."},
          Case{9999.6, 4, "1.e+004"}, Case{0.09996, 3, "0.1"}, Case{9999.4, 4, "9999."},
          Case{-1.25e-300, 16, "-1.25e-300"}, Case{highest, 3, "1.8e+308"},
          Case{20, 1, "2.e+001"}}) {
        char buffer[25];
        EXPECT_STREQ(locale_independent::_gcvt(value, digits, buffer), text);
    }
}

TEST(NumberConversion, writesWholeNumbersIntoALimitedBuffer) {
    char buffer[1024];
    EXPECT_EQ(wsprintfA(buffer, "COM%d:", 12), 6);
    EXPECT_STREQ(buffer, "COM12:");
    wsprintfA(buffer, "%d%%%d", std::numeric_limits<int>::min(), 0);
    EXPECT_STREQ(buffer, "-2147483648%0");
    const char* unknown = "%q%d%";
    wsprintfA(buffer, unknown, 5);
    EXPECT_STREQ(buffer, "q5");
    const std::string format = std::string(1021, '.') + "%d";
    EXPECT_EQ(wsprintfA(buffer, format.c_str(), 12345), 1023);
    EXPECT_STREQ(buffer + 1021, "12");
}

} // namespace
