// Fields and values of one line of text.
#include "master/pipe/number_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The values of a line; the fault in words where there is one.
std::string Parsed(std::string_view line, Separator separator, std::size_t count) {
    std::vector<double> values(count);
    const ParsedLine parsed = ParseLine(line, separator, values);
    switch (parsed.fault) {
        case LineFault::kNone:
            break;
        case LineFault::kTooFewFields:
            return "few " + std::to_string(parsed.fields);
        case LineFault::kTooManyFields:
            return "many " + std::to_string(parsed.fields);
        case LineFault::kNoNumber:
            return "bad " + std::string(parsed.bad_field);
    }
    std::string text;
    for (const double value : values) {
        char number[32];
        std::snprintf(number, sizeof number, "%g", value);
        text.append(text.empty() ? "" : " ").append(std::isnan(value) ? "nan" : number);
    }
    return text;
}

TEST(NumberLine, SeparatorIsFoundByTheFirstThatOutranks) {
    EXPECT_EQ(FindSeparator("1 2 3"), Separator::kBlank);
    EXPECT_EQ(FindSeparator("1\t2 3"), Separator::kTab);
    EXPECT_EQ(FindSeparator("1, 2, 3"), Separator::kComma);
    EXPECT_EQ(FindSeparator("1,5; 2,5"), Separator::kSemicolon);
    EXPECT_EQ(FindSeparator("1,5\t2,5"), Separator::kTab);
    EXPECT_EQ(FindSeparator("1"), Separator::kBlank);
    EXPECT_EQ(FindSeparator(""), Separator::kBlank);
}

TEST(NumberLine, FieldsAreCutAndTrimmed) {
    EXPECT_THAT(SplitFields(" a , b b,,c", Separator::kComma), ElementsAre("a", "b b", "", "c"));
    EXPECT_THAT(SplitFields("  a \t b  ", Separator::kBlank), ElementsAre("a", "b"));
    EXPECT_THAT(SplitFields("a;", Separator::kSemicolon), ElementsAre("a", ""));
    EXPECT_THAT(SplitFields("", Separator::kBlank), ElementsAre(""));
}

TEST(NumberLine, ValuesAndMissingValues) {
    EXPECT_EQ(Parsed("1 -2.5 +3e2", Separator::kBlank, 3), "1 -2.5 300");
    EXPECT_EQ(Parsed("  1   2  ", Separator::kBlank, 2), "1 2");
    EXPECT_EQ(Parsed("1,,nan,NaN", Separator::kComma, 4), "1 nan nan nan");
    EXPECT_EQ(Parsed(" 1 ; ; 2 ", Separator::kSemicolon, 3), "1 nan 2");
    EXPECT_EQ(Parsed(".5\t5.\t-.25", Separator::kTab, 3), "0.5 5 -0.25");
    EXPECT_EQ(Parsed("", Separator::kBlank, 1), "nan");
    EXPECT_EQ(Parsed("   ", Separator::kBlank, 1), "nan");
}

TEST(NumberLine, ADecimalCommaIsOneWhereCommasDoNotSeparate) {
    EXPECT_EQ(Parsed("1,5;-2,25;3", Separator::kSemicolon, 3), "1.5 -2.25 3");
    EXPECT_EQ(Parsed("1,5\t2", Separator::kTab, 2), "1.5 2");
    EXPECT_EQ(Parsed("1,5,2;3", Separator::kSemicolon, 2), "bad 1,5,2");
}

TEST(NumberLine, WrongNumbersOfFields) {
    EXPECT_EQ(Parsed("1 2", Separator::kBlank, 3), "few 2");
    EXPECT_EQ(Parsed("", Separator::kBlank, 3), "few 1");
    EXPECT_EQ(Parsed("1,2,3,", Separator::kComma, 3), "many 4");
    EXPECT_EQ(Parsed("1,2,3,4,5", Separator::kComma, 3), "many 5");
}

TEST(NumberLine, WhatIsNoNumber) {
    for (const char* field : {"x", "1x", "--1", "+-1", "1.2.3", "0x10", "inf", "-inf", "1e999",
                              "1 2", "-", ".", "e5", "1e", "\x01"}) {
        EXPECT_EQ(Parsed(std::string("1,") + field + ",2", Separator::kComma, 3),
                  std::string("bad ") + field);
        EXPECT_FALSE(IsValue(field, Separator::kComma)) << field;
    }
}

TEST(NumberLine, EveryValueIsTheNearestDouble) {
    std::mt19937_64 random(7);
    std::vector<double> value(1);
    for (int i = 0; i < 200000; ++i) {
        char text[64];
        const double magnitude = std::pow(10.0, static_cast<double>(random() % 40) - 20.0);
        const double number = (static_cast<double>(random()) / 1e19 - 0.9) * magnitude;
        const int precision = static_cast<int>(random() % 19);
        std::snprintf(text, sizeof text, i % 2 == 0 ? "%.*f" : "%.*g", precision, number);
        double nearest = 0.0;
        std::from_chars(text, text + std::strlen(text), nearest);
        ASSERT_EQ(ParseLine(text, Separator::kBlank, value).fault, LineFault::kNone) << text;
        ASSERT_EQ(std::memcmp(value.data(), &nearest, sizeof nearest), 0) << text;
    }
}

}  // namespace
}  // namespace wavo::master
