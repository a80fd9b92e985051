#include "graph/draw/raster/mapping.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "special_values.h"

namespace wavo {
namespace {

ScaleLines Horizontal(const std::vector<std::int32_t>& rows) {
    ScaleLines lines;
    for (const std::int32_t row : rows) {
        lines.push_back({0, row, 300, row, 0.0});
    }
    return lines;
}

ScaleLines Vertical(const std::vector<std::int32_t>& columns) {
    ScaleLines lines;
    for (const std::int32_t column : columns) {
        lines.push_back({column, 200, column, 0, 0.0});
    }
    return lines;
}

AxisMapping YMapping(double minimum, double maximum) {
    AxisMapping mapping(Coordinate::kY, Horizontal({200, 150, 100, 50, 0}));
    mapping.Fill({minimum, maximum});
    return mapping;
}

TEST(Mapping, SpreadsTheRangeOverAllLines) {
    const AxisMapping mapping = YMapping(0.0, 10.0);
    const std::vector<double> expected{0.0, 2.5, 5.0, 7.5, 10.0};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(mapping.Lines()[i].value, expected[i]);
    }
}

TEST(Mapping, MapsYBetweenTheScaleLines) {
    struct Row {
        double value;
        std::int32_t pixel;
    };
    for (const Row& row :
         {Row{2.5, 150}, Row{3.0, 140}, Row{12.0, 0}, Row{-1.0, 200}, Row{0.0, 200}, Row{10.0, 0},
          Row{5.0, 100}, Row{9.999, 0}, Row{kInf, 0}, Row{-kInf, 200}, Row{0.06, 198}}) {
        AxisMapping mapping = YMapping(0.0, 10.0);
        EXPECT_EQ(mapping.Map(row.value, false), row.pixel) << row.value;
    }
}

TEST(Mapping, MapsXFromTheLeftLineAndTruncates) {
    AxisMapping mapping(Coordinate::kX, Vertical({10, 110, 210}));
    mapping.Fill({0.0, 2.0});
    EXPECT_EQ(mapping.Map(0.0, true), 10);
    EXPECT_EQ(mapping.Map(0.5, true), 60);
    EXPECT_EQ(mapping.Map(0.999, true), 109);
    EXPECT_EQ(mapping.Map(1.25, true), 135);
    EXPECT_EQ(mapping.Map(2.5, true), 210);
    EXPECT_EQ(mapping.Map(-0.1, true), 10);
}

TEST(Mapping, FollowsLinesThatAreNotEvenlySpaced) {
    AxisMapping mapping(Coordinate::kX, Vertical({0, 10, 100}));
    mapping.Fill({0.0, 2.0});
    EXPECT_EQ(mapping.Map(0.5, true), 5);
    EXPECT_EQ(mapping.Map(1.5, true), 55);
}

TEST(Mapping, ReusesThePixelOfACloseValueUnlessForced) {
    AxisMapping mapping(Coordinate::kX, Vertical({0, 1000}));
    mapping.Fill({0.0, 1e-5});
    EXPECT_EQ(mapping.Map(0.0, false), 0);
    EXPECT_EQ(mapping.Map(0.955e-6, false), 0);
    EXPECT_EQ(mapping.Map(0.955e-6, true), 95);
    EXPECT_EQ(mapping.Map(3.005e-6, false), 300);
}

TEST(Mapping, FindsEverySegmentFromEveryOther) {
    for (int from = 0; from <= 10; ++from) {
        for (int to = 0; to <= 10; ++to) {
            AxisMapping used = YMapping(0.0, 10.0);
            (void)used.Map(from, true);
            AxisMapping fresh = YMapping(0.0, 10.0);
            EXPECT_EQ(used.Map(to, true), fresh.Map(to, true)) << from << " then " << to;
        }
    }
}

TEST(Mapping, HoldsForEveryRange) {
    struct Row {
        double minimum;
        double maximum;
        double value;
        std::int32_t pixel;
    };
    for (const Row& row : {
             Row{5.0, 5.0, 5.0, 100},  // no extent: the middle
             Row{5.0, 5.0, 6.0, 0},
             Row{5.0, 5.0, 4.0, 200},
             Row{0.0, 1e-300, 0.5e-300, 100},
             Row{0.0, 1e300, 0.25e300, 150},
             Row{-kMax, kMax, 0.0, 100},
             Row{-kMax, kMax, kMax, 0},
             Row{-kMax, kMax, -kMax, 200},
             Row{0.0, 5e-324, 0.0, 200},
             Row{10.0, 0.0, 5.0, 0},  // upside down: everything is beyond a border
             Row{kNaN, kNaN, 1.0, 200},
             Row{-kInf, kInf, 1.0, 200},
         }) {
        AxisMapping mapping = YMapping(row.minimum, row.maximum);
        EXPECT_EQ(mapping.Map(row.value, true), row.pixel)
            << row.minimum << " ... " << row.maximum << ": " << row.value;
    }
}

TEST(Mapping, NaNLeavesTheMemoryOfTheLastValueAlone) {
    AxisMapping mapping = YMapping(0.0, 10.0);
    EXPECT_EQ(mapping.Map(2.5, false), 150);
    (void)mapping.Map(kNaN, false);
    EXPECT_EQ(mapping.Map(2.5 + 1e-7, false), 150);
}

TEST(Mapping, WithoutLinesEverythingIsZero) {
    AxisMapping mapping(Coordinate::kY, {});
    mapping.Fill({0.0, 1.0});
    EXPECT_EQ(mapping.Map(0.5, true), 0);
}

TEST(Mapping, ScaleLinesIncludeBothBorders) {
    const QRect plot(10, 20, 101, 201);
    const ScaleLines vertical = VerticalScaleLines(plot, 3);
    ASSERT_EQ(vertical.size(), 5U);
    EXPECT_EQ(vertical.front(), (ScaleLine{10, 220, 10, 20, 0.0}));
    EXPECT_EQ(vertical[1].x1, 35);
    EXPECT_EQ(vertical.back(), (ScaleLine{110, 220, 110, 20, 0.0}));
    const ScaleLines horizontal = HorizontalScaleLines(plot, 3);
    ASSERT_EQ(horizontal.size(), 5U);
    EXPECT_EQ(horizontal.front(), (ScaleLine{10, 220, 110, 220, 0.0}));
    EXPECT_EQ(horizontal[2].y1, 120);
    EXPECT_EQ(horizontal.back(), (ScaleLine{10, 20, 110, 20, 0.0}));
}

TEST(Mapping, AHugeNumberOfLinesIsNotMade) {
    const std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(VerticalScaleLines(QRect(0, 0, 800, 400), huge).size(), kMostScaleLines + 2U);
    EXPECT_EQ(HorizontalScaleLines(QRect(0, 0, 800, 400), 1).size(), 3U);
}

TEST(Mapping, PixelConversionIsDefinedForEveryDouble) {
    EXPECT_EQ(ToPixel(1.99), 1);
    EXPECT_EQ(ToPixel(-1.99), -1);
    EXPECT_EQ(ToPixel(1e300), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(ToPixel(-kInf), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ToPixel(kNaN), 0);
    EXPECT_EQ(ToCount(2.99, 100), 2U);
    EXPECT_EQ(ToCount(-1.0, 100), 0U);
    EXPECT_EQ(ToCount(kNaN, 100), 0U);
    EXPECT_EQ(ToCount(kInf, 100), 100U);
    EXPECT_EQ(ToCount(1e30, std::numeric_limits<std::uint64_t>::max()),
              std::numeric_limits<std::uint64_t>::max());
}

TEST(Mapping, ColumnsBecomeValues) {
    ScaleLines lines = Vertical({100, 200, 400});
    FillScaleValues(lines, {0.0, 10.0});
    EXPECT_DOUBLE_EQ(ValueAtColumn(lines, 100), 0.0);
    EXPECT_DOUBLE_EQ(ValueAtColumn(lines, 150), 2.5);
    EXPECT_DOUBLE_EQ(ValueAtColumn(lines, 200), 5.0);
    EXPECT_DOUBLE_EQ(ValueAtColumn(lines, 300), 7.5);
    EXPECT_DOUBLE_EQ(ValueAtColumn(lines, 400), 10.0);
    EXPECT_EQ(ValueAtColumn(lines, 99), -1.0);
    EXPECT_EQ(ValueAtColumn(lines, 401), -1.0);
    EXPECT_EQ(ValueAtColumn({}, 0), -1.0);
    const ScaleLines same = Vertical({100, 100});
    EXPECT_EQ(ValueAtColumn(same, 100), 0.0);
}

}  // namespace
}  // namespace wavo
