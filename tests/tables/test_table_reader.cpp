#include "tables/table_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "comma_locale.h"
#include "gzipped.h"
#include "temporary_folder.h"

namespace wavo::tables {
namespace {

using ::testing::ElementsAre;
using testing::Gzipped;
using ::testing::IsEmpty;
using Row = TableReader::Row;
using Texts = std::vector<std::string>;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

std::unique_ptr<TableReader> Opened(const std::string& text) {
    auto reader = TableReader::Open(TableBytes::Of(text));
    EXPECT_TRUE(reader) << reader.Why().text;
    return reader ? std::move(*reader) : nullptr;
}

/// All that a table holds, and what was wrong, in words.
struct Table {
    Texts names;
    std::vector<std::vector<double>> rows;
    Texts faults;
    std::string end;
};

Table Read(TableReader& reader, std::size_t pieces = 0) {
    Table table;
    auto names = reader.ReadNames(1'000'000);
    if (!names) {
        table.faults.push_back(names.Why().text);
        return table;
    }
    table.names = *names;
    std::vector<double> values(table.names.size());
    for (;;) {
        if (pieces > 0) {
            reader.Allow(pieces);
        }
        switch (reader.Next(values)) {
            case Row::kValues:
                table.rows.push_back(values);
                break;
            case Row::kFault:
                table.faults.push_back(FaultText(reader.Fault(), table.names));
                break;
            case Row::kLater:
                break;
            case Row::kEnd:
                table.end = reader.Bytes().EndText();
                return table;
        }
    }
}

Table Read(const std::string& text) {
    const auto reader = Opened(text);
    return reader ? Read(*reader) : Table();
}

MATCHER_P(Is, expected, "") {
    return (std::isnan(arg) && std::isnan(expected)) || arg == expected;
}

TEST(TableReader, FindsSeparatorNamesAndDecimalPoint) {
    const struct {
        std::string text;
        Texts names;
        std::vector<double> row;
    } rows[] = {
        {"a,b\n1.5,2\n", {"a", "b"}, {1.5, 2}},
        {"a;b\n1,5;2\n", {"a", "b"}, {1.5, 2}},
        {"a,x;b,y\n1.5;2\n", {"a,x", "b,y"}, {1.5, 2}},
        {"a,\"b;c\"\n1.5,2\n", {"a", "b;c"}, {1.5, 2}},
        {"a\tb\n1,5\t-2e3\n", {"a", "b"}, {1.5, -2000}},
        {"a b\n1.5 2\n", {"a", "b"}, {1.5, 2}},
        {"  a   b  \n\n  1,5\t 2  \n", {"a", "b"}, {1.5, 2}},
        {"feed rate\n1.5\n", {"feed rate"}, {1.5}},
        {"a\n1,5\n", {"a"}, {1.5}},
        {"1,2\n3,4\n", {"column 1", "column 2"}, {1, 2}},
        {"1.5 2\n", {"column 1", "column 2"}, {1.5, 2}},
        {"7\n", {"column 1"}, {7}},
        {"\"a,b\",\"c\"\"d\"\n\"1,5\",\" 2 \"\n", {"a,b", "c\"d"}, {1.5, 2}},
        {"5\",b;c\n1;2\n", {"5\",b", "c"}, {1, 2}},
        {"\xEF\xBB\xBF\r\n a , b\r\n\r\n 1 ,\t2\r\n", {"a", "b"}, {1, 2}},
        {"a,b\r1,2\r", {"a", "b"}, {1, 2}},
        {"a,b\n+1,+.5", {"a", "b"}, {1, 0.5}},
        {"a,b\n-inf,NaN\n", {"a", "b"}, {-std::numeric_limits<double>::infinity(), kNone}},
    };
    for (const auto& row : rows) {
        const Table table = Read(row.text);
        EXPECT_EQ(table.names, row.names) << row.text;
        EXPECT_THAT(table.faults, IsEmpty()) << row.text;
        ASSERT_FALSE(table.rows.empty()) << row.text;
        ASSERT_EQ(table.rows[0].size(), row.row.size());
        for (std::size_t i = 0; i < row.row.size(); ++i) {
            EXPECT_THAT(table.rows[0][i], Is(row.row[i])) << row.text;
        }
    }
}

TEST(TableReader, EmptyFieldsHaveNoValue) {
    const Table table = Read("a,b,c\n,2,\n,,\n1,,3\n");
    EXPECT_THAT(table.faults, IsEmpty());
    EXPECT_THAT(table.rows, ElementsAre(ElementsAre(Is(kNone), 2.0, Is(kNone)),
                                        ElementsAre(Is(kNone), Is(kNone), Is(kNone)),
                                        ElementsAre(1.0, Is(kNone), 3.0)));
}

TEST(TableReader, TellsLineAndColumnOfWhatItCannotRead) {
    const struct {
        std::string text;
        std::string fault;
    } rows[] = {
        {"a,b\n1,2\n1,x\n", "line 3, column 2 \"b\": \"x\" is not a number"},
        {"a,b\n\n\r\n1,2\n1\n", "line 5: 1 field instead of 2"},
        {"a,b\n1,2,3\n", "line 2: 3 fields instead of 2"},
        {"a,b\n1,x,3\n", "line 2: 3 fields instead of 2"},
        {"a,b\n\"1,2\n", "line 2: 1 field instead of 2"},
        {"a,b\n1,\"2\n", "line 2, column 2 \"b\": \"2\" does not end with its quotation mark"},
        {"a,b\n1,\"2\"3\n", "line 2, column 2 \"b\": \"2\" does not end with its quotation mark"},
        {"a;b\n1,5;2\n1.5;2\n", "line 3, column 1 \"a\": \"1.5\" is not a number"},
        {"a;b\n1.5;2\n1.234,5;2\n", "line 3, column 1 \"a\": \"1.234,5\" is not a number"},
        {"a\n0x10\n", "line 2, column 1 \"a\": \"0x10\" is not a number"},
        {"a\n1e999\n", "line 2, column 1 \"a\": \"1e999\" is not a number"},
        {std::string("a,b\n1,2\n1,\0\n", 12), "line 3, column 2 \"b\": \"?\" is not a number"},
        {std::string("a\0,b\n1,2\n", 9), "line 1: there is a zero byte: this is no text"},
        {"a,\"b\n", "line 1, column 2: \"b\" does not end with its quotation mark"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(Read(row.text).faults, ElementsAre(row.fault)) << row.text;
    }
    EXPECT_EQ(TableReader::Open(TableBytes::Of("\xFF\xFE"
                                               "a"))
                  .Why()
                  .text,
              "the text is UTF-16; save it as UTF-8");
}

TEST(TableReader, ReadsOnBehindALineThatItCannotRead) {
    const Table table = Read("a,b\n1,2\nx\n3,4\n5,y\n6,7");
    EXPECT_THAT(table.rows, ElementsAre(ElementsAre(1, 2), ElementsAre(3, 4), ElementsAre(6, 7)));
    EXPECT_EQ(table.faults.size(), 2U);
}

TEST(TableReader, TablesWithoutLinesAreEmpty) {
    for (const char* text : {"", "\n", " \r\n\r\n", "\xEF\xBB\xBF"}) {
        EXPECT_THAT(Read(text).names, IsEmpty());
        EXPECT_THAT(Read(text).rows, IsEmpty());
    }
    EXPECT_THAT(Read("a,b").names, ElementsAre("a", "b"));
    EXPECT_THAT(Read("a,b").rows, IsEmpty());
}

TEST(TableReader, ASeparatorMayStandBehindTheLastField) {
    const Table table = Read("a;b\n1;2;\n3;4\n");
    EXPECT_THAT(table.faults, IsEmpty());
    EXPECT_EQ(table.rows.size(), 2U);
}

TEST(TableReader, ReadsWhatHalscopeSaves) {
    const Table labelled = Read(
        "Sampling period is 1000000 ns \n\njoint.0.pos-cmd +1.50000000000000 iocontrol.0.on "
        "+0.00000000000000 \njoint.0.pos-cmd +1.60000000000000 iocontrol.0.on +1.00000000000000 ");
    EXPECT_THAT(labelled.names, ElementsAre("joint.0.pos-cmd", "iocontrol.0.on"));
    EXPECT_THAT(labelled.rows, ElementsAre(ElementsAre(1.5, 0), ElementsAre(1.6, 1)));
    const std::string text = "Sampling period is 250000 nSec \n\nx +1.0 \n";
    EXPECT_DOUBLE_EQ(Opened(text)->Layout().cycle_time, 0.00025);
    const Table separated = Read("joint.0.pos-cmd;iocontrol.0.on\n1.5;0\n1.6;1\n");
    EXPECT_THAT(separated.names, ElementsAre("joint.0.pos-cmd", "iocontrol.0.on"));
    EXPECT_EQ(separated.rows.size(), 2U);
}

TEST(TableReader, ChosenColumnsAloneNeedToBeNumbers) {
    const std::string text = "a,remark,b\n1,hello,2\n3,\"a, b\",4\n";
    const auto reader = Opened(text);
    ASSERT_TRUE(reader->ReadNames(10));
    reader->Choose(std::vector<std::size_t>{2, 0});
    std::vector<double> values(2);
    EXPECT_EQ(reader->Next(values), Row::kValues);
    EXPECT_THAT(values, ElementsAre(2, 1));
    EXPECT_EQ(reader->Next(values), Row::kValues);
    EXPECT_THAT(values, ElementsAre(4, 3));
    EXPECT_EQ(reader->Next(values), Row::kEnd);
}

TEST(TableReader, ColumnsAreCountedBeforeTheyFillMemory) {
    std::string text(999'999, ',');
    text += "\n";
    EXPECT_EQ(Opened("a" + text)->ReadNames(1000).Why().text,
              "the table has more than 1000 columns");
    std::string names = "c0";
    std::string numbers = "0";
    for (int i = 1; i < 1'000'000; ++i) {
        names += ",c" + std::to_string(i);
        numbers += "," + std::to_string(i);
    }
    const std::string whole = names + "\n" + numbers + "\n";
    const auto reader = Opened(whole);
    const Table table = Read(*reader, 1);
    ASSERT_EQ(table.names.size(), 1'000'000U);
    EXPECT_EQ(table.names[999'999], "c999999");
    ASSERT_EQ(table.rows.size(), 1U);
    EXPECT_EQ(table.rows[0][999'999], 999'999.0);
}

TEST(TableReader, StepsGiveTheSameRows) {
    std::string text = "a,b\n";
    for (int i = 0; i < 100'000; ++i) {
        text += std::to_string(i) + "," + std::to_string(i * 0.5) + (i % 3 == 0 ? "\r\n" : "\n");
    }
    const auto at_once = Opened(text);
    const auto in_steps = Opened(text);
    const Table whole = Read(*at_once);
    EXPECT_EQ(whole.rows.size(), 100'000U);
    EXPECT_EQ(whole.rows, Read(*in_steps, 1).rows);
    ASSERT_TRUE(Opened(text)->ReadNames(2));
    const auto reader = Opened(text);
    ASSERT_TRUE(reader->ReadNames(2));
    reader->Allow(0);
    std::vector<double> values(2);
    int rows = 0;
    while (reader->Next(values) == Row::kValues) {
        ++rows;
    }
    EXPECT_LT(rows, 20'000);
    EXPECT_EQ(reader->Next(values), Row::kLater);
}

TEST(TableReader, FieldsThatAreTooLongAreTold) {
    const std::string longest(FieldCutter::kLongestField, 'x');
    const Table table = Read("a,b\n1," + longest + "\n" + longest + ",2\n1,\"" + longest + "\"\n" +
                             std::string(200'000, ' ') + "3," + std::string(200'000, ' ') + "4\n");
    ASSERT_EQ(table.faults.size(), 3U);
    EXPECT_EQ(table.faults[0],
              "line 2, column 2 \"b\": \"" + std::string(40, 'x') + "...\" is too long");
    EXPECT_THAT(table.rows, ElementsAre(ElementsAre(3, 4)));
    const Table blanks =
        Read("1 2\n3" + std::string(200'000, ' ') + "4" + std::string(200'000, ' ') + "\n5 6\n");
    EXPECT_THAT(blanks.rows.front(), ElementsAre(1, 2));
    EXPECT_THAT(blanks.rows.back(), ElementsAre(5, 6));
}

TEST(TableReader, GzipDataIsUnpackedOnTheWay) {
    std::string text = "a,b\n";
    for (int i = 0; i < 200'000; ++i) {
        text += "1,2\n";
    }
    const std::string packed = Gzipped(text) + Gzipped("3,4\n");
    const Table table = Read(packed);
    EXPECT_EQ(table.rows.size(), 200'001U);
    EXPECT_EQ(table.end, "");
    EXPECT_THAT(table.rows.back(), ElementsAre(3, 4));
}

TEST(TableReader, OfGzipDataThatIsCutOffTheWholeLinesAreRead) {
    std::string text = "a,b\n";
    for (int i = 0; i < 20'000; ++i) {
        text += std::to_string(i * i % 10007) + "," + std::to_string(i) + "\n";
    }
    const std::string packed = Gzipped(text);
    for (std::size_t size = 2; size < packed.size(); size += packed.size() / 50) {
        const std::string cut = packed.substr(0, size);
        const auto reader = Opened(cut);
        ASSERT_TRUE(reader);
        const Table table = Read(*reader);
        EXPECT_EQ(reader->Bytes().End(), BytesEnd::kCutOff);
        for (std::size_t i = 0; i < table.rows.size(); ++i) {
            ASSERT_EQ(table.rows[i][1], static_cast<double>(i));
        }
        EXPECT_THAT(table.faults, IsEmpty());
    }
    std::string damaged = packed;
    damaged[damaged.size() - 6] ^= 1;  // the checksum
    const auto reader = Opened(damaged);
    EXPECT_EQ(Read(*reader).end, "the gzip data is damaged or cut off");
    EXPECT_EQ(reader->Bytes().End(), BytesEnd::kDamaged);
}

TEST(TableReader, LocaleDoesNotMatter) {
    const testing::CommaLocale locale;
    if (!testing::CommaLocale::IsSet()) {
        GTEST_SKIP() << "there is no locale with a decimal comma here";
    }
    EXPECT_THAT(Read("a\n1.5\n").rows, ElementsAre(ElementsAre(1.5)));
}

TEST(TableBytes, FilesThatCannotBeReadAreNamed) {
    const testing::TemporaryFolder folder;
    const std::string missing = folder.File("missing.csv");
    EXPECT_EQ(TableBytes::Open(missing).Why().text, missing + ": no such file");
    EXPECT_EQ(TableBytes::Open(folder.path()).Why().text, folder.path() + ": cannot be read");
    const std::string path = folder.File("m\xC3\xA4schine.csv");
    std::ofstream(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary)
        << "a\n1\n";
    auto bytes = TableBytes::Open(path);
    ASSERT_TRUE(bytes);
    EXPECT_EQ((*bytes)->Size(), 4U);
    auto reader = TableReader::Open(std::move(*bytes));
    ASSERT_TRUE(reader);
    EXPECT_EQ(Read(**reader).rows.size(), 1U);
    EXPECT_EQ((*reader)->Bytes().Taken(), 4U);
}

}  // namespace
}  // namespace wavo::tables
