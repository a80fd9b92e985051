#include "tables/column_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace wavo::tables {
namespace {

using ::testing::ElementsAre;

TEST(ColumnTable, ReadsSeparatorsMissingValuesAndCycles) {
    const auto table = ParseColumns(
        "\xEF\xBB\xBF"
        "cycle; \"X\";Y\r\n5;1.5;nan\r\n\r\n8;;-2e-3\r\n9;+3;4\r\n");
    ASSERT_TRUE(table) << table.Why().text;
    EXPECT_THAT(table->names, ElementsAre("cycle", "X", "Y"));
    EXPECT_EQ(table->Lines(), 5U);
    EXPECT_THAT(table->Find("cycle"), ElementsAre(5, 6, 7, 8, 9));
    EXPECT_EQ(table->Find("X")[0], 1.5);
    EXPECT_TRUE(std::isnan(table->Find("X")[1]));
    EXPECT_TRUE(std::isnan(table->Find("X")[3]));
    EXPECT_EQ(table->Find("X")[4], 3.0);
    EXPECT_TRUE(table->Find("Z").empty());
    EXPECT_FALSE(table->Has("Z"));
}

TEST(ColumnTable, WithoutNamesColumnsAreNumbered) {
    const auto table = ParseColumns("1;2,5\n3;4,5\n");
    ASSERT_TRUE(table) << table.Why().text;
    EXPECT_THAT(table->names, ElementsAre("column 1", "column 2"));
    EXPECT_THAT(table->Find("column 2"), ElementsAre(2.5, 4.5));
}

TEST(ColumnTable, SaysWhatIsWrong) {
    const auto why = [](const std::string& text) {
        const auto table = ParseColumns(text);
        return table ? std::string() : table.Why().text;
    };
    EXPECT_EQ(why(""), "no names of columns in the first line");
    EXPECT_EQ(why("\n"), "no names of columns in the first line");
    EXPECT_EQ(why("X,Y\n"), "no lines of values");
    EXPECT_EQ(why("X,,Y\n"), "a column without a name");
    EXPECT_EQ(why("X,X\n1,2\n"), "two columns named X");
    EXPECT_EQ(why("X,Y\n1\n"), "line 2: 1 field instead of 2");
    EXPECT_EQ(why("X,Y\n1,2,\n"), "line 2: 3 fields instead of 2");
    EXPECT_EQ(why("X,Y\n1,2\n1,b\n"), "line 3, column 2 \"Y\": \"b\" is not a number");
    EXPECT_EQ(why("cycle,X\n4,1\n4,2\n"), "line 3: the cycle does not follow the one before");
    EXPECT_EQ(why("cycle,X\n4,1\n1e12,2\n"), "line 3: the cycle does not follow the one before");
    EXPECT_EQ(why("cycle,X\nnan,1\n"), "line 2: the cycle does not follow the one before");
    EXPECT_EQ(why(std::string("X,\0Y\n1,2\n", 9)), "line 1: there is a zero byte: this is no text");
    EXPECT_EQ(why(std::string("\x1f\x8b", 2)), "the gzip data is damaged or cut off");
}

}  // namespace
}  // namespace wavo::tables
