#include "tables/part_export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "comma_locale.h"
#include "faulty_data_files.h"
#include "recording/recording_verify.h"
#include "recording/recording_writer.h"
#include "tables/column_table.h"
#include "temporary_folder.h"

namespace wavo::tables {
namespace {

using recording::Event;
using recording::LineSpan;
using recording::RecordingReader;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Texts = std::vector<std::string>;

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

class PartExports : public ::testing::Test {
 protected:
    PartExports() {
        m_head.axis_names = {"X", "a;b\"c"};
        m_head.cycle_time = 0.001;
        m_head.start_time = 1'700'000'000'000'000'000U;
        m_head.program = "recorder 1";
        m_head.limits = {recording::AxisLimits{-1, 2, 3, 4, 0.5}};
    }

    [[nodiscard]] static double Value(std::uint64_t line, std::size_t axis) {
        return axis == 0       ? static_cast<double>(line) * 0.1
               : line % 7 == 3 ? kNoValue
                               : -static_cast<double>(line);
    }

    /// Lines 100 to 4999, but for 2000 to 2999.
    RecordingReader& Recording() {
        m_path = m_folder.File("whole.mcap");
        auto writer = recording::RecordingWriter::Create(
            m_path, m_head, recording::GraphFile{"graphs.ini", "[Graph]\n"});
        EXPECT_TRUE(writer);
        (*writer)->AddEvent({recording::kEventTrigger, 150, 0, "trigger"});
        for (std::uint64_t line = 100; line < 5000; ++line) {
            if (line == 3000) {
                (*writer)->AddEvent({recording::kEventOverrun, 3000, 1000, "overrun"});
            }
            if (line < 2000 || line >= 3000) {
                const double values[] = {Value(line, 0), Value(line, 1)};
                EXPECT_FALSE((*writer)->Append(line, values, 1));
            }
        }
        (*writer)->AddEvent({recording::kEventLinkEnded, 5000, 0, "end"});
        EXPECT_FALSE((*writer)->Finish());
        auto reader = RecordingReader::Open(m_path);
        EXPECT_TRUE(reader);
        m_reader = std::move(*reader);
        return *m_reader;
    }

    /// Why a part is not written; empty when it is.
    static std::string Export(RecordingReader& reader, LineSpan part, const PartFile& file) {
        auto made = PartExport::Begin(reader, part, file);
        if (!made) {
            return made.Why().text;
        }
        StepState state = StepState::kWorking;
        double done = 0.0;
        while ((state = (*made)->Step()) == StepState::kWorking) {
            EXPECT_GE((*made)->Part(), done);
            done = (*made)->Part();
        }
        EXPECT_TRUE(state == StepState::kFailed || (*made)->Part() == 1.0);
        return state == StepState::kFailed ? (*made)->Why().text : std::string();
    }
    [[nodiscard]] Texts Files() const {
        Texts names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            names.push_back(entry.path().filename().string());
        }
        std::ranges::sort(names);
        return names;
    }

    const testing::TemporaryFolder m_folder;
    recording::RecordingHead m_head;
    std::string m_path;
    std::unique_ptr<RecordingReader> m_reader;
};

/// Twice the number of a line; nothing in line 101.
struct Doubled : History {
    [[nodiscard]] LineRange Lines() const override { return {100, 5000}; }
    HistoryAnswer Columns(std::span<const std::int64_t>, ColumnRow&) override {
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override {
        for (double& value : values) {
            value = first == 101 ? kNoValue : 2.0 * static_cast<double>(first);
            ++first;
        }
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Sums(const LineRange&, HistorySums&) override { return HistoryAnswer::kAll; }
};

TEST_F(PartExports, ATableHasColumnsBesideTheAxes) {
    Doubled doubled;
    PartFile file{m_folder.File("part.csv"), PartFormat::kTable, {}, {{"two;fold", &doubled}}};
    file.settings.separator = ';';
    ASSERT_EQ(Export(Recording(), {100, 103}, file), "");
    std::ifstream table(file.path);
    Texts lines;
    for (std::string line; std::getline(table, line);) {
        lines.push_back(line.substr(0, line.find('\r')));
    }
    EXPECT_THAT(lines,
                ElementsAre("time [s];X;\"a;b\"\"c\";\"two;fold\"",
                            "0.100000;10.000000;-100.000000;200.000000", "0.101000;10.100000;;",
                            "0.102000;10.200000;-102.000000;204.000000"));
    file.format = PartFormat::kRecording;
    file.path = m_folder.File("part.mcap");
    ASSERT_EQ(Export(*m_reader, {100, 103}, file), "");
    EXPECT_EQ((*RecordingReader::Open(file.path))->Head(), m_head) << "lines are the machine's";
}

TEST_F(PartExports, ARecordingOfAPartKeepsAllThatTheWholeOneTells) {
    RecordingReader& whole = Recording();
    const std::string path = m_folder.File("part.mcap");
    ASSERT_EQ(Export(whole, {1500, 3500}, {path, PartFormat::kRecording, {}}), "");
    const auto verified = recording::VerifyRecording(path, nullptr);
    ASSERT_TRUE(verified);
    EXPECT_THAT(verified->findings, IsEmpty());
    auto part = RecordingReader::Open(path);
    ASSERT_TRUE(part);
    EXPECT_TRUE((*part)->IsComplete());
    EXPECT_EQ((*part)->Head(), whole.Head());
    EXPECT_EQ((*part)->ReadGraphFile(), whole.ReadGraphFile());
    EXPECT_EQ((*part)->FirstLine(), 1500U);
    EXPECT_EQ((*part)->EndLine(), 3500U);
    EXPECT_EQ((*part)->LineCount(), 1000U);
    EXPECT_THAT((*part)->Gaps(), ElementsAre(LineSpan{2000, 3000}));
    EXPECT_THAT((*part)->Events(),
                ElementsAre(Event{recording::kEventOverrun, 3000, 1000, "overrun"}));
    std::vector<double> values(2);
    std::vector<double> expected(2);
    for (std::uint64_t line = 1500; line < 3500; ++line) {
        ASSERT_EQ((*part)->ReadLine(line, values), whole.ReadLine(line, expected)) << line;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(values[axis]),
                      std::bit_cast<std::uint64_t>(expected[axis]));
        }
    }
    EXPECT_THAT(Files(), ElementsAre("part.mcap", "whole.mcap"));
}

TEST_F(PartExports, EverythingIsAPartToo) {
    RecordingReader& whole = Recording();
    const std::string path = m_folder.File("all.mcap");
    ASSERT_EQ(Export(whole, {0, UINT64_MAX}, {path, PartFormat::kRecording, {}}), "");
    auto part = RecordingReader::Open(path);
    ASSERT_TRUE(part);
    EXPECT_EQ((*part)->LineCount(), whole.LineCount());
    EXPECT_EQ((*part)->Events(), whole.Events());
    EXPECT_EQ(whole.Events().size(), 3U);
}

TEST_F(PartExports, ATableHasTheTimeAndWhatIsThere) {
    RecordingReader& whole = Recording();
    const std::string path = m_folder.File("part.csv");
    ExportSettings settings;
    ASSERT_EQ(Export(whole, {1998, 3002}, {path, PartFormat::kTable, settings}), "");
    EXPECT_EQ(m_folder.Read("part.csv"),
              "time [s],X,\"a;b\"\"c\"\r\n"
              "1.998000,199.800000,\r\n"  // line 1998 has no second value
              "1.999000,199.900000,-1999.000000\r\n"
              "3.000000,300.000000,-3000.000000\r\n"
              "3.001000,300.100000,-3001.000000\r\n");
    settings = {"\n", ';', ',', ""};
    const testing::CommaLocale locale;
    ASSERT_EQ(Export(whole, {4998, 5000}, {path, PartFormat::kTable, settings}), "");
    EXPECT_EQ(m_folder.Read("part.csv"),
              "time [s];X;\"a;b\"\"c\"\n"
              "4,998000;499,800000;-4998,000000\n"
              "4,999000;499,900000;-4999,000000\n");
    EXPECT_THAT(Files(), ElementsAre("part.csv", "whole.mcap"));
}

TEST_F(PartExports, TimesHaveAsManyDecimalsAsTheCycleTimeNeeds) {
    m_head.cycle_time = 0.0000125;
    ASSERT_EQ(Export(Recording(), {101, 102}, {m_folder.File("p.csv"), PartFormat::kTable, {}}),
              "");
    EXPECT_THAT(m_folder.Read("p.csv"), HasSubstr("\r\n0.0012625,10.100000,"));
}

TEST_F(PartExports, APackedTableHoldsTheSame) {
    RecordingReader& whole = Recording();
    ASSERT_EQ(Export(whole, {0, 5000}, {m_folder.File("p.csv"), PartFormat::kTable, {}}), "");
    ASSERT_EQ(Export(whole, {0, 5000}, {m_folder.File("p.csv.gz"), PartFormat::kPackedTable, {}}),
              "");
    EXPECT_LT(m_folder.Read("p.csv.gz").size(), m_folder.Read("p.csv").size() / 2);
    const auto plain = ReadColumns(std::move(*TableBytes::Open(m_folder.File("p.csv"))));
    const auto packed = ReadColumns(std::move(*TableBytes::Open(m_folder.File("p.csv.gz"))));
    ASSERT_TRUE(plain && packed);
    EXPECT_THAT(packed->names, ElementsAre("time [s]", "X", "a;b\"c"));
    EXPECT_EQ(packed->Lines(), whole.LineCount());
    EXPECT_EQ(packed->columns[0], plain->columns[0]);
    EXPECT_EQ(packed->columns[1], plain->columns[1]);
}

TEST_F(PartExports, PartsWithoutLinesAreRefused) {
    RecordingReader& whole = Recording();
    const PartFile file{m_folder.File("part.mcap"), PartFormat::kRecording, {}};
    for (const LineSpan part : {LineSpan{2000, 3000}, LineSpan{2500, 2600}, LineSpan{0, 100},
                                LineSpan{5000, 6000}, LineSpan{300, 300}, LineSpan{400, 300}}) {
        EXPECT_EQ(Export(whole, part, file), "there are no lines in this part");
    }
    EXPECT_THAT(Files(), ElementsAre("whole.mcap"));
}

TEST_F(PartExports, TheRecordingItselfIsNeverWrittenOnto) {
    RecordingReader& whole = Recording();
    const std::string before = m_folder.Read("whole.mcap");
    EXPECT_EQ(Export(whole, {100, 200}, {m_path, PartFormat::kRecording, {}}),
              "a recording cannot be exported onto itself");
    std::error_code failure;
    std::filesystem::create_hard_link(m_path, m_folder.File("other.csv"), failure);
    if (!failure) {
        EXPECT_EQ(Export(whole, {100, 200}, {m_folder.File("other.csv"), PartFormat::kTable, {}}),
                  "a recording cannot be exported onto itself");
    }
    EXPECT_EQ(m_folder.Read("whole.mcap"), before);
}

TEST_F(PartExports, AFileThatIsThereIsReplacedByAWholeOneOnly) {
    RecordingReader& whole = Recording();
    std::ofstream(m_folder.File("part.csv")) << "before";
    std::ofstream(m_folder.File("part.csv.part")) << "of somebody else";
    {
        auto made = PartExport::Begin(whole, {0, 5000},
                                      {m_folder.File("part.csv"), PartFormat::kTable, {}});
        ASSERT_TRUE(made);
        EXPECT_EQ((*made)->Step(), StepState::kWorking);
        EXPECT_GT((*made)->Lines(), 0U);
        EXPECT_EQ(Files().size(), 4U);
    }
    EXPECT_THAT(Files(), ElementsAre("part.csv", "part.csv.part", "whole.mcap")) << "given up";
    EXPECT_EQ(m_folder.Read("part.csv"), "before");
    EXPECT_EQ(Export(whole, {0, 5000}, {m_folder.File("part.csv"), PartFormat::kTable, {}}), "");
    EXPECT_THAT(m_folder.Read("part.csv"), StartsWith("time [s]"));
    EXPECT_EQ(m_folder.Read("part.csv.part"), "of somebody else");
    EXPECT_THAT(Files(), ElementsAre("part.csv", "part.csv.part", "whole.mcap"));
}

TEST_F(PartExports, AFullDiskLeavesNothingBehind) {
    RecordingReader& whole = Recording();
    for (const PartFormat format :
         {PartFormat::kRecording, PartFormat::kTable, PartFormat::kPackedTable}) {
        int call = 0;
        for (;; ++call) {
            testing::FaultyDataFiles files;
            files.FailOnce(call, ENOSPC);
            const std::string why = Export(whole, {0, 5000}, {m_folder.File("p"), format, {}});
            if (why.empty()) {
                break;
            }
            EXPECT_THAT(why, StartsWith("cannot "));
            EXPECT_THAT(Files(), ElementsAre("whole.mcap"));
        }
        EXPECT_GT(call, 2);
        std::filesystem::remove(m_folder.File("p"));
    }
    EXPECT_THAT(Export(whole, {0, 5000}, {m_folder.File("none/p"), PartFormat::kTable, {}}),
                HasSubstr("cannot make"));
    std::filesystem::create_directory(m_folder.File("folder"));
    EXPECT_THAT(Export(whole, {0, 5000}, {m_folder.File("folder"), PartFormat::kTable, {}}),
                HasSubstr("cannot write"));
    EXPECT_THAT(Files(), ElementsAre("folder", "whole.mcap"));
}

TEST_F(PartExports, DamagedLinesAreGapsInThePart) {
    Recording();
    m_reader.reset();
    std::string content = m_folder.Read("whole.mcap");
    content[content.size() / 3] ^= 0x10;
    std::ofstream(m_path, std::ios::binary) << content;
    auto whole = RecordingReader::Open(m_path);
    ASSERT_TRUE(whole);
    ASSERT_EQ(Export(**whole, {0, 5000}, {m_folder.File("p.mcap"), PartFormat::kRecording, {}}),
              "");
    EXPECT_THAT((*whole)->Notices(), ElementsAre(HasSubstr("are damaged and left out")));
    auto part = RecordingReader::Open(m_folder.File("p.mcap"));
    ASSERT_TRUE(part);
    // Lines of the chunk before the damaged ones were right when they were read.
    EXPECT_GE((*part)->LineCount(), (*whole)->LineCount());
    EXPECT_LT((*part)->LineCount(), 3900U);
    std::vector<double> values(2);
    for (std::uint64_t line = 100; line < 5000; ++line) {
        if ((*part)->ReadLine(line, values)) {
            ASSERT_EQ(values[0], Value(line, 0));
        }
    }
}

}  // namespace
}  // namespace wavo::tables
