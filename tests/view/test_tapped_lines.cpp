// Columns of the lines as they come: which ones, gaps, how many are kept.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "session/plane_axes.h"
#include "session/tapped_lines.h"
#include "session/value_streams.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(PlaneOf, TakesActualAndCommandedColumnsOfAnAxisByAnyOfItsNames) {
    const std::vector<std::string> names{"X_cmd", "Y_cmd", "Z_cmd", "X_act", "Y_fb", "Z"};
    for (const char* x : {"X", "X_cmd", "X_act"}) {
        for (const char* y : {"Y", "Y_cmd", "Y_fb"}) {
            const PlaneAxes plane = PlaneOf(x, y, names);
            EXPECT_EQ(plane.first + plane.second, "XY");
            EXPECT_TRUE(plane.has_commanded);
            EXPECT_THAT(plane.columns, ElementsAre("X_act", "Y_fb", "X_cmd", "Y_cmd", "Z"));
            EXPECT_EQ(plane.FirstOther(), 4U);
        }
    }
    const PlaneAxes actual = PlaneOf("Y", "U", {"U", "X", "Y", "Y_cmd"});
    EXPECT_FALSE(actual.has_commanded);
    EXPECT_THAT(actual.columns, ElementsAre("Y", "U", "X"));
    EXPECT_THAT(PlaneOf("A", "B", {}).columns, ElementsAre("A", "B"));
}

class Tapped : public ::testing::Test {
 protected:
    Tapped() { m_lines.TakeAxes({"Y", "N", "X"}); }

    /// Lines from `first` on: X is the number of the line, Y minus that.
    void Take(std::int64_t first, std::int64_t count) {
        std::vector<double> values;
        for (std::int64_t i = 0; i < count; ++i) {
            const auto line = static_cast<double>(first + i);
            values.insert(values.end(), {-line, 0.5, line});
        }
        m_lines.TakeLines(first, {values.data(), static_cast<std::uint64_t>(count), 3});
    }
    std::vector<double> Read(std::size_t column, std::int64_t first, std::size_t count) {
        std::vector<double> values(count);
        m_lines.Read(column, first, values);
        return values;
    }
    LineRange Lines() { return m_lines.Lines(); }

    TappedLines m_lines{{"X", "Y"}};
};

TEST_F(Tapped, KeepsItsColumnsByTheNumbersOfTheLines) {
    Take(10, 3);
    Take(13, 2);
    EXPECT_EQ(Lines(), (LineRange{10, 15}));
    EXPECT_THAT(Read(0, 10, 5), ElementsAre(10, 11, 12, 13, 14));
    EXPECT_THAT(Read(1, 13, 2), ElementsAre(-13, -14));
    const auto beyond = Read(0, 9, 7);
    EXPECT_TRUE(std::isnan(beyond.front()));
    EXPECT_TRUE(std::isnan(beyond.back()));
    EXPECT_EQ(beyond[1], 10.0);
}

TEST_F(Tapped, PutsMissingValuesWhereLinesAreMissing) {
    Take(0, 2);
    Take(4, 1);
    EXPECT_EQ(Lines(), (LineRange{0, 5}));
    const auto values = Read(0, 0, 5);
    EXPECT_TRUE(std::isnan(values[2]) && std::isnan(values[3]));
    EXPECT_EQ(values[4], 4.0);
}

TEST_F(Tapped, BeginsAnewWhereLinesDoNotFollow) {
    Take(100, 5);
    m_lines.BeginAnew();
    EXPECT_EQ(Lines().Count(), 0);
    Take(105, 2);
    EXPECT_EQ(Lines(), (LineRange{105, 107}));
    Take(50, 2);  // numbers that were there already
    EXPECT_EQ(Lines(), (LineRange{50, 52}));
    Take(52 + TappedLines::kMost, 1);  // a gap that leaves nothing
    EXPECT_EQ(Lines(), (LineRange{52 + TappedLines::kMost, 53 + TappedLines::kMost}));
}

TEST_F(Tapped, AColumnThatIsNotThereHasNoValues) {
    Take(0, 2);
    m_lines.TakeAxes({"Y"});
    const std::vector<double> line{7.0};
    m_lines.TakeLines(2, {line.data(), 1, 1});
    EXPECT_TRUE(std::isnan(Read(0, 2, 1)[0]));
    EXPECT_EQ(Read(1, 2, 1)[0], 7.0);
}

TEST_F(Tapped, KeepsTheNewestLinesAndWhatIsNeeded) {
    Take(0, 100);
    m_lines.KeepFrom(40);
    EXPECT_EQ(Lines(), (LineRange{40, 100}));
    EXPECT_EQ(Read(0, 40, 1)[0], 40.0);
    m_lines.KeepFrom(10);
    EXPECT_EQ(Lines(), (LineRange{40, 100}));
    for (std::int64_t first = 100; first < 5 * TappedLines::kMost / 2; first += 65536) {
        Take(first, 65536);
    }
    EXPECT_EQ(Lines().Count(), TappedLines::kMost);
    const std::int64_t end = Lines().end;
    EXPECT_EQ(Read(0, end - 1, 1)[0], static_cast<double>(end - 1));
    EXPECT_EQ(Read(1, Lines().begin, 1)[0], -static_cast<double>(Lines().begin));
    m_lines.KeepFrom(end + 5);
    EXPECT_EQ(Lines().Count(), 0);
    Take(end, TappedLines::kMost + 3);  // more than there is room for
    EXPECT_EQ(Lines(), (LineRange{end + 3, end + 3 + TappedLines::kMost}));
    EXPECT_EQ(Read(0, end + 3, 1)[0], static_cast<double>(end + 3));
}

TEST_F(Tapped, BeginAnewWithAnyAxisThatDoes) {
    ValueStreams streams;
    streams.AddTap(m_lines);
    const std::vector<double> line{1.0, 2.0};
    streams.ListBuffers({"X", "Y"});
    streams.Distribute({line.data(), 1, 2});
    streams.BeginAnew({});
    EXPECT_EQ(Lines(), (LineRange{0, 1}));
    EXPECT_EQ(Read(1, 0, 1)[0], 2.0);
    streams.BeginAnew({"Y"});
    EXPECT_EQ(Lines().Count(), 0);
    streams.RemoveTap(m_lines);
    streams.Distribute({line.data(), 1, 2});
    EXPECT_EQ(Lines().Count(), 0);
}

}  // namespace
}  // namespace wavo
