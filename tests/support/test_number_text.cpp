// Numbers as settings and graph files hold them.

#include "support/number_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wavo {
namespace {

using ::testing::Eq;
using ::testing::Optional;

constexpr double kLargest = std::numeric_limits<double>::max();

TEST(NumberText, IntegersEndWhereTheyCannotBeReadOn) {
    for (const auto& [text, value] : std::vector<std::pair<const char*, std::int32_t>>{
             {"0", 0},
             {"12", 12},
             {"-12", -12},
             {"+12", 12},
             {" \t12", 12},
             {"12abc", 12},
             {"12 13", 12},
             {"1.9", 1},
             {"2e5", 2},
             {"0x10", 0},
             {"007", 7},
             {"", 0},
             {" ", 0},
             {"-", 0},
             {"+", 0},
             {"--1", 0},
             {"+-1", 0},
             {"- 1", 0},
             {"abc", 0},
             {".5", 0},
             {"2147483647", INT32_MAX},
             {"2147483648", INT32_MAX},
             {"-2147483648", INT32_MIN},
             {"-2147483649", INT32_MIN},
             {"99999999999999999999999999", INT32_MAX},
             {"-99999999999999999999999999", INT32_MIN}}) {
        EXPECT_EQ(ReadInteger(text), value) << text;
    }
}

TEST(NumberText, UnsignedNumbersAreNotNegative) {
    for (const auto& [text, value] : std::vector<std::pair<const char*, std::uint32_t>>{
             {"0", 0},
             {"12x", 12},
             {"-1", 0},
             {"4294967295", UINT32_MAX},
             {"4294967296", UINT32_MAX},
             {"99999999999999999999999999", UINT32_MAX},
             {"", 0}}) {
        EXPECT_EQ(ReadUnsigned(text), value) << text;
    }
}

TEST(NumberText, WholeNumbersAreTheWholeText) {
    for (const auto& [text, value] :
         std::vector<std::pair<const char*, std::int32_t>>{{"0", 0},
                                                           {"-12", -12},
                                                           {"+12", 12},
                                                           {" 12 ", 12},
                                                           {"12\t", 12},
                                                           {"99999999999", INT32_MAX},
                                                           {"-99999999999", INT32_MIN}}) {
        EXPECT_THAT(ReadWholeNumber(text), Optional(value)) << text;
    }
    for (const char* const text : {"", " ", "abc", "12a", "1.0", "1 2", "0x10", "-", "1e3"}) {
        EXPECT_THAT(ReadWholeNumber(text), Eq(std::nullopt)) << text;
    }
}

TEST(NumberText, DoublesEndWhereTheyCannotBeReadOn) {
    for (const auto& [text, value] : std::vector<std::pair<const char*, double>>{
             {"0", 0.0},      {"1.5", 1.5},        {"-1.5", -1.5},   {"+1.5", 1.5},
             {" \n1.5", 1.5}, {".5", 0.5},         {"-.5", -0.5},    {"5.", 5.0},
             {"1.5mm", 1.5},  {"1,5", 1.0},        {"1e3", 1000.0},  {"1E-3", 0.001},
             {"1e", 1.0},     {"1e+", 1.0},        {"1ex", 1.0},     {"0x10", 0.0},
             {"1.2.3", 1.2},  {"10.000000", 10.0}, {"1e308", 1e308}, {"5e-324", 5e-324}}) {
        EXPECT_THAT(FindDouble(text), Optional(value)) << text;
        EXPECT_EQ(ReadDouble(text), value) << text;
    }
    for (const char* const text : {"", " ", "abc", ".", "-", "-.", "e5", ".e5", "inf", "-inf",
                                   "infinity", "nan", "nan(1)", "+-1", "--1", "- 1"}) {
        EXPECT_THAT(FindDouble(text), Eq(std::nullopt)) << text;
        EXPECT_EQ(ReadDouble(text), 0.0) << text;
    }
}

TEST(NumberText, WholeDoublesAreTheWholeText) {
    for (const auto& [text, value] : std::vector<std::pair<const char*, double>>{
             {"0", 0.0}, {"-1.5", -1.5}, {" 1.5\t", 1.5}, {"1e3", 1000.0}, {"5.", 5.0}}) {
        EXPECT_THAT(FindWholeDouble(text), Optional(value)) << text;
    }
    for (const char* const text :
         {"", " ", "abc", "1,5", "1.5mm", "1.2.3", "1e", "0x10", "1 2", "-", "inf"}) {
        EXPECT_THAT(FindWholeDouble(text), Eq(std::nullopt)) << text;
    }
    EXPECT_THAT(FindWholeDouble("1e400 "), Optional(kLargest));
}

TEST(NumberText, DoublesThatAreTooLargeAreTheLargest) {
    const std::string zeros(400, '0');
    for (const std::string& text :
         {std::string("1e309"), std::string("1.7976931348623159e308"),
          std::string("1e999999999999"), "1" + zeros, "1" + zeros + ".5", std::string("0.001e400"),
          "0." + zeros + "1e800", "1" + zeros + "e-50"}) {
        EXPECT_EQ(ReadDouble(text), kLargest) << text;
        EXPECT_EQ(ReadDouble("-" + text), -kLargest) << text;
    }
}

TEST(NumberText, DoublesThatAreTooSmallAreZero) {
    const std::string zeros(400, '0');
    for (const std::string& text : {std::string("1e-400"), std::string("1e-999999999999"),
                                    "0." + zeros + "1", "." + zeros + "1", "0." + zeros + "1e50",
                                    "1" + zeros + "e-800", std::string("1000e-400")}) {
        EXPECT_EQ(ReadDouble(text), 0.0) << text;
    }
    EXPECT_EQ(ReadDouble("0e999999999999"), 0.0);
    EXPECT_EQ(ReadDouble("0.000e400"), 0.0);
}

/// Numbers that are hard to round to six decimals: `count` of each kind but the first.
std::vector<double> HardNumbers(int count) {
    std::mt19937_64 random(20261121);
    std::vector<double> values = {0.0,
                                  5e-324,
                                  1e-7,
                                  0.5e-6,
                                  1.5e-6,
                                  2.5e-6,
                                  5e-7,
                                  1.0 / 3.0,
                                  0.9999995,
                                  999.9999995,
                                  1e15,
                                  1e22,
                                  1e300,
                                  123456.78901,
                                  kLargest,
                                  2.2e-308,
                                  4294967294.9999995,
                                  4294967295.0,
                                  4294967295.9999998};
    for (const double special :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        values.push_back(special);
    }
    // The first that is scaled no more, and its neighbours.
    for (const double edge : {1000.0, 1e6, 1e9, 4294967295.0, 4503599627.370496}) {
        values.push_back(std::nextafter(edge, 0.0));
        values.push_back(std::nextafter(edge, kLargest));
    }
    for (int i = 0; i < count; ++i) {
        // Any bits: all magnitudes, subnormal ones, infinities and what is no number.
        values.push_back(std::bit_cast<double>(random()));
        // Exact ties: odd multiples of 2^-7 have seven decimals and end in 5.
        values.push_back(static_cast<double>(random() % (1ULL << 39U) * 2 + 1) / 128.0);
        // As near to a tie as numbers come, on both sides, at all sizes that are scaled.
        const double tie = (static_cast<double>(random() >> (random() % 52 + 12)) + 0.5) / 1e6;
        values.push_back(tie);
        values.push_back(std::nextafter(tie, 0.0));
        values.push_back(std::nextafter(tie, kLargest));
        // What machines send: decimals, and their neighbours.
        const double decimal = static_cast<double>(random() % 10'000'000'000) / 1e6;
        values.push_back(decimal);
        values.push_back(std::nextafter(decimal, 0.0));
        values.push_back(static_cast<double>(random() >> 20U) / 1e7);
    }
    return values;
}

TEST(NumberText, SixDecimalsAsPrintfWritesThem) {
    const std::vector<double> values = HardNumbers(70'000);
    int compared = 0;
    for (const double value : values) {
        for (const double number : {value, -value}) {
            char expected[400];
            std::snprintf(expected, sizeof expected, "%.6f", number);
            if (std::isnan(number)) {  // not every printf tells its sign
                std::snprintf(expected, sizeof expected, "%snan", std::signbit(number) ? "-" : "");
            }
            ASSERT_EQ(FormatSixDecimals(number), expected);
            ++compared;
        }
    }
    EXPECT_GT(compared, 1'000'000);
}

TEST(NumberText, SixDecimalsStayWithinTheRoomThatTheyNeed) {
    for (const double number : HardNumbers(1000)) {
        std::array<char, kSixDecimalsRoom + 1> text;
        text.fill('#');
        char* const end = WriteSixDecimals(number, text.data());
        EXPECT_EQ(std::string(text.data(), end), FormatSixDecimals(number));
        EXPECT_EQ(text.back(), '#');
    }
}

}  // namespace
}  // namespace wavo
