// The view's settings file: what is written, what is read, and what every slip falls back to.

#include "settings/view_settings_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "graph/model/graph_ini_data.h"
#include "support/diagnostics.h"
#include "view_settings_fixture.h"

namespace wavo {
namespace {

using testing::CollectReports;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FailedToSave;
using ::testing::IsEmpty;
using testing::kBadColor;
using testing::kBadFont;
using testing::kBadFontName;
using testing::kOtherText;
using testing::OtherSettings;
using testing::ViewSettingsFile;

/// In place of a value: the entry is missing.
constexpr char kWithout[] = "(without)";

ViewSettings ReadStore(const MIniData& store) {
    ViewSettings settings;
    GetPropertiesFromIniData(store, settings);
    return settings;
}

/// The settings of a store that is in order but for one entry.
ViewSettings ReadWith(const char* section, const char* name, const std::string& value) {
    MIniData store;
    EXPECT_TRUE(PutPropertiesIntoIniData(DefaultViewSettings(), store));
    if (value == kWithout) {
        EXPECT_TRUE(store.DeleteEntry(section, name));
    } else {
        EXPECT_TRUE(store.SetStringEntry(section, name, value));
    }
    return ReadStore(store);
}

// First start.

TEST_F(ViewSettingsFile, AMissingFileGivesAllDefaultsAndACompleteFile) {
    const CollectReports traces(diagnostics::Service::kTrace);
    const CollectReports faults(diagnostics::Service::kErrorTrace);
    ViewSettings settings = OtherSettings();
    settings.trace_level = 4;
    ReadProperties(Path(), settings);
    ViewSettings defaults;
    defaults.export_settings.data_file = DefaultDataFile();
    EXPECT_EQ(settings, defaults);
    EXPECT_EQ(settings, DefaultViewSettings());
    EXPECT_EQ(Text(),
              "[BKCOLOR]\r\n"
              "red=0\r\n"
              "green=0\r\n"
              "blue=0\r\n"
              "[GRAPH_FONT]\r\n"
              "height=8\r\n"
              "name=System\r\n"
              "[SCALE_LINES]\r\n"
              "x=5\r\n"
              "y=3\r\n"
              "[AX_EDIT]\r\n"
              "ShowDialog=1\r\n"
              "[DATA_EXPORT]\r\n"
              "Separator=,\r\n"
              "DecimalPoint=.\r\n"
              "EndOfLine=0x0d,0x0a\r\n"
              "File=" +
                  DefaultDataFile() + "\r\n");
    EXPECT_THAT(traces.Texts(), ElementsAre("CWavoView::ReadProperties(): Reading ini. file [&s]"));
    EXPECT_THAT(faults.Texts(), IsEmpty());
    EXPECT_EQ(Read(), defaults);
}

TEST_F(ViewSettingsFile, ReadingTracesAtLevelOne) {
    Write(kOtherText);
    const CollectReports traces(diagnostics::Service::kTrace);
    _MTrace_SetLevel("default", 0);
    (void)Read();
    EXPECT_THAT(traces.Texts(), IsEmpty());
    _MTrace_SetLevel("default", 1);
    (void)Read();
    EXPECT_THAT(traces.Texts(), ElementsAre("CWavoView::ReadProperties(): Reading ini. file [&s]"));
}

TEST_F(ViewSettingsFile, AFirstStartThatCannotWriteStillGivesDefaults) {
    const std::string path = m_folder.File("no such folder/wavo.ini");
    ViewSettings settings = OtherSettings();
    const ExpectErrorLog expected({FailedToSave(path), kBadColor, kBadFont});
    ReadProperties(path, settings);
    EXPECT_EQ(settings, DefaultViewSettings());
}

TEST_F(ViewSettingsFile, AnEmptyFileIsNoFirstStart) {
    Write("");
    const ExpectErrorLog expected({kBadColor, kBadFont});
    EXPECT_EQ(Read(), DefaultViewSettings());
    EXPECT_EQ(Text(), "");
}

// Reading.

TEST_F(ViewSettingsFile, ReadsEveryField) {
    Write(std::string(kOtherText) + "[GENERAL]\nmtrace_level=4\n");
    ViewSettings expected = OtherSettings();
    expected.trace_level = 4;
    EXPECT_EQ(Read(), expected);
}

TEST_F(ViewSettingsFile, ReadingLeavesTheFileAlone) {
    const std::string text =
        "; mine\n[BKCOLOR]\nred=1\ngreen=2\nblue=3\n[GRAPH_FONT]\nheight=9\n"
        "name=Arial\n";
    Write(text);
    EXPECT_EQ(Read().background, 0x030201U);
    EXPECT_EQ(Text(), text);
}

TEST_F(ViewSettingsFile, WhatAnEarlierFileHeldDoesNotShowThrough) {
    Write("[BKCOLOR]\nred=1\ngreen=2\nblue=3\n[GRAPH_FONT]\nheight=9\nname=Arial\n");
    ViewSettings settings = OtherSettings();
    settings.font.italic = true;
    ReadProperties(Path(), settings);
    ViewSettings expected = DefaultViewSettings();
    expected.background = 0x030201U;
    expected.font.height = 9;
    expected.font.face = "Arial";
    EXPECT_EQ(settings, expected);
}

TEST_F(ViewSettingsFile, ColoursKeepTheirLowByte) {
    EXPECT_EQ(ReadWith("BKCOLOR", "red", "300").background, 44U);
    EXPECT_EQ(ReadWith("BKCOLOR", "green", "300").background, 44U << 8U);
    EXPECT_EQ(ReadWith("BKCOLOR", "blue", "511").background, 255U << 16U);
    EXPECT_EQ(ReadWith("BKCOLOR", "red", "-1").background, 255U);
    EXPECT_EQ(ReadWith("BKCOLOR", "red", " 12 ").background, 12U);
}

TEST_F(ViewSettingsFile, AColourThatIsNotCompleteIsBlack) {
    for (const char* const name : {"red", "green", "blue"}) {
        for (const char* const value : {kWithout, "", "x", "1.5", "0x10", "1 2", "12a"}) {
            SCOPED_TRACE(value);
            MIniData store;
            ViewSettings white;
            white.background = 0xFFFFFF;
            PutPropertiesIntoIniData(white, store);
            ASSERT_TRUE(value == std::string(kWithout)
                            ? store.DeleteEntry("BKCOLOR", name)
                            : store.SetStringEntry("BKCOLOR", name, value));
            const ExpectErrorLog expected({kBadColor});
            EXPECT_EQ(ReadStore(store).background, 0U);
        }
    }
}

TEST_F(ViewSettingsFile, AFontThatIsNotCompleteIsTheDefault) {
    const auto read = [](const char* height, const char* name) {
        MIniData store;
        PutPropertiesIntoIniData(OtherSettings(), store);
        store.DeleteEntry("GRAPH_FONT", "height");
        store.DeleteEntry("GRAPH_FONT", "name");
        if (height != nullptr) {
            store.SetStringEntry("GRAPH_FONT", "height", height);
        }
        if (name != nullptr) {
            store.SetStringEntry("GRAPH_FONT", "name", name);
        }
        return ReadStore(store).font;
    };
    for (const char* const bad : {"", "abc", "8.5", "12pt"}) {
        const ExpectErrorLog expected({kBadFont});
        EXPECT_EQ(read(bad, "Arial"), FontDescription()) << bad;
    }
    const ExpectErrorLog expected({kBadFont, kBadFont, kBadFont});
    EXPECT_EQ(read(nullptr, "Arial"), FontDescription());
    EXPECT_EQ(read("20", nullptr), FontDescription());
    EXPECT_EQ(read(nullptr, nullptr), FontDescription());
}

TEST_F(ViewSettingsFile, ALongFaceNameIsRefusedAndTheHeightKept) {
    MIniData store;
    ViewSettings settings = OtherSettings();
    PutPropertiesIntoIniData(settings, store);
    store.SetStringEntry("GRAPH_FONT", "name", std::string(33, 'f'));
    const ExpectErrorLog expected({kBadFontName});
    const FontDescription font = ReadStore(store).font;
    EXPECT_EQ(font.height, -13);
    EXPECT_EQ(font.face, "System");
}

TEST_F(ViewSettingsFile, AFaceNameIsCutToWhatTheRecordHolds) {
    EXPECT_EQ(ReadWith("GRAPH_FONT", "name", std::string(32, 'f')).font.face, std::string(31, 'f'));
    EXPECT_EQ(ReadWith("GRAPH_FONT", "name", std::string(31, 'f')).font.face, std::string(31, 'f'));
    EXPECT_EQ(ReadWith("GRAPH_FONT", "name", "").font.face, "");
    // Between characters: the last one has two bytes.
    EXPECT_EQ(ReadWith("GRAPH_FONT", "name", std::string(30, 'f') + "\xC3\xA4").font.face,
              std::string(30, 'f'));
}

TEST_F(ViewSettingsFile, ALongFaceNameIsWrittenAsTheRecordHoldsIt) {
    ViewSettings settings = OtherSettings();
    settings.font.face = std::string(30, 'f') + "\xC3\xA4 Condensed";
    MIniData store;
    EXPECT_TRUE(PutPropertiesIntoIniData(settings, store));
    EXPECT_EQ(ReadStore(store).font.face, std::string(30, 'f'));
}

TEST_F(ViewSettingsFile, ScaleLinesAreAtLeastOne) {
    for (const char* const bad : {kWithout, "0", "-2", "abc", "", "3.5", "7x"}) {
        EXPECT_EQ(ReadWith("SCALE_LINES", "x", bad).scale_lines_x, 5) << bad;
        EXPECT_EQ(ReadWith("SCALE_LINES", "y", bad).scale_lines_y, 3) << bad;
    }
    EXPECT_EQ(ReadWith("SCALE_LINES", "x", "1").scale_lines_x, 1);
    EXPECT_EQ(ReadWith("SCALE_LINES", "y", "100").scale_lines_y, 100);
    EXPECT_EQ(ReadWith("SCALE_LINES", "y", "99999999999").scale_lines_y, INT32_MAX);
}

TEST_F(ViewSettingsFile, TheTraceLevelIsAtMostFive) {
    for (const auto& [text, level] : std::vector<std::pair<const char*, std::int32_t>>{
             {"0", 0}, {"5", 5}, {"6", 1}, {"abc", 1}, {"", 1}, {"4x", 1}, {"-1", -1}}) {
        MIniData store;
        PutPropertiesIntoIniData(OtherSettings(), store);
        store.SetStringEntry("GENERAL", "mtrace_level", text);
        EXPECT_EQ(ReadStore(store).trace_level, level) << text;
    }
    MIniData store;
    PutPropertiesIntoIniData(OtherSettings(), store);
    EXPECT_EQ(ReadStore(store).trace_level, 1);
}

TEST_F(ViewSettingsFile, TheGraphEditorIsShownUnlessZero) {
    for (const char* const shown : {kWithout, "1", "2", "-1", "", "no"}) {
        EXPECT_TRUE(ReadWith("AX_EDIT", "ShowDialog", shown).show_graph_editor) << shown;
    }
    EXPECT_FALSE(ReadWith("AX_EDIT", "ShowDialog", "0").show_graph_editor);
}

TEST_F(ViewSettingsFile, LineStylesAreShownWhereAKeySaysSo) {
    MIniData store;
    for (const auto& [text, shown] : std::vector<std::pair<const char*, bool>>{
             {"1", true}, {"2", true}, {"0", false}, {"", false}, {"yes", false}, {"1.5", false}}) {
        store.SetStringEntry("CURVES", "LineStyles", text);
        PutPropertiesIntoIniData(OtherSettings(), store);
        store.SetStringEntry("CURVES", "LineStyles", text);
        EXPECT_EQ(ReadStore(store).line_styles, shown) << text;
    }
}

TEST_F(ViewSettingsFile, LineStylesAreWrittenOnceTheyWereWanted) {
    ViewSettings settings = OtherSettings();
    settings.line_styles = true;
    EXPECT_TRUE(WriteProperties(Path(), settings));
    EXPECT_EQ(Text(), std::string(kOtherText) + "[CURVES]\r\nLineStyles=1\r\n");
    EXPECT_EQ(Read(), settings);
    settings.line_styles = false;
    EXPECT_TRUE(WriteProperties(Path(), settings));
    EXPECT_EQ(Text(), std::string(kOtherText) + "[CURVES]\r\nLineStyles=0\r\n");
    EXPECT_EQ(Read(), settings);
}

TEST_F(ViewSettingsFile, SeparatorIsOneCharacter) {
    for (const auto& [text, separator] :
         std::vector<std::pair<const char*, char>>{{kWithout, ','},
                                                   {"0x09", '\t'},
                                                   {";", ';'},
                                                   {",", ','},
                                                   {" ", ' '},
                                                   {"0x20", ' '},
                                                   {"ab", ','},
                                                   {"", ','},
                                                   {"0x09,0x0a", ','},
                                                   {"0x", ','},
                                                   {"0X09", ','},
                                                   {"0x13b", ';'}}) {
        EXPECT_EQ(ReadWith("DATA_EXPORT", "Separator", text).export_settings.separator, separator)
            << text;
    }
}

TEST_F(ViewSettingsFile, DecimalPointIsOneCharacter) {
    for (const auto& [text, point] : std::vector<std::pair<const char*, char>>{
             {kWithout, '.'}, {",", ','}, {";", ';'}, {"", '.'}, {"..", '.'}, {"0x2c", '.'}}) {
        EXPECT_EQ(ReadWith("DATA_EXPORT", "DecimalPoint", text).export_settings.decimal_point,
                  point)
            << text;
    }
}

TEST_F(ViewSettingsFile, EndOfLineIsAListOfCodesOrOneCharacter) {
    for (const auto& [text, end] :
         std::vector<std::pair<const char*, const char*>>{{kWithout, "\r\n"},
                                                          {"0x0a", "\n"},
                                                          {"0x0d,0x0a", "\r\n"},
                                                          {"0x0D,0x0A", "\r\n"},
                                                          {"x", "x"},
                                                          {"0x3b,0xa", ";\n"},
                                                          {";,0x0a", "\r\n"},
                                                          {"", "\r\n"},
                                                          {"0x0d,", "\r\n"},
                                                          {"0x0d,,0x0a", "\r\n"},
                                                          {"0x0d 0x0a", "\r\n"},
                                                          {"0x0g", "\r\n"},
                                                          {"0x10a", "\n"}}) {
        EXPECT_EQ(ReadWith("DATA_EXPORT", "EndOfLine", text).export_settings.end_of_line, end)
            << text;
    }
}

TEST_F(ViewSettingsFile, TheDataFileIsTakenAsItStands) {
    EXPECT_EQ(ReadWith("DATA_EXPORT", "File", " a=b;c ").export_settings.data_file, " a=b;c ");
    EXPECT_EQ(ReadWith("DATA_EXPORT", "File", kWithout).export_settings.data_file,
              DefaultDataFile());
    EXPECT_EQ(ReadWith("DATA_EXPORT", "File", "").export_settings.data_file, DefaultDataFile());
}

// Writing.

TEST_F(ViewSettingsFile, WritesEveryKeyInOrderButNotTheTraceLevel) {
    ViewSettings settings = OtherSettings();
    settings.trace_level = 4;
    EXPECT_TRUE(WriteProperties(Path(), settings));
    EXPECT_EQ(Text(), kOtherText);
    EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
    settings.trace_level = 1;
    EXPECT_EQ(Read(), settings);
}

TEST_F(ViewSettingsFile, ASecondWriteIsByteEqual) {
    EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    EXPECT_TRUE(WriteProperties(Path(), Read()));
    EXPECT_EQ(Text(), kOtherText);
}

TEST_F(ViewSettingsFile, KeepsCommentsAndWhatOthersWroteInTheirOrder) {
    Write(
        "# my settings\n"
        "  \n"
        "[DATA_EXPORT]\n"
        "Compress=yes\n"
        "EndOfLine=0x0a\n"
        "; where to\n"
        "File=/old\n"
        "[GENERAL]\n"
        "mtrace_level=3\n"
        "Graphs=1\n"
        "[1]\n"
        "Mode=2\n"
        "\t\n"
        "[BKCOLOR]\n"
        "alpha=7\n"
        "red=9\n");
    EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    EXPECT_EQ(Text(),
              "# my settings\r\n"
              "  \r\n"
              "[DATA_EXPORT]\r\n"
              "Compress=yes\r\n"
              "EndOfLine=0x0a\r\n"
              "; where to\r\n"
              "File=/data/values of today.txt\r\n"
              "Separator=0x09\r\n"
              "DecimalPoint=,\r\n"
              "[GENERAL]\r\n"
              "mtrace_level=3\r\n"
              "Graphs=1\r\n"
              "[1]\r\n"
              "Mode=2\r\n"
              "\t\r\n"
              "[BKCOLOR]\r\n"
              "alpha=7\r\n"
              "red=16\r\n"
              "green=32\r\n"
              "blue=48\r\n"
              "[GRAPH_FONT]\r\n"
              "height=-13\r\n"
              "name=DejaVu Sans\r\n"
              "[SCALE_LINES]\r\n"
              "x=9\r\n"
              "y=1\r\n"
              "[AX_EDIT]\r\n"
              "ShowDialog=0\r\n");
    EXPECT_EQ(Read().trace_level, 3);
}

TEST_F(ViewSettingsFile, SettingsAndGraphsShareAFile) {
    WavoGraph graph;
    graph.InitGraph(1, "X", 0xFFFFFF, nullptr);
    MIniData store;
    ASSERT_TRUE(store.Open(Path()));
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, "text"));
    ASSERT_TRUE(store.Save());
    EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    EXPECT_EQ(Read(), OtherSettings());
    ASSERT_TRUE(store.Open(Path()));
    std::vector<WavoGraph> graphs;
    std::string error_text;
    std::string add_text;
    EXPECT_TRUE(CreateGraphsFromIniData(store, graphs, error_text, add_text, 0.001));
    EXPECT_EQ(graphs.size(), 1U);
    EXPECT_EQ(add_text, "text");
}

TEST_F(ViewSettingsFile, AnyExportCharactersReadBackWhereTheFormAllows) {
    for (int code = 0; code < 256; ++code) {
        ViewSettings settings = DefaultViewSettings();
        settings.export_settings.separator = static_cast<char>(code);
        settings.export_settings.end_of_line = std::string(1, static_cast<char>(code));
        MIniData store;
        ASSERT_TRUE(PutPropertiesIntoIniData(settings, store)) << code;
        MIniData read;
        ASSERT_TRUE(read.SetContent(store.Content())) << code;
        EXPECT_EQ(ReadStore(read), settings) << code;
    }
    // A printable character is not read in a list: such an end of line falls back.
    ViewSettings settings = DefaultViewSettings();
    settings.export_settings.end_of_line = ";\n";
    MIniData store;
    ASSERT_TRUE(PutPropertiesIntoIniData(settings, store));
    EXPECT_EQ(ReadStore(store).export_settings.end_of_line, "\r\n");
}

TEST_F(ViewSettingsFile, RandomSettingsReadBackAndWriteTheSameBytes) {
    std::mt19937_64 random(20261121);
    const auto below = [&](std::uint64_t bound) { return random() % bound; };
    const auto text = [&](std::size_t longest) {
        std::string result;
        for (std::size_t i = below(longest + 1); i > 0; --i) {
            result += static_cast<char>(' ' + below(95));
        }
        return result;
    };
    for (int round = 0; round < 2000; ++round) {
        ViewSettings settings;
        settings.background = static_cast<ColorRef>(below(0x1000000));
        settings.font.height = static_cast<std::int32_t>(random());
        settings.font.face = text(31);
        settings.scale_lines_x = static_cast<std::int32_t>(1 + below(INT32_MAX));
        settings.scale_lines_y = static_cast<std::int32_t>(1 + below(INT32_MAX));
        settings.show_graph_editor = below(2) == 0;
        settings.export_settings.separator = static_cast<char>(below(256));
        settings.export_settings.decimal_point = static_cast<char>(' ' + below(95));
        settings.export_settings.end_of_line.clear();
        for (std::size_t i = 1 + below(4); i > 0; --i) {
            settings.export_settings.end_of_line += static_cast<char>(below(33));
        }
        settings.export_settings.data_file = "/" + text(60);
        MIniData store;
        ASSERT_TRUE(PutPropertiesIntoIniData(settings, store));
        MIniData read;
        ASSERT_TRUE(read.SetContent(store.Content())) << store.Content();
        ASSERT_EQ(ReadStore(read), settings) << store.Content();
        ASSERT_TRUE(PutPropertiesIntoIniData(ReadStore(read), read));
        ASSERT_EQ(read.Content(), store.Content());
    }
}

}  // namespace
}  // namespace wavo
