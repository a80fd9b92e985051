#include "tables/table_import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "faulty_data_files.h"
#include "gzipped.h"
#include "recording/recording_reader.h"
#include "recording/recording_verify.h"
#include "temporary_folder.h"

namespace wavo::tables {
namespace {

using recording::RecordingReader;
using ::testing::ElementsAre;
using testing::Gzipped;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Texts = std::vector<std::string>;

class TableImports : public ::testing::Test {
 protected:
    std::string Write(const std::string& text, const std::string& name = "table.csv") const {
        const std::string path = m_folder.File(name);
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    [[nodiscard]] TablePreview Preview(const std::string& text) const {
        auto preview = PreviewTable(Write(text));
        EXPECT_TRUE(preview) << preview.Why().text;
        return preview ? *preview : TablePreview();
    }
    [[nodiscard]] std::string WhyNoPreview(const std::string& text) const {
        const std::string path = Write(text);
        const auto preview = PreviewTable(path);
        EXPECT_FALSE(preview);
        const std::string why = preview ? std::string() : preview.Why().text;
        EXPECT_THAT(why, StartsWith(path + ": "));
        return why.substr(path.size() + 2);
    }

    /// Imports a table; the recording stays as long as this object.
    RecordingReader* Import(const std::string& text, const std::optional<TimeChoice>& choice = {}) {
        const TablePreview preview = Preview(text);
        auto import =
            TableImport::Begin(preview, choice.value_or(TimeChoice()), m_cache.path(), "test 1");
        EXPECT_TRUE(import) << import.Why().text;
        m_notices.clear();
        StepState state = StepState::kWorking;
        while ((state = (*import)->Step()) == StepState::kWorking) {
            EXPECT_GE((*import)->Part(), 0.0);
            EXPECT_LE((*import)->Part(), 1.0);
        }
        if (state == StepState::kFailed) {
            m_why = (*import)->Why().text;
            return nullptr;
        }
        m_notices = (*import)->Notices();
        EXPECT_EQ((*import)->Part(), 1.0);
        m_reader.reset();
        m_recording.emplace((*import)->Take());
        const auto verified = recording::VerifyRecording(m_recording->Path(), nullptr);
        EXPECT_TRUE(verified && verified->findings.empty());
        auto reader = RecordingReader::Open(m_recording->Path());
        EXPECT_TRUE(reader) << reader.Why().text;
        m_reader = std::move(*reader);
        return m_reader.get();
    }
    std::string WhyNot(const std::string& text, const std::optional<TimeChoice>& choice = {}) {
        m_why.clear();
        m_reader.reset();
        m_recording.reset();
        EXPECT_EQ(Import(text, choice), nullptr);
        EXPECT_THAT(Cache(), IsEmpty());
        const std::string prefix = m_folder.File("table.csv") + ": ";
        EXPECT_THAT(m_why, StartsWith(prefix));
        return m_why.substr(std::min(prefix.size(), m_why.size()));
    }
    [[nodiscard]] Texts Cache() const {
        Texts names;
        for (const auto& entry : std::filesystem::directory_iterator(m_cache.path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }
    static std::vector<double> Line(RecordingReader& reader, std::uint64_t line) {
        std::vector<double> values(reader.Head().axis_names.size());
        EXPECT_TRUE(reader.ReadLine(line, values)) << line;
        return values;
    }

    const testing::TemporaryFolder m_folder;
    const testing::TemporaryFolder m_cache;
    std::optional<TemporaryRecording> m_recording;
    std::unique_ptr<RecordingReader> m_reader;
    Texts m_notices;
    std::string m_why;
};

TEST_F(TableImports, PreviewShowsTheBeginning) {
    const TablePreview preview = Preview("X;state;X;\n1,5;on;2\n2,5;off;3\n");
    EXPECT_EQ(preview.layout.separator, ';');
    EXPECT_THAT(preview.names, ElementsAre("X", "state", "X (2)"));
    EXPECT_THAT(preview.is_text, ElementsAre(false, true, false));
    EXPECT_THAT(preview.rows,
                ElementsAre(ElementsAre("1,5", "on", "2"), ElementsAre("2,5", "off", "3")));
    EXPECT_FALSE(preview.guess);
    EXPECT_THAT(Preview("\"a,b\",,\"column 2\",a_b\n1,2,3,4\n").names,
                ElementsAre("a_b", "column 2", "column 2 (2)", "a_b (2)"));
    std::string text = "a,b\n";
    for (int i = 0; i < 100; ++i) {
        text += "1,2\n";
    }
    EXPECT_EQ(Preview(text).rows.size(), TablePreview::kRows);
}

TEST_F(TableImports, GuessesTheTime) {
    const auto guess = [this](const std::string& text) { return Preview(text).guess; };
    EXPECT_EQ(guess("time,X\n0,1\n0.001,2\n"), (TimeChoice{0, 1.0}));
    EXPECT_EQ(guess("X,Time [ms]\n0,1\n0.001,2\n"), (TimeChoice{1, 1e-3}));
    EXPECT_EQ(guess("t (\xC2\xB5s);X\n0;1\n10;2\n"), (TimeChoice{0, 1e-6}));
    EXPECT_EQ(guess("time_ns X\n0 1\n0 2\n10 2\n"), (TimeChoice{0, 1e-9}));
    EXPECT_EQ(guess("ms,X\n0,1\n5,2\n"), (TimeChoice{0, 1e-3}));
    EXPECT_EQ(guess("S,X\n0,1\n5,2\n"), std::nullopt);
    EXPECT_EQ(guess("time,X\n0,1\n0,2\n"), std::nullopt) << "it stands still";
    EXPECT_EQ(guess("time,X\n1,1\n0,2\n"), std::nullopt) << "it falls";
    EXPECT_EQ(guess("time to go,X\n0,1\n1,2\n"), std::nullopt);
    EXPECT_EQ(guess("Sampling period is 250000 ns \n\nx +1.0 \nx +2.0 \n"),
              (TimeChoice{std::nullopt, 1.0, 0.00025}));
}

TEST_F(TableImports, KeysAreThoseOfTheColumns) {
    const auto key = [this](const std::string& text) { return Preview(text).Key(); };
    EXPECT_EQ(key("a,b\n1,2\n"), key("a;b\n3;4\n"));
    EXPECT_NE(key("a,b\n1,2\n"), key("a,c\n1,2\n"));
    EXPECT_NE(key("column 1,column 2\n1,2\n"), key("1,2\n3,4\n"));
}

TEST_F(TableImports, FilesThatAreNoTablesAreTold) {
    EXPECT_EQ(WhyNoPreview(""), "the file is empty");
    EXPECT_EQ(WhyNoPreview(" \r\n"), "the file is empty");
    EXPECT_EQ(WhyNoPreview("\x1f\x8b"), "the gzip data is damaged or cut off");
    EXPECT_EQ(WhyNoPreview("\xFE\xFF"), "the text is UTF-16; save it as UTF-8");
    EXPECT_EQ(WhyNoPreview(std::string(1'000'000, ',')), "the table has more than 10000 columns");
    EXPECT_EQ(WhyNoPreview(std::string("a\0b\n", 4)),
              "line 1: there is a zero byte: this is no text");
    EXPECT_EQ(PreviewTable(m_folder.path()).Why().text, m_folder.path() + ": cannot be read");
    const std::string missing = m_folder.File("none");
    EXPECT_EQ(PreviewTable(missing).Why().text, missing + ": no such file");
}

TEST_F(TableImports, LinesAreACycleTimeApart) {
    RecordingReader* const reader =
        Import("X,state,Y\n1,on,2\n,on,nan\n-0.1,off,1e300\n", TimeChoice{{}, 1.0, 0.002});
    ASSERT_NE(reader, nullptr);
    EXPECT_THAT(reader->Head().axis_names, ElementsAre("X", "Y"));
    EXPECT_EQ(reader->Head().cycle_time, 0.002);
    EXPECT_EQ(reader->Head().start_time, 0U);
    EXPECT_EQ(reader->Head().program, "test 1");
    EXPECT_EQ(reader->LineCount(), 3U);
    EXPECT_THAT(Line(*reader, 0), ElementsAre(1.0, 2.0));
    EXPECT_TRUE(std::isnan(Line(*reader, 1)[0]));
    EXPECT_TRUE(std::isnan(Line(*reader, 1)[1]));
    EXPECT_THAT(Line(*reader, 2), ElementsAre(-0.1, 1e300));
    EXPECT_THAT(m_notices, ElementsAre("column \"state\" holds no numbers and is left out"));
    EXPECT_TRUE(reader->IsComplete());
}

TEST_F(TableImports, OneLineIsEnough) {
    EXPECT_EQ(Import("X\n5\n")->LineCount(), 1U);
    EXPECT_EQ(Import("t,X\n7,5\n", TimeChoice{0, 1.0, 0.004})->LineCount(), 1U);
    EXPECT_EQ(m_reader->Head().cycle_time, 0.004);
    EXPECT_EQ(WhyNot("X,Y\n"), "there are no lines of values");
}

TEST_F(TableImports, ATimeColumnTellsTheCycleTime) {
    std::string text = "time [ms],X\n";
    for (int i = 0; i < 5000; ++i) {
        text += std::to_string(1000 + i * 0.25) + "," + std::to_string(i) + "\n";
    }
    RecordingReader* const reader = Import(text, TimeChoice{0, 1e-3});
    ASSERT_NE(reader, nullptr);
    EXPECT_THAT(reader->Head().axis_names, ElementsAre("X"));
    EXPECT_EQ(reader->Head().cycle_time, 0.00025);
    EXPECT_EQ(reader->Head().start_time, 1'000'000'000U);
    EXPECT_EQ(reader->LineCount(), 5000U);
    EXPECT_THAT(reader->Gaps(), IsEmpty());
    EXPECT_THAT(m_notices, IsEmpty());
    EXPECT_THAT(Line(*reader, 4999), ElementsAre(4999.0));
}

TEST_F(TableImports, WhatHalscopeSavedTellsItsCycleTime) {
    const std::string text =
        "Sampling period is 250000 ns \n\nX +1.5 on +0.0 \nX +1.6 on +1.0 \nX +1.7 on +1.0 ";
    RecordingReader* const reader = Import(text, Preview(text).guess);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->Head().cycle_time, 0.00025);
    EXPECT_THAT(reader->Head().axis_names, ElementsAre("X", "on"));
    EXPECT_EQ(reader->LineCount(), 3U);
    EXPECT_THAT(Line(*reader, 2), ElementsAre(1.7, 1.0));
    ASSERT_NE(Import("joint.0.pos;on;\n1.5;0;\n1.6;1;\n"), nullptr);
    EXPECT_THAT(m_reader->Head().axis_names, ElementsAre("joint.0.pos", "on"));
    EXPECT_THAT(m_notices, IsEmpty());
}

TEST_F(TableImports, WhereTheTimeJumpsLinesAreMissing) {
    RecordingReader* const reader =
        Import("t,X\n0,0\n1,1\n2,2\n7,7\n8,8\n,9\n10,10\n3,11\n4,12\n", TimeChoice{0, 1.0});
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->Head().cycle_time, 1.0);
    EXPECT_THAT(reader->Gaps(), ElementsAre(recording::LineSpan{3, 7}));
    EXPECT_THAT(Line(*reader, 7), ElementsAre(7.0));
    EXPECT_THAT(Line(*reader, 9), ElementsAre(9.0)) << "without a time it follows";
    EXPECT_THAT(Line(*reader, 11), ElementsAre(11.0)) << "behind the time that goes back";
    const auto& events = reader->Events();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0], (recording::Event{"time_jump", 7, 4, "4 lines missing"}));
    EXPECT_EQ(events[1], (recording::Event{"time_jump", 11, 0, "the time goes back"}));
    EXPECT_THAT(m_notices,
                ElementsAre("the time is not even, off by more than a tenth in 1 of 7 steps; "
                            "the lines are shown at the median, 1 s apart",
                            "the time jumps over 4 missing lines",
                            "the time goes back at 1 place; the lines go on there"));
}

TEST_F(TableImports, UnevenTimesAreToldAndTheMedianTaken) {
    RecordingReader* const reader =
        Import("t,X\n0,0\n0.9,1\n2,2\n3.2,3\n4,4\n5,5\n6,6\n", TimeChoice{0, 1e-3});
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->Head().cycle_time, 0.001);
    EXPECT_EQ(reader->LineCount(), 7U);
    EXPECT_THAT(m_notices, ElementsAre("the time is not even, off by more than a tenth in 2 of 6 "
                                       "steps; the lines are shown at the median, 0.001 s apart"));
    EXPECT_EQ(WhyNot("t,X\n5,0\n5,1\n5,2\n6,3\n", TimeChoice{0, 1.0}),
              "the time in column \"t\" does not rise; tell the cycle time instead");
    EXPECT_NE(Import("t,X\n0,0\n1,1\n1e300,2\n", TimeChoice{0, 1.0}), nullptr)
        << "a time beyond all";
}

TEST_F(TableImports, LinesThatCannotBeReadAreGaps) {
    RecordingReader* const reader = Import("X,Y\n1,2\n3\n5,x\n7,8\n");
    ASSERT_NE(reader, nullptr);
    EXPECT_THAT(reader->Gaps(), ElementsAre(recording::LineSpan{1, 3}));
    EXPECT_THAT(Line(*reader, 3), ElementsAre(7.0, 8.0));
    EXPECT_THAT(m_notices,
                ElementsAre("line 3: 1 field instead of 2; the line is left out",
                            "line 4, column 2 \"Y\": \"x\" is not a number; the line is left out"));
    EXPECT_EQ(WhyNot("X,Y\n1\n1,2\n"), "line 2: 1 field instead of 2");
    std::string bad = "X,Y\n1,2\n";
    for (int i = 0; i < 20; ++i) {
        bad += "?\n";
    }
    ASSERT_NE(Import(bad + "1,2\n"), nullptr);
    EXPECT_EQ(m_notices.size(), 11U);
    EXPECT_EQ(m_notices.back(), "altogether 20 lines that cannot be read are left out");
    for (int i = 0; i < 1000; ++i) {
        bad += "?\n";
    }
    EXPECT_THAT(WhyNot(bad), HasSubstr("more than 1000 lines cannot be read"));
    EXPECT_THAT(PreviewTable(Write("state\non\noff\n"))->is_text, ElementsAre(true));
    EXPECT_THAT(TableImport::Begin(*PreviewTable(Write("state\non\noff\n")), {}, m_cache.path(), "")
                    .Why()
                    .text,
                HasSubstr("there is no column of numbers"));
}

TEST_F(TableImports, GzipDataThatIsCutOffIsShownAsFarAsItIs) {
    std::string text = "X,Y\n";
    for (int i = 0; i < 50'000; ++i) {
        text += std::to_string(i) + "," + std::to_string(i % 1009) + "\n";
    }
    const std::string packed = Gzipped(text);
    ASSERT_NE(Import(packed), nullptr);
    EXPECT_EQ(m_reader->LineCount(), 50'000U);
    ASSERT_NE(Import(packed.substr(0, packed.size() / 2)), nullptr);
    const std::uint64_t lines = m_reader->LineCount();
    EXPECT_GT(lines, 10'000U);
    EXPECT_LT(lines, 40'000U);
    EXPECT_THAT(Line(*m_reader, lines - 1)[0], static_cast<double>(lines - 1));
    ASSERT_EQ(m_notices.size(), 1U);
    EXPECT_THAT(m_notices[0], StartsWith("the file was cut off behind line "));
    EXPECT_EQ(WhyNot(Gzipped("X,Y\n1,2").substr(0, 16)), "the gzip data is damaged or cut off");
    std::string damaged = packed;
    damaged[damaged.size() - 6] ^= 1;
    EXPECT_THAT(WhyNot(damaged), StartsWith("the gzip data is damaged behind line "));
}

TEST_F(TableImports, StepsAreShort) {
    std::string text = "a;b;c;d;e;f;g;h\n";
    while (text.size() < (std::size_t{8} << 20U)) {
        text += "1,25;-3,5;100,125;4;5;6;7;8\n";
    }
    const TablePreview preview = Preview(text);
    auto import = TableImport::Begin(preview, {}, m_cache.path(), "");
    ASSERT_TRUE(import);
    int steps = 0;
    double part = 0.0;
    StepState state = StepState::kWorking;
    while ((state = (*import)->Step()) == StepState::kWorking) {
        EXPECT_GE((*import)->Part(), part);
        part = (*import)->Part();
        ++steps;
    }
    EXPECT_EQ(state, StepState::kDone);
    EXPECT_GT(steps, 25) << "a quarter of a MiB each";
}

TEST_F(TableImports, NothingIsLeftBehind) {
    EXPECT_NE(Import("X\n1\n"), nullptr);
    EXPECT_EQ(Cache().size(), 2U);
    m_reader.reset();
    m_recording.reset();
    EXPECT_THAT(Cache(), IsEmpty());
    const TablePreview preview = Preview("X\n1\n2\n");
    {
        auto import = TableImport::Begin(preview, {}, m_cache.path(), "");
        ASSERT_TRUE(import);
        EXPECT_EQ((*import)->Step(), StepState::kWorking);
        EXPECT_EQ(Cache().size(), 2U);
    }
    EXPECT_THAT(Cache(), IsEmpty()) << "given up";
}

TEST_F(TableImports, AFullDiskIsToldAndNothingIsLeftBehind) {
    const TablePreview preview = Preview("X\n1\n2\n");
    for (int call = 0;; ++call) {
        testing::FaultyDataFiles files;
        files.FailOnce(call, ENOSPC);
        auto import = TableImport::Begin(preview, {}, m_cache.path(), "");
        if (!import) {
            EXPECT_THAT(import.Why().text, HasSubstr("cannot make"));
            EXPECT_THAT(Cache(), IsEmpty());
            continue;
        }
        StepState state = StepState::kWorking;
        while (state == StepState::kWorking) {
            state = (*import)->Step();
        }
        if (state == StepState::kDone) {
            EXPECT_GT(call, 3);
            break;
        }
        EXPECT_THAT((*import)->Why().text, HasSubstr("cannot "));
        EXPECT_THAT(Cache(), IsEmpty());
    }
}

TEST_F(TableImports, WhatOthersLeftBehindIsRemovedAndWhatTheyUseIsNot) {
    ASSERT_NE(Import("X\n1\n"), nullptr);
    const Texts used = Cache();
    for (const char* name : {"import-7.lock", "import-7.mcap", "other.mcap", "import-8.txt"}) {
        std::ofstream(m_cache.File(name)) << "text";
    }
    TemporaryRecording::RemoveLeftBehind(m_cache.path());
    Texts expected = used;
    expected.insert(expected.end(), {"other.mcap", "import-8.txt"});
    EXPECT_THAT(Cache(), ::testing::UnorderedElementsAreArray(expected));
    const auto other = TemporaryRecording::TakeName(m_cache.path());
    ASSERT_TRUE(other);
    EXPECT_NE(other->Path(), m_recording->Path());
}

}  // namespace
}  // namespace wavo::tables
