#include "graph/draw/raster/dash_pattern.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

namespace wavo {
namespace {

/// What a pattern paints of some columns: "##..##".
std::string PaintedColumns(const DashPattern& pattern, std::int32_t count) {
    std::string columns;
    for (std::int32_t column = 0; column < count; ++column) {
        columns += pattern.Paints(column) ? '#' : '.';
    }
    return columns;
}

/// The rows of a column that are painted.
std::set<int> RowsOf(const ColumnSpans& spans, std::int32_t column) {
    std::set<int> rows;
    const auto add = [&rows](int top, int bottom) {
        for (int row = top; row <= bottom; ++row) {
            rows.insert(row);
        }
    };
    add(spans.top[static_cast<std::size_t>(column)],
        spans.bottom[static_cast<std::size_t>(column)]);
    for (const ColumnSpans::Span& span : spans.more) {
        if (span.column == column) {
            add(span.top, span.bottom);
        }
    }
    return rows;
}

TEST(DashPattern, TheFirstCurveIsSolid) {
    EXPECT_TRUE(DashPattern().IsSolid());
    EXPECT_TRUE(DashPattern(0, 2.0).IsSolid());
    EXPECT_EQ(PaintedColumns(DashPattern(0, 1.0), 8), "########");
}

TEST(DashPattern, EachOfTheOthersIsOfItsOwnAndBeginsWithADash) {
    std::set<std::string> seen;
    for (std::size_t curve = 0; curve < DashPattern::kPatterns; ++curve) {
        const std::string columns = PaintedColumns(DashPattern(curve, 1.0), 120);
        EXPECT_TRUE(seen.insert(columns).second) << curve;
        EXPECT_EQ(columns.front(), '#') << curve;
        EXPECT_EQ(PaintedColumns(DashPattern(curve + DashPattern::kPatterns, 1.0), 120), columns);
    }
    EXPECT_EQ(PaintedColumns(DashPattern(1, 1.0), 20), "############......##");
    EXPECT_EQ(PaintedColumns(DashPattern(2, 1.0), 14), "##....##....##");
    EXPECT_EQ(PaintedColumns(DashPattern(3, 1.0), 24), "############....##....##");
}

TEST(DashPattern, GrowsWithThePixelsOfTheDevice) {
    EXPECT_EQ(PaintedColumns(DashPattern(2, 2.0), 24), "####........####........");
    EXPECT_EQ(PaintedColumns(DashPattern(2, 0.1), 4), "#.#.");
    EXPECT_EQ(DashPattern(2, -1.0), DashPattern(2, 1.0));
    EXPECT_EQ(DashPattern(2, 1e9), DashPattern(2, 16.0));
}

TEST(DashPattern, LeavesColumnsWithDashesWholeAndPaintsNothingElse) {
    std::mt19937_64 random(7);
    constexpr std::int32_t kColumns = 300;
    for (std::size_t curve = 1; curve < DashPattern::kPatterns; ++curve) {
        const DashPattern pattern(curve, 1.0);
        ColumnSpans whole;
        whole.Clear(kColumns);
        for (std::int32_t column = 0; column < kColumns; ++column) {
            if (random() % 8 != 0) {
                const auto top = static_cast<std::int32_t>(random() % 100);
                whole.Add(column, top, top + static_cast<std::int32_t>(random() % 40));
            }
            if (random() % 8 == 0) {
                whole.Add(column, 180, 180 + static_cast<std::int32_t>(random() % 40));
            }
        }
        ColumnSpans dashed;
        pattern.Cut(whole, dashed);
        ASSERT_EQ(dashed.Columns(), kColumns);
        for (std::int32_t column = 0; column < kColumns; ++column) {
            const std::set<int> all = RowsOf(whole, column);
            const std::set<int> painted = RowsOf(dashed, column);
            if (pattern.Paints(column)) {
                EXPECT_EQ(painted, all) << column;
            }
            for (const int row : painted) {
                EXPECT_TRUE(all.contains(row)) << column << " " << row;
            }
        }
    }
}

TEST(DashPattern, NoSpikeFallsIntoAGap) {
    const DashPattern pattern(1, 1.0);
    ASSERT_FALSE(pattern.Paints(14));
    ColumnSpans whole;
    ColumnSpans dashed;
    whole.Clear(20);
    whole.Add(13, 50, 57);  // eight rows: what a gap may hide
    whole.Add(14, 50, 58);
    whole.Add(15, 20, 119);
    pattern.Cut(whole, dashed);
    EXPECT_EQ(RowsOf(dashed, 13), std::set<int>());
    EXPECT_EQ(RowsOf(dashed, 14), (std::set<int>{50, 51, 52, 53, 55, 56, 57, 58}));
    EXPECT_EQ(RowsOf(dashed, 15), (std::set<int>{20, 21, 22, 23, 116, 117, 118, 119}));
}

}  // namespace
}  // namespace wavo
