// Setting, getting and deleting entries.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "comma_locale.h"
#include "expect_errors.h"
#include "failing_malloc.h"
#include "platform/last_error.h"
#include "support/mini_data.h"

namespace wavo {
namespace {

using diagnostics::Service;
using namespace std::string_literals;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FailingMalloc;
using ::testing::IsEmpty;

constexpr char kStore[] = "MIniDataT<struct MIniDataCaseSensitiveCompare>";

class MiniDataEntries : public ::testing::Test {
 protected:
    std::string Value(const std::string& section, const std::string& name) const {
        std::string value;
        return m_store.GetStringEntry(section, name, value) ? value : "(missing)";
    }

    MIniData m_store;
    const CollectReports m_traces{Service::kErrorTrace};
};

TEST_F(MiniDataEntries, SettersMakeSectionsAndEntriesInTheOrderOfTheCalls) {
    EXPECT_TRUE(m_store.SetStringEntry("B", "text", "some words"));
    EXPECT_TRUE(m_store.SetLongEntry("A", "n", -12));
    EXPECT_TRUE(m_store.SetDoubleEntry("B", "d", 0.5));
    EXPECT_TRUE(m_store.SetStringEntry("A", "empty", ""));
    EXPECT_EQ(m_store.Content(), "[B]\r\ntext=some words\r\nd=0.5\r\n[A]\r\nn=-12\r\nempty=\r\n");
    EXPECT_TRUE(m_store.IsNew());
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(MiniDataEntries, SettingKeepsWhatStandsBeforeTheValue) {
    ASSERT_TRUE(m_store.SetContent("[A]\n  x   =   1  \n\ty=2\nz =3\n"));
    EXPECT_TRUE(m_store.SetLongEntry("A", "x", 55));
    EXPECT_TRUE(m_store.SetStringEntry("A", "y", " b "));
    EXPECT_TRUE(m_store.SetLongEntry("A", "z", 4));
    EXPECT_EQ(m_store.Content(), "[A]\r\n  x   =   55\r\n\ty= b \r\nz =4\r\n");
    EXPECT_EQ(Value("A", "y"), " b ");
    // Behind a = that is set off, blanks around a value would be lost.
    EXPECT_TRUE(m_store.SetStringEntry("A", "x", " c "));
    EXPECT_EQ(m_store.Content(), "[A]\r\nx= c \r\n\ty= b \r\nz =4\r\n");
    EXPECT_EQ(Value("A", "x"), " c ");
}

TEST_F(MiniDataEntries, EveryValueReadsBackToTheByte) {
    std::mt19937 random(3);
    std::vector<std::string> values = {"", " ", "\t", " x", "x ", "=", " = ", ";", "[A]", "\"q\""};
    for (int i = 0; i < 200; ++i) {
        std::string value;
        for (std::size_t n = random() % 30; n > 0; --n) {
            value += static_cast<char>(random() % 4 == 0 ? ' ' : 1 + random() % 255);
        }
        std::erase(value, '\r');
        std::erase(value, '\n');
        values.push_back(value);
    }
    ASSERT_TRUE(m_store.SetContent("[A]\nspaced = 1\n"));
    for (const std::string& value : values) {
        ASSERT_TRUE(m_store.SetStringEntry("A", "spaced", value));
        ASSERT_TRUE(m_store.SetStringEntry("A", "plain", value));
        ASSERT_EQ(Value("A", "spaced"), value);
        MIniData read;
        ASSERT_TRUE(read.SetContent(m_store.Content()));
        std::string read_value;
        ASSERT_TRUE(read.GetStringEntry("A", "spaced", read_value));
        ASSERT_EQ(read_value, value);
        ASSERT_TRUE(read.GetStringEntry("A", "plain", read_value));
        ASSERT_EQ(read_value, value);
    }
}

TEST_F(MiniDataEntries, LongsAreWrittenInDecimal) {
    EXPECT_TRUE(m_store.SetLongEntry("A", "a", std::numeric_limits<long>::min()));
    EXPECT_TRUE(m_store.SetLongEntry("A", "b", std::numeric_limits<long>::max()));
    EXPECT_TRUE(m_store.SetLongEntry("A", "c", 0));
    EXPECT_EQ(Value("A", "a"), std::to_string(std::numeric_limits<long>::min()));
    EXPECT_EQ(Value("A", "b"), std::to_string(std::numeric_limits<long>::max()));
    EXPECT_EQ(Value("A", "c"), "0");
}

/// What printf writes in the C locale.
std::string Printed(double value) {
    if (std::isnan(value)) {
        return std::signbit(value) ? "-nan" : "nan";  // not every printf tells the sign
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

TEST_F(MiniDataEntries, DoublesAreWrittenAsPrintfWritesThem) {
    ASSERT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    std::vector<double> values = {0.0,
                                  -0.0,
                                  1.0,
                                  0.1,
                                  10.0,
                                  123456789.0,
                                  1e16,
                                  1e17,
                                  1e22,
                                  1e-4,
                                  1e-5,
                                  std::numeric_limits<double>::max(),
                                  std::numeric_limits<double>::min(),
                                  std::numeric_limits<double>::denorm_min(),
                                  std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN()};
    std::mt19937_64 random(5);
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        values.push_back(value);
        values.push_back(std::ldexp(static_cast<double>(bits % 100000), -static_cast<int>(i % 20)));
    }
    for (const double value : values) {
        ASSERT_TRUE(m_store.SetDoubleEntry("A", "d", value));
        ASSERT_EQ(Value("A", "d"), Printed(value));
    }
}

TEST_F(MiniDataEntries, DoublesHaveADecimalPointInEveryLocale) {
    const testing::CommaLocale locale;
    if (!testing::CommaLocale::IsSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    ASSERT_EQ(Printed(0.5), "0,5") << "the locale is in force";
    EXPECT_TRUE(m_store.SetDoubleEntry("A", "d", 0.5));
    EXPECT_EQ(Value("A", "d"), "0.5");
    EXPECT_FALSE(m_store.SetDoubleEntry("A", ";d", 0.5));
    EXPECT_EQ(m_store.LastErrorText(),
              kStore + "::SetDoubleEntry(): cannot add comment as an entry: \";d=0.5\""s);
}

TEST_F(MiniDataEntries, ANameThatWouldBeACommentIsRefused) {
    EXPECT_FALSE(m_store.SetDoubleEntry("A", ";d", 1.0 / 3.0));
    EXPECT_FALSE(m_store.SetLongEntry("A", " #n", 5));
    EXPECT_FALSE(m_store.SetStringEntry("A", "*s", "v"));
    EXPECT_FALSE(m_store.SetStringEntry("A", "/s", "v"));
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre(kStore + "::SetDoubleEntry(): cannot add comment as an entry: \";d=0.333333\""s,
                    kStore + "::SetLongEntry(): cannot add comment as an entry: \" #n=5\""s,
                    kStore + "::SetStringEntry(): cannot add comment as an entry: \"*s=v\""s,
                    kStore + "::SetStringEntry(): cannot add comment as an entry: \"/s=v\""s));
    EXPECT_FALSE(m_store.HasSection("A")) << "nothing was made on the way";
}

TEST_F(MiniDataEntries, WhatWouldNotReadBackIsRefused) {
    for (const char* const name : {"", " ", " x", "x\t", "a=b", "[x", "a\nb", "a\rb"}) {
        EXPECT_FALSE(m_store.SetStringEntry("A", name, "v")) << name;
        EXPECT_EQ(m_store.LastErrorText(),
                  kStore + "::SetStringEntry(): cannot add an entry that would not read back: \""s +
                      name + "=v\"");
    }
    EXPECT_FALSE(m_store.SetStringEntry("A", "x", "two\nlines"));
    EXPECT_FALSE(m_store.SetStringEntry("A", "x", "two\rlines"));
    EXPECT_FALSE(m_store.SetStringEntry("A", "x", std::string(MIniData::kLongestLine, 'v')));
    EXPECT_EQ(m_store.Content(), "");
    EXPECT_TRUE(m_store.SetStringEntry("A", "x", std::string(MIniData::kLongestLine - 2, 'v')));
    MIniData read;
    EXPECT_TRUE(read.SetContent(m_store.Content()));
}

TEST_F(MiniDataEntries, ASectionThatWouldNotReadBackIsRefused) {
    for (const char* const name : {" A", "A ", "A]B", "A\nB"}) {
        EXPECT_FALSE(m_store.SetDoubleEntry(name, "x", 1));
    }
    EXPECT_THAT(m_traces.Texts(), ::testing::Each("MIniData::SetDoubleEntry(): add_new_section() "
                                                  "failed"));
    EXPECT_FALSE(m_store.SetLongEntry("A]", "x", 1));
    EXPECT_FALSE(m_store.SetStringEntry("A]", "x", "1"));
    EXPECT_EQ(m_traces.Texts()[4], "MIniData::SetLongEntry(): add_new_section() failed");
    EXPECT_EQ(m_traces.Texts()[5], "MIniData::SetStringEntry(): add_new_section() failed");
    EXPECT_THAT(m_store.SectionNames(), IsEmpty());
}

TEST_F(MiniDataEntries, AStoreDoesNotGrowBeyondWhatItWouldRead) {
    const std::string value(MIniData::kLongestLine - 10, 'v');
    int fitted = 0;
    while (fitted < 20 && m_store.SetStringEntry("A", "x" + std::to_string(fitted), value)) {
        ++fitted;
    }
    EXPECT_EQ(fitted, 16);
    EXPECT_EQ(m_store.LastErrorText(), "more than 16777216 bytes");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MIniDataSectionT::SetStringEntry(): add_new_entry() failed"));
    MIniData read;
    EXPECT_TRUE(read.SetContent(m_store.Content()));
}

TEST_F(MiniDataEntries, WithoutMemorySettersFailAndTheStoreStaysAsItWas) {
    ASSERT_TRUE(m_store.SetContent("[A]\nx=1\n"));
    const std::string before = m_store.Content();
    {
        const std::string value(100000, 'v');
        const std::string section(100000, 's');
        const FailingMalloc no_memory(value.size());
        EXPECT_FALSE(m_store.SetStringEntry("A", "y", value));
        EXPECT_FALSE(m_store.SetStringEntry(section, "y", "1"));
        EXPECT_FALSE(m_store.SetStringEntry("A", "x", value));
    }
    EXPECT_EQ(m_store.Content(), before);
    EXPECT_EQ(Value("A", "x"), "1");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MIniDataSectionT::SetStringEntry(): add_new_entry() failed",
                            "MIniData::SetStringEntry(): add_new_section() failed",
                            "MIniDataSectionT::SetStringEntry(): cannot change entry \"x\""));
    EXPECT_THAT(m_store.LastErrorText(), "out of memory (" + platform::ErrorText(ENOMEM) + ")");
}

TEST_F(MiniDataEntries, WithoutMemoryForAnIndexEntriesAreFoundAllTheSame) {
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(m_store.SetLongEntry("A", "x" + std::to_string(i), i));
        ASSERT_TRUE(m_store.SetLongEntry("B", "x" + std::to_string(i), -i));
    }
    const FailingMalloc no_memory(1024);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Value("A", "x" + std::to_string(i)), std::to_string(i));
        EXPECT_EQ(Value("B", "x" + std::to_string(i)), std::to_string(-i));
    }
}

TEST_F(MiniDataEntries, DeletingTakesTheEntryOutAndNothingElse) {
    ASSERT_TRUE(m_store.SetContent("[A]\n;c\nx=1\n \ny=2\n[B]\nx=3\n"));
    EXPECT_TRUE(m_store.DeleteEntry("A", "x"));
    EXPECT_EQ(m_store.Content(), "[A]\r\n;c\r\n \r\ny=2\r\n[B]\r\nx=3\r\n");
    EXPECT_EQ(Value("A", "x"), "(missing)");
    EXPECT_TRUE(m_store.SetLongEntry("A", "x", 9)) << "and can be made again";
    EXPECT_EQ(m_store.Content(), "[A]\r\n;c\r\n \r\ny=2\r\nx=9\r\n[B]\r\nx=3\r\n");
    EXPECT_TRUE(m_store.DeleteSection("A"));
    EXPECT_FALSE(m_store.DeleteSection("A"));
    EXPECT_EQ(m_store.Content(), "[B]\r\nx=3\r\n");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(MiniDataEntries, DeletingWhatIsNotThereIsReported) {
    ASSERT_TRUE(m_store.SetContent("[A]\nx=1\n[" + std::string(50, 's') + "]\n"));
    EXPECT_FALSE(m_store.DeleteEntry("B" + std::string(50, 'b'), "x"));
    EXPECT_FALSE(m_store.DeleteEntry("A", "FadeOutTime"));
    EXPECT_FALSE(m_store.DeleteEntry(std::string(50, 's'), std::string(50, 'e')));
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre("MIniData::DeleteEntry(): section \"B" + std::string(39, 'b') + "\" not found",
                    "MIniData::DeleteEntry(): MIniDataSectionT::DeleteEntry() failed "
                    "(\"A\",\"FadeOutTime\")",
                    "MIniData::DeleteEntry(): MIniDataSectionT::DeleteEntry() failed (\"" +
                        std::string(30, 's') + "\",\"" + std::string(30, 'e') + "\")"));
}

TEST_F(MiniDataEntries, ReplacingTheContentReadsItAsAFile) {
    EXPECT_TRUE(m_store.SetContent("\xEF\xBB\xBF[A]\rx=1\n\n;c"));
    EXPECT_EQ(m_store.Content(), "[A]\r\nx=1\r\n;c\r\n");
    EXPECT_TRUE(m_store.IsValid());
    EXPECT_FALSE(m_store.SetContent("[A\n"));
    EXPECT_EQ(m_store.LastErrorText(), "no matching ']' found in \"[A\"");
    EXPECT_FALSE(m_store.SetContent("\xFF\xFE["));
    EXPECT_FALSE(m_store.SetContent(";" + std::string(MIniData::kLongestLine, 'x')));
    EXPECT_EQ(m_store.Content(), "");
    EXPECT_FALSE(m_store.IsValid());
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre(
            "MIniData::parse_line(): no matching ']' found in \"[A\"",
            "MIniData::SetContent(): parse_line([A) failed",
            "MIniData::SetContent(\"\"): UTF16/32 Unicode format not supported",
            "MIniData::parse_line(): more than 1048576 bytes in a line, or 16777216 in all"));
}

TEST_F(MiniDataEntries, LinesAreDestroyedThroughTheirBase) {
    EXPECT_TRUE(std::has_virtual_destructor_v<MIniDataLine>);
    EXPECT_TRUE((std::is_base_of_v<MIniDataLine, MIniDataEntry>));
}

}  // namespace
}  // namespace wavo
