#include <gtest/gtest.h>

#include <limits>

#include "ui/dialogs/properties_texts.h"

namespace wavo {
namespace {

TEST(PropertiesTexts, ScaleLinesBelowOneAreTheDefault) {
    const struct {
        const char* text;
        std::int32_t lines;
    } rows[] = {
        {"0", 5},
        {"-2", 5},
        {"abc", 5},
        {"", 5},
        {"1", 1},
        {"100", 100},
        {"12abc", 12},
        {" 7", 7},
        {"+4", 4},
        {"0x10", 5},
        {"2.9", 2},
        {"99999999999", std::numeric_limits<std::int32_t>::max()},
        {"-99999999999", 5},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseScaleLines(row.text, 5), row.lines) << row.text;
    }
    EXPECT_EQ(ParseScaleLines("0", 3), 3);
}

TEST(PropertiesTexts, FormatsOfTheExport) {
    EXPECT_EQ(FormatExportSettings({}), (ExportTexts{",", ".", "0x0d,0x0a", ""}));
    EXPECT_EQ(FormatExportSettings({"\n", '\t', ',', "/a/ü.txt"}),
              (ExportTexts{"0x09", ",", "0x0a", "/a/ü.txt"}));
    EXPECT_EQ(FormatExportSettings({";\n", ' ', '.', ""}),
              (ExportTexts{"0x20", ".", ";,0x0a", ""}));
    EXPECT_EQ(FormatExportSettings({"", '\xA7', '.', ""}), (ExportTexts{"\xA7", ".", "", ""}));
}

TEST(PropertiesTexts, Separators) {
    const struct {
        const char* text;
        char separator;
    } rows[] = {
        {"0x09", '\t'},   {";", ';'},     {"ab", ','},        {"", ','},      {"0x20", ' '},
        {" ", ' '},       {"0x3b", ';'},  {"0x3B", ';'},      {"0x9", '\t'},  {"0x", ','},
        {"0X09", ','},    {"0x0g", ','},  {"0x109", '\t'},    {"x", 'x'},     {"0", '0'},
        {",", ','},       {"0x2c", ','},  {"0x09,0x0a", ','}, {"0x09,", ','}, {" 0x09", ','},
        {"\xA7", '\xA7'}, {"0x00", '\0'}, {"\xC2\xA7", ','},  {"09", ','},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseExportTexts({row.text, ".", "0x0a", ""}).separator, row.separator)
            << row.text;
    }
}

TEST(PropertiesTexts, DecimalPoints) {
    const struct {
        const char* text;
        char point;
    } rows[] = {{".", '.'},  {",", ','},  {";", '.'},    {"", '.'},
                {"..", '.'}, {",,", '.'}, {"0x2c", '.'}, {" ", '.'}};
    for (const auto& row : rows) {
        EXPECT_EQ(ParseExportTexts({";", row.text, "0x0a", ""}).decimal_point, row.point)
            << row.text;
    }
}

TEST(PropertiesTexts, DecimalPointAndSeparatorAreComparedAsTheyWereRead) {
    const struct {
        const char* separator;
        const char* point;
        char read_separator;
        char read_point;
    } rows[] = {
        {",", ",", ',', '.'},    {".", ".", ',', '.'},
        {".", ",", '.', ','},    {"ab", ",", ',', '.'},  // the default separator meets the comma
        {".", "x", ',', '.'},                            // the default point meets the separator
        {"0x2c", ",", ',', '.'}, {"0x2e", ".", ',', '.'},
        {";", ",", ';', ','},    {",", ".", ',', '.'},
    };
    for (const auto& row : rows) {
        const ExportSettings read = ParseExportTexts({row.separator, row.point, "0x0a", ""});
        EXPECT_EQ(read.separator, row.read_separator) << row.separator << row.point;
        EXPECT_EQ(read.decimal_point, row.read_point) << row.separator << row.point;
    }
}

TEST(PropertiesTexts, EndsOfLine) {
    const struct {
        const char* text;
        const char* end_of_line;
    } rows[] = {
        {"0x0a", "\n"},
        {"0x0d,0x0a", "\r\n"},
        {"x", "x"},
        {";,0x0a", "\r\n"},
        {"", "\r\n"},
        {"0x3b,0x0a", ";\n"},
        {"0x0d, 0x0a", "\r\n"},
        {"0x0a,", "\r\n"},
        {",0x0a", "\r\n"},
        {"0xd,0xA", "\r\n"},
        {"lf", "\r\n"},
        {",", ","},
        {"0x0a,0x0a,0x0a", "\n\n\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseExportTexts({",", ".", row.text, ""}).end_of_line, row.end_of_line)
            << row.text;
    }
}

TEST(PropertiesTexts, ThePathIsTakenAsItStands) {
    for (const char* const path : {"", " ", "/no/such/folder/ü.txt", "a,b"}) {
        EXPECT_EQ(ParseExportTexts({",", ".", "0x0a", path}).data_file, path);
    }
}

TEST(PropertiesTexts, EverySeparatorSurvivesItsTextForm) {
    for (int code = 0; code <= 0xFF; ++code) {
        ExportSettings settings;
        settings.separator = static_cast<char>(code);
        settings.end_of_line = std::string(1, static_cast<char>(code));
        settings.decimal_point = code == ',' ? '.' : ',';
        EXPECT_EQ(ParseExportTexts(FormatExportSettings(settings)), settings) << code;
    }
}

}  // namespace
}  // namespace wavo
