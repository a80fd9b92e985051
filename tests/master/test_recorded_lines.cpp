#include "master/recorded_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "master/source_limits.h"
#include "memory_data_files.h"
#include "recording/recording_writer.h"

namespace wavo::master {
namespace {

using recording::RecordingReader;
using ::testing::ElementsAre;

constexpr char kPath[] = "run.mcap";

/// A recording of X and Y, of the lines 10 to 19 and 25 to 29: X is the line's number.
class RecordedLinesTest : public ::testing::Test {
 protected:
    RecordedLinesTest() {
        m_head.axis_names = {"X", "Y"};
        m_head.cycle_time = 0.002;
    }

    std::unique_ptr<RecordedLines> Make(const std::vector<std::string>& axes = {},
                                        GapPlaying gaps = GapPlaying::kKeepTime) {
        auto writer = recording::RecordingWriter::Create(kPath, m_head, std::nullopt);
        for (const std::uint64_t line : m_lines) {
            const double values[] = {static_cast<double>(line), line % 2 == 0 ? 0.5 : -0.25};
            EXPECT_FALSE((*writer)->Append(line, values, 1));
        }
        EXPECT_FALSE((*writer)->Finish());
        auto reader = RecordingReader::Open(kPath);
        EXPECT_TRUE(reader);
        return RecordedLines::Make(std::move(*reader), axes, gaps, &m_error);
    }
    static std::vector<double> LineOf(const RecordedLines& lines, std::uint64_t number) {
        std::vector<double> values(lines.AxisNames().size());
        lines.Line(number, values);
        return values;
    }

    testing::MemoryDataFiles m_files;
    recording::RecordingHead m_head;
    std::vector<std::uint64_t> m_lines{10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 25, 26, 27, 28, 29};
    std::string m_error;
};

TEST_F(RecordedLinesTest, GapsKeepTheirTime) {
    const auto lines = Make();
    ASSERT_TRUE(lines) << m_error;
    EXPECT_THAT(lines->AxisNames(), ElementsAre("X", "Y"));
    EXPECT_EQ(lines->CycleTime(), 0.002);
    EXPECT_EQ(lines->LinesPerRound(), 20U);
    EXPECT_THAT(LineOf(*lines, 0), ElementsAre(10, 0.5));
    EXPECT_THAT(LineOf(*lines, 9), ElementsAre(19, -0.25));
    EXPECT_TRUE(std::isnan(LineOf(*lines, 10)[0]));
    EXPECT_TRUE(std::isnan(LineOf(*lines, 14)[1]));
    EXPECT_THAT(LineOf(*lines, 15), ElementsAre(25, -0.25));
    EXPECT_THAT(LineOf(*lines, 20'000'000'000'001), ElementsAre(11, -0.25)) << "rounds later";
}

TEST_F(RecordedLinesTest, GapsAreSkippedWhereThatIsWanted) {
    const auto lines = Make({"Y", "X"}, GapPlaying::kSkip);
    ASSERT_TRUE(lines) << m_error;
    EXPECT_THAT(lines->AxisNames(), ElementsAre("Y", "X"));
    ASSERT_EQ(lines->LinesPerRound(), m_lines.size());
    for (std::size_t i = 0; i < 2 * m_lines.size(); ++i) {
        EXPECT_EQ(LineOf(*lines, i)[1], static_cast<double>(m_lines[i % m_lines.size()]));
    }
}

TEST_F(RecordedLinesTest, LimitsAreThoseToldElseThoseReached) {
    m_head.limits = {recording::AxisLimits{-5, 50, 7, 8, 0.01}};
    const auto limits = LimitsOf(*Make({"Y", "X"}), 0.002);
    EXPECT_THAT(limits, ElementsAre(AxisLimits{"Y", {0.5, -0.25, 400.0, 500'000.0, 0.001}},
                                    AxisLimits{"X", {50, -5, 7, 8, 0.01}}));
}

TEST_F(RecordedLinesTest, WrongAxesAndEmptyRecordingsAreTold) {
    EXPECT_EQ(Make({"X", "Q"}), nullptr);
    EXPECT_EQ(m_error, "no axis \"Q\"; there are \"X\" \"Y\"");
    m_lines.clear();
    m_files.RemoveUnused(kPath);
    EXPECT_EQ(Make(), nullptr);
    EXPECT_EQ(m_error, "there are no lines in the recording");
}

}  // namespace
}  // namespace wavo::master
