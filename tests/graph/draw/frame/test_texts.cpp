#include "graph/draw/frame/texts.h"

#include <gtest/gtest.h>

#include <limits>

#include "drawing_fixture.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::ManualScale;
using testing::TimeGraph;
using testing::TimeScale;

TEST(Texts, NumbersKeepOneDigitAfterThePoint) {
    struct Row {
        double value;
        const char* text;
    };
    for (const Row& row :
         {Row{1.5, "1.5"}, Row{2.0, "2.0"}, Row{0.0001, "0.0001"}, Row{-3.25, "-3.25"},
          Row{0.0, "0.0"}, Row{100.0, "100.0"}, Row{1.0 / 3.0, "0.333333"}, Row{1e-7, "0.0"},
          Row{-1e-7, "-0.0"}, Row{1234567.891, "1234567.891"},
          Row{std::numeric_limits<double>::infinity(), "inf"}}) {
        EXPECT_EQ(FormatNumber(row.value), row.text);
    }
    EXPECT_EQ(FormatNumber(1e300).size(), 303U);
    EXPECT_EQ(FormatNumber(-std::numeric_limits<double>::max()).substr(0, 6), "-17976");
}

TEST(Texts, XIsTime) {
    const WavoGraph graph = TimeGraph(10.0);
    EXPECT_EQ(XText(graph, {}), "T: (0 ... 10.0)s");
    EXPECT_EQ(XText(graph, {1.0, 3.0}), "T: (1.0 ... 3.0)s");
    EXPECT_EQ(XText(graph, {1.0, 1.0 + 0.9e-6}), "T: (0 ... 10.0)s");
    EXPECT_EQ(XText(graph, {1.0, 1.000002}), "T: (1.0 ... 1.000002)s");
    EXPECT_EQ(XText(graph, {3.0, 1.0}), "T: (3.0 ... 1.0)s");
    EXPECT_EQ(XSpacingText(graph, graph.XScale, 4), "dT=2.0s");
    EXPECT_EQ(XSpacingText(graph, TimeScale(0.5), 4), "dT=0.1s");
}

TEST(Texts, XIsAnAxis) {
    const WavoGraph graph = AxisGraph(1.0, ManualScale(-2.5, 12.5), ManualScale(0.0, 1.0));
    EXPECT_EQ(XText(graph, {}), "X: X=(-2.5 ... 12.5)");
    EXPECT_EQ(XText(graph, {1.0, 3.0}), "X: X=(-2.5 ... 12.5)");
    EXPECT_EQ(XSpacingText(graph, graph.XScale, 2), "X:   dx=5.0");
}

TEST(Texts, YTellsRangeAndSpacing) {
    WavoGraph graph = TimeGraph(10.0);
    AddAxis(graph, "X1", ManualScale(-10.0, 10.0));
    AddAxis(graph, "X1", ManualScale(-1.0, 1.0), TriggerTypeCode::kNone, 0.0, 1);
    AddAxis(graph, "Z", ManualScale(0.0, 4.0), TriggerTypeCode::kNone, 0.0, 2);
    AddAxis(graph, "T", TimeScale(4.0));
    EXPECT_EQ(YText(graph, 0), "Y: X1=(-10.0 ... 10.0)");
    EXPECT_EQ(YSpacingText(graph, 0, 3), "X1:   dy=5.0");
    EXPECT_EQ(YText(graph, 1), "Y: X1=(-1.0 ... 1.0)");
    EXPECT_EQ(YSpacingText(graph, 1, 3), "X1':   dy=0.5");
    EXPECT_EQ(YSpacingText(graph, 2, 3), "Z'':   dy=1.0");
    EXPECT_EQ(YText(graph, 3), "?");
}

TEST(Texts, AUnitStandsBehindTheRange) {
    WavoGraph graph = TimeGraph(10.0);
    AddAxis(graph, "v", ManualScale(0.0, 4.0));
    AxisText text = YAxisText(graph, 0, "v");
    text.unit = "mm/s";
    EXPECT_EQ(Joined(text), "Y: v=(0.0 ... 4.0)mm/s");
}

TEST(Texts, UnitsOfDerivatives) {
    EXPECT_EQ(DerivedUnit("mm", 0), "mm");
    EXPECT_EQ(DerivedUnit("mm", 1), "mm/s");
    EXPECT_EQ(DerivedUnit("mm", 2), "mm/s²");
    EXPECT_EQ(DerivedUnit("mm/s", 1), "mm/s²");
    EXPECT_EQ(DerivedUnit("mm/s²", 1), "mm/s³");
    EXPECT_EQ(DerivedUnit("1/min", 1), "1/min/s");
    EXPECT_EQ(DerivedUnit("mm/s", -1), "mm/s");
    EXPECT_EQ(DerivedUnit("m", 9), "m/s⁹");
    EXPECT_EQ(DerivedUnit("m/s", 9), "") << "there is no sign for it";
    EXPECT_EQ(DerivedUnit("", 1), "");
    EXPECT_EQ(DerivedUnit("s", 1), "s/s");
}

}  // namespace
}  // namespace wavo
