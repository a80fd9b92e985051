#include "graph/draw/frame/scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "expect_errors.h"
#include "special_values.h"

namespace wavo {
namespace {

ScaleDefinition Axis(ScaleAxCode kind, double minimum, double maximum) {
    return {ScaleTypeCode::kAxis, 3.0, kind, minimum, maximum};
}

Extremes NoPoints() {
    return {};
}

TEST(Scale, RangeOfEachKindOfScale) {
    EXPECT_EQ(GraphDefineGetMinMaxValue({ScaleTypeCode::kTime, 2.5, ScaleAxCode{}, 7.0, 8.0}),
              (ScaleRange{0.0, 2.5}));
    EXPECT_EQ(GraphDefineGetMinMaxValue(Axis(ScaleAxCode::kAutomatic, -1.0, 2.0)),
              (ScaleRange{-1.0, 2.0}));
    EXPECT_EQ(GraphDefineGetMinMaxValue(Axis(ScaleAxCode::kManual, -3.0, 4.0)),
              (ScaleRange{-3.0, 4.0}));
}

TEST(Scale, UnknownKindsAreReportedAndEmpty) {
    const testing::ExpectErrorLog expected({"GraphDefineGetMinMaxValue(): invalid ScaleAx",
                                            "GraphDefineGetMinMaxValue(): invalid ScaleType",
                                            "GraphDefineGetMinMaxValue(): invalid ScaleType"});
    EXPECT_EQ(GraphDefineGetMinMaxValue(Axis(static_cast<ScaleAxCode>(3), 1.0, 2.0)), ScaleRange{});
    EXPECT_EQ(GraphDefineGetMinMaxValue(
                  {static_cast<ScaleTypeCode>(3), 5.0, ScaleAxCode::kManual, 1.0, 2.0}),
              ScaleRange{});
    EXPECT_EQ(GraphDefineGetMinMaxValue(ScaleDefinition{}), ScaleRange{});
}

TEST(Scale, LinesCutTheScaleIntoOnePartMore) {
    EXPECT_DOUBLE_EQ(ScaleSpacing({-10.0, 10.0}, 3), 5.0);
    EXPECT_DOUBLE_EQ(ScaleSpacing({0.0, 12.0}, 5), 2.0);
    EXPECT_DOUBLE_EQ(ScaleSpacing({-kMax, kMax}, 3), kMax / 2.0);
    EXPECT_GT(ScaleSpacing({0.0, 1.0}, std::numeric_limits<std::int32_t>::max()), 0.0);
}

TEST(AutoScale, FirstValueSetsBothSides) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, -99.0, 99.0);
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({2.0, 4.0}), 1000, NoPoints));
    EXPECT_DOUBLE_EQ(scale.Minimum, 2.0 - 2.0 / 20);
    EXPECT_DOUBLE_EQ(scale.Maximum, 4.0 + 2.0 / 20);
}

TEST(AutoScale, OnlyTheSideThatChangedGetsTheMargin) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    (void)automatic.Check(scale, ExtremesOf({0.0, 10.0}), 1000, NoPoints);
    automatic.CountDrawn(2);
    const double minimum = scale.Minimum;
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({12.0}), 1000, NoPoints));
    EXPECT_DOUBLE_EQ(scale.Maximum, 12.6);
    EXPECT_EQ(scale.Minimum, minimum);
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({-8.0}), 1000, NoPoints));
    EXPECT_DOUBLE_EQ(scale.Maximum, 12.6);
    EXPECT_DOUBLE_EQ(scale.Minimum, -9.0);
}

TEST(AutoScale, ValuesInsideChangeNothing) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    (void)automatic.Check(scale, ExtremesOf({0.0, 10.0}), 1000, NoPoints);
    automatic.CountDrawn(1);
    const ScaleDefinition before = scale;
    EXPECT_FALSE(automatic.Check(scale, ExtremesOf({5.0, 0.0, 10.0}), 1000, NoPoints));
    EXPECT_FALSE(automatic.Check(scale, ExtremesOf({}), 1000, NoPoints));
    EXPECT_EQ(scale, before);
}

TEST(AutoScale, AConstantSignalGetsAScale) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({5.0}), 1000, NoPoints));
    EXPECT_NEAR(scale.Maximum, 5.0 + 1e-6 + 2e-6 / 20, 1e-12);
    EXPECT_NEAR(scale.Minimum, 5.0 - 1e-6 - 2e-6 / 20, 1e-12);
}

TEST(AutoScale, ShrinksAfterATenthOfTheCurve) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    int asked = 0;
    const auto held = [&asked] {
        ++asked;
        Extremes points;
        points.Add(1.0);
        points.Add(3.0);
        return points;
    };
    (void)automatic.Check(scale, ExtremesOf({-100.0, 100.0}), 109, NoPoints);
    automatic.CountDrawn(9);
    EXPECT_FALSE(automatic.Check(scale, ExtremesOf({2.0}), 109, held));
    EXPECT_EQ(asked, 0);
    automatic.CountDrawn(1);  // 109 / 10 is 10: reached
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({2.0}), 109, held));
    EXPECT_EQ(asked, 1);
    EXPECT_DOUBLE_EQ(scale.Minimum, 0.9);
    EXPECT_DOUBLE_EQ(scale.Maximum, 3.1);
    EXPECT_FALSE(automatic.Check(scale, ExtremesOf({2.0}), 109, held)) << "the count starts again";
    EXPECT_EQ(asked, 1);
}

TEST(AutoScale, ACurveOfFewPointsMayShrinkEachTime) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    const auto held = [] {
        Extremes points;
        points.Add(1.0);
        points.Add(2.0);
        return points;
    };
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({}), 9, held));
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({}), 9, held));
}

TEST(AutoScale, AManualScaleIsLeftAloneAndResetsTheCount) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    (void)automatic.Check(scale, ExtremesOf({0.0, 10.0}), 100, NoPoints);
    automatic.CountDrawn(50);
    scale.ScaleAx = ScaleAxCode::kManual;
    const ScaleDefinition before = scale;
    EXPECT_FALSE(automatic.Check(scale, ExtremesOf({1000.0}), 100, NoPoints));
    EXPECT_EQ(scale, before);
    scale.ScaleAx = ScaleAxCode::kAutomatic;
    int asked = 0;
    const auto held = [&asked] {
        ++asked;
        return Extremes{};
    };
    (void)automatic.Check(scale, ExtremesOf({5.0}), 100, held);
    EXPECT_EQ(asked, 0);
}

TEST(AutoScale, ValuesThatAreNotFiniteNeverTouchIt) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, -1.0, 1.0);
    const ScaleDefinition before = scale;
    EXPECT_FALSE(automatic.Check(scale, ExtremesOf({kNaN, kInf, -kInf}), 1000, NoPoints));
    EXPECT_EQ(scale, before);
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({kNaN, 4.0, kInf, 6.0, -kInf}), 1000, NoPoints));
    EXPECT_DOUBLE_EQ(scale.Minimum, 3.9);
    EXPECT_DOUBLE_EQ(scale.Maximum, 6.1);
}

TEST(AutoScale, TheLargestNumbersStayFinite) {
    AutoScale automatic;
    ScaleDefinition scale = Axis(ScaleAxCode::kAutomatic, 0.0, 0.0);
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({-kMax, kMax}), 1000, NoPoints));
    EXPECT_EQ(scale.Minimum, -kMax);
    EXPECT_EQ(scale.Maximum, kMax);
    automatic.Reset();
    EXPECT_TRUE(automatic.Check(scale, ExtremesOf({1e300, 1e300}), 1000, NoPoints));
    EXPECT_EQ(scale.Minimum, 1e300);
    EXPECT_EQ(scale.Maximum, 1e300);
}

}  // namespace
}  // namespace wavo
