// A recording as a history: rows of columns, values and sums.
#include "recording/recording_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "memory_data_files.h"
#include "sample_recording.h"

namespace wavo::recording {
namespace {

using testing::Append;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::MakeHead;
using testing::MakeLines;
using testing::MemoryDataFiles;
using testing::PlainLines;
using testing::RequireNoFault;
using testing::SameBits;

constexpr double kAbsentValue = -77.0;

class RecordedHistory : public ::testing::Test {
 protected:
    RecordedHistory() : m_lines(0.01) {
        auto writer = RecordingWriter::Create("a.mcap", MakeHead(2, 0.01), std::nullopt);
        EXPECT_TRUE(writer);
        for (const std::uint64_t first : {3U, 700U}) {
            const auto lines = MakeLines(2, 450, static_cast<unsigned>(first), true);
            Append(**writer, first, lines);
            m_lines.Add(first, lines);
        }
        RequireNoFault((*writer)->Finish());
        auto reader = RecordingReader::Open("a.mcap");
        EXPECT_TRUE(reader);
        m_reader = std::move(*reader);
    }

    MemoryDataFiles m_files;
    PlainLines m_lines;
    std::unique_ptr<RecordingReader> m_reader;
};

TEST_F(RecordedHistory, ColumnsAreThoseOfTheirLines) {
    std::mt19937 random(1);
    for (int round = 0; round < 60; ++round) {
        std::vector<std::int64_t> bounds{static_cast<std::int64_t>(random() % 200) - 50};
        while (bounds.size() < 12) {
            bounds.push_back(bounds.back() + random() % 200);
        }
        for (int order = 0; order < 4; ++order) {
            RecordingHistory history(*m_reader, 1, order, kAbsentValue);
            ColumnRow row;
            EXPECT_EQ(history.Columns(bounds, row), HistoryAnswer::kAll);
            ASSERT_EQ(row.first.size(), bounds.size() - 1);
            for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
                const auto at = [](std::int64_t bound) {
                    return static_cast<std::uint64_t>(std::max<std::int64_t>(bound, 0));
                };
                const auto expected = m_lines.Of(1, order, at(bounds[i]), at(bounds[i + 1]));
                EXPECT_TRUE(SameBits(row.first[i], expected.first));
                EXPECT_TRUE(SameBits(row.last[i], expected.last));
                EXPECT_EQ(row.minimum[i], expected.level.extremes.minimum);
                EXPECT_EQ(row.maximum[i], expected.level.extremes.maximum);
                const bool is_before = bounds[i] < 0 && bounds[i] < bounds[i + 1];
                EXPECT_EQ(row.missing[i] != 0, expected.level.missing || is_before);
            }
        }
    }
    ColumnRow row;
    RecordingHistory(*m_reader, 0, 0, kAbsentValue).Columns({}, row);
    EXPECT_TRUE(row.first.empty());
}

TEST_F(RecordedHistory, ValuesHaveWhatStandsForMissingOnes) {
    RecordingHistory history(*m_reader, 0, 0, kAbsentValue);
    EXPECT_EQ(history.Lines(), (LineRange{3, 1150}));
    std::vector<double> values(7);
    history.Values(-2, values);
    EXPECT_THAT(values,
                ElementsAre(kAbsentValue, kAbsentValue, kAbsentValue, kAbsentValue, kAbsentValue,
                            m_lines.Lines().at(3)[0], m_lines.Lines().at(4)[0]));
    history.Values(-100, values);
    EXPECT_EQ(values, std::vector<double>(7, kAbsentValue));
}

TEST_F(RecordedHistory, WhatIsAnnouncedIsReadThen) {
    RecordingHistory history(*m_reader, 1, 0, kAbsentValue);
    const LineRange lines{30, 400};
    const std::int64_t bounds[] = {lines.begin, lines.end};
    ColumnOutline column;
    ASSERT_TRUE(history.Outline(bounds, {&column, 1}));
    for (const Closeness closeness : {Closeness::kNear, Closeness::kExact}) {
        m_files.announced.clear();
        history.Announce(lines, column);
        const std::vector<MemoryDataFiles::Stretch> announced = m_files.announced;
        ASSERT_FALSE(announced.empty());
        m_files.reads.clear();
        ASSERT_EQ(history.LookCloser(lines, column), HistoryAnswer::kAll);
        ASSERT_EQ(column.closeness, closeness);
        for (const MemoryDataFiles::Stretch& stretch : announced) {
            EXPECT_THAT(m_files.reads, Contains(stretch));
        }
        // What is here is not read again.
        m_files.announced.clear();
        RecordingHistory(*m_reader, 1, 0, kAbsentValue).Announce(lines, ColumnOutline());
        EXPECT_TRUE(m_files.announced.empty());
    }
}

TEST_F(RecordedHistory, NothingIsAnnouncedThatMayNotBeRead) {
    ReadingBudget budget;
    budget.Renew(0);
    RecordingHistory history(*m_reader, 1, 0, kAbsentValue, &budget);
    history.Announce({30, 400}, ColumnOutline());
    EXPECT_TRUE(m_files.announced.empty());
}

TEST_F(RecordedHistory, SumsAreThoseOfTheFiniteValues) {
    for (int order = 0; order < 3; ++order) {
        std::uint64_t finite = 0;
        for (std::uint64_t line = 10; line < 1000; ++line) {
            const auto value = m_lines.Value(0, order, line);
            finite += value && std::isfinite(*value) ? 1 : 0;
        }
        RecordingHistory history(*m_reader, 0, order, kAbsentValue);
        HistorySums sums;
        history.Sums({10, 1000}, sums);
        EXPECT_EQ(sums.count, finite);
        history.Sums({1000, 10}, sums);
        EXPECT_EQ(sums.count, 0U);
        history.Sums({-10, 3}, sums);
        EXPECT_EQ(sums.count, 0U);
    }
}

TEST(RecordedEdges, AreFoundWithoutReadingWhatHasNoNumber) {
    const MemoryDataFiles files;
    auto writer = RecordingWriter::Create("a.mcap", MakeHead(1), std::nullopt);
    ASSERT_TRUE(writer);
    std::vector<double> values(300'000, testing::kNaN);
    values[150'003] = 7.0;
    values[150'005] = 8.0;
    RequireNoFault((*writer)->Append(0, values, values.size()));
    RequireNoFault((*writer)->Finish());
    auto reader = RecordingReader::Open("a.mcap");
    ASSERT_TRUE(reader);
    RecordingHistory history(**reader, 0, 0, kAbsentValue);
    ColumnRow row;
    history.Columns(std::vector<std::int64_t>{5, 299'990}, row);
    EXPECT_EQ(row.first[0], 7.0);
    EXPECT_EQ(row.last[0], 8.0);
    EXPECT_LT((*reader)->BytesRead(), 300'000U) << "of 13 MB";
}

TEST(RecordedSums, ArePreciseFarFromZeroAndOverPieces) {
    const MemoryDataFiles files;
    auto writer = RecordingWriter::Create("a.mcap", MakeHead(1), std::nullopt);
    ASSERT_TRUE(writer);
    std::vector<double> values;
    for (int i = 0; i < 200'000; ++i) {
        values.push_back(1e6 + (i % 2 == 0 ? 0.5 : -0.5));
    }
    RequireNoFault((*writer)->Append(0, values, values.size()));
    RequireNoFault((*writer)->Finish());
    auto reader = RecordingReader::Open("a.mcap");
    ASSERT_TRUE(reader);
    RecordingHistory history(**reader, 0, 0, kAbsentValue);
    HistorySums sums;
    history.Sums({0, 200'000}, sums);
    EXPECT_EQ(sums.count, 200'000U);
    EXPECT_DOUBLE_EQ(sums.Mean(), 1e6);
    EXPECT_NEAR(sums.sum_of_squares, 50'000.0, 1e-3);
}

}  // namespace
}  // namespace wavo::recording
