#include "graph/model/wavo_graph.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "link/axis_capabilities.h"
#include "special_values.h"

namespace wavo {
namespace {

class TableOfLimits : public AxisLimitsSource {
 public:
    void Add(const std::string& name, double lower, double upper) {
        AxisCapabilities axis;
        axis.lower_limit = lower;
        axis.upper_limit = upper;
        m_axes[name] = axis;
    }
    std::optional<AxisCapabilities> FindAxis(const std::string& name) override {
        m_asked = name;
        const auto found = m_axes.find(name);
        if (found == m_axes.end()) {
            return std::nullopt;
        }
        return found->second;
    }
    const std::string& Asked() const { return m_asked; }

 private:
    std::map<std::string, AxisCapabilities> m_axes;
    std::string m_asked;
};

TEST(WavoGraphTest, FreshRecordIsEmptyWithoutCircles) {
    const WavoGraph graph;
    EXPECT_EQ(graph.GraphNumber, 0U);
    EXPECT_EQ(static_cast<int>(graph.Mode), 0);
    EXPECT_EQ(static_cast<int>(graph.ModeAx), 0);
    EXPECT_FALSE(graph.AutoCircle);
    EXPECT_FALSE(graph.ZeroLines);
    EXPECT_EQ(graph.FadeOutTime, 0.0);
    EXPECT_EQ(static_cast<int>(graph.XCoorType), 0);
    EXPECT_EQ(graph.XCoorAxName, "");
    EXPECT_TRUE(graph.YCoorAxName.empty());
    EXPECT_TRUE(graph.YCoorAxColor.empty());
    EXPECT_TRUE(graph.YCoorAxDerivation.empty());
    EXPECT_TRUE(graph.Triggers.empty());
    EXPECT_EQ(graph.XScale, ScaleDefinition{});
    EXPECT_EQ(static_cast<int>(graph.XScale.ScaleType), 0);
    EXPECT_TRUE(graph.YScales.empty());
    EXPECT_EQ(graph.InnerGuidingCircleDX, 1.7976931348623157e308);
    EXPECT_EQ(graph.InnerGuidingCircleDY, 1.7976931348623157e308);
    EXPECT_EQ(graph.OuterGuidingCircleDX, 1.7976931348623157e308);
    EXPECT_EQ(graph.OuterGuidingCircleDY, 1.7976931348623157e308);
}

TEST(WavoGraphTest, EnumerationCodesAreThoseOfTheFiles) {
    EXPECT_EQ(static_cast<int>(GraphMode::kClassic), 1);
    EXPECT_EQ(static_cast<int>(GraphMode::kContinuity), 2);
    EXPECT_EQ(static_cast<int>(AxisDrawMode::kLines), 1);
    EXPECT_EQ(static_cast<int>(AxisDrawMode::kPoints), 2);
    EXPECT_EQ(static_cast<int>(CoorType::kTime), 1);
    EXPECT_EQ(static_cast<int>(CoorType::kAxis), 2);
    EXPECT_EQ(static_cast<int>(ScaleTypeCode::kTime), 1);
    EXPECT_EQ(static_cast<int>(ScaleTypeCode::kAxis), 2);
    EXPECT_EQ(static_cast<int>(ScaleAxCode::kAutomatic), 1);
    EXPECT_EQ(static_cast<int>(ScaleAxCode::kManual), 2);
    EXPECT_EQ(static_cast<int>(TriggerTypeCode::kNone), 1);
    EXPECT_EQ(static_cast<int>(TriggerTypeCode::kStartAbove), 2);
    EXPECT_EQ(static_cast<int>(TriggerTypeCode::kStartBelow), 3);
    EXPECT_EQ(static_cast<int>(TriggerTypeCode::kStopAbove), 4);
    EXPECT_EQ(static_cast<int>(TriggerTypeCode::kStopBelow), 5);
    EXPECT_EQ(sizeof(GraphMode), 4U);
    EXPECT_EQ(sizeof(TriggerTypeCode), 4U);
}

TEST(WavoGraphTest, HasAVirtualDestructor) {
    EXPECT_TRUE(std::has_virtual_destructor_v<WavoGraph>);
}

TEST(WavoGraphTest, InitGraphWithAnAxisSetsAllDefaults) {
    TableOfLimits limits;
    limits.Add("X", -250.0, 750.5);
    WavoGraph graph;
    graph.XCoorAxName = "left over";
    graph.XCoorType = CoorType::kAxis;
    graph.InnerGuidingCircleDX = 3.0;
    graph.OuterGuidingCircleDY = 4.0;
    graph.InitGraph(7, "X", 0x00FFFFFF, &limits);
    EXPECT_EQ(limits.Asked(), "X");
    EXPECT_EQ(graph.GraphNumber, 7U);
    EXPECT_EQ(graph.Mode, GraphMode::kContinuity);
    EXPECT_EQ(graph.ModeAx, AxisDrawMode::kPoints);
    EXPECT_EQ(graph.XCoorType, CoorType::kTime);
    EXPECT_EQ(graph.XCoorAxName, "");
    EXPECT_TRUE(graph.AutoCircle);
    EXPECT_TRUE(graph.ZeroLines);
    EXPECT_EQ(graph.FadeOutTime, 1.0);
    EXPECT_EQ(graph.YCoorAxName, std::vector<std::string>{"X"});
    EXPECT_EQ(graph.YCoorAxColor, std::vector<ColorRef>{0x00000000});
    EXPECT_EQ(graph.YCoorAxDerivation, std::vector<std::int32_t>{0});
    ASSERT_EQ(graph.Triggers.size(), 1U);
    EXPECT_EQ(graph.Triggers[0], (TriggerEntry{TriggerTypeCode::kNone, 0.0, ""}));
    EXPECT_EQ(graph.XScale.ScaleType, ScaleTypeCode::kTime);
    EXPECT_EQ(graph.XScale.TimeRange, 10.0);
    ASSERT_EQ(graph.YScales.size(), 1U);
    EXPECT_EQ(graph.YScales[0],
              (ScaleDefinition{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -250.0, 750.5}));
    EXPECT_EQ(graph.InnerGuidingCircleDX, kNoRadius);
    EXPECT_EQ(graph.InnerGuidingCircleDY, kNoRadius);
    EXPECT_EQ(graph.OuterGuidingCircleDX, kNoRadius);
    EXPECT_EQ(graph.OuterGuidingCircleDY, kNoRadius);
}

TEST(WavoGraphTest, YScaleFollowsTheLimitsOfTheAxis) {
    struct Row {
        double lower, upper, minimum, maximum;
    };
    const Row rows[] = {
        {-10.0, 5e9, -10.0, 1e8}, {-5e9, 10.0, -1e8, 10.0},
        {-1e8, 1e8, -1e8, 1e8},   {-100000001.0, 100000001.0, -1e8, 1e8},
        {0.0, 0.0, 0.0, 0.0},     {-kInf, kInf, -1e8, 1e8},
        {kNaN, kNaN, -1e8, 1e8},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.lower << " to " << row.upper);
        TableOfLimits limits;
        limits.Add("C1", row.lower, row.upper);
        WavoGraph graph;
        graph.InitGraph(1, "C1", 0, &limits);
        ASSERT_EQ(graph.YScales.size(), 1U);
        EXPECT_EQ(graph.YScales[0].Minimum, row.minimum);
        EXPECT_EQ(graph.YScales[0].Maximum, row.maximum);
    }
}

TEST(WavoGraphTest, UnknownAxisGetsTenToBothSides) {
    TableOfLimits limits;
    limits.Add("X", -1.0, 1.0);
    for (AxisLimitsSource* source :
         {static_cast<AxisLimitsSource*>(&limits), static_cast<AxisLimitsSource*>(nullptr)}) {
        WavoGraph graph;
        graph.InitGraph(1, "x", 0, source);
        ASSERT_EQ(graph.YScales.size(), 1U);
        EXPECT_EQ(graph.YScales[0].Minimum, -10.0);
        EXPECT_EQ(graph.YScales[0].Maximum, 10.0);
    }
}

TEST(WavoGraphTest, InitGraphAgainAppendsAnotherAxis) {
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    graph.InitGraph(2, "Y", 0x00102030, nullptr);
    EXPECT_EQ(graph.GraphNumber, 2U);
    EXPECT_EQ(graph.YCoorAxName, (std::vector<std::string>{"X", "Y"}));
    EXPECT_EQ(graph.YCoorAxColor, (std::vector<ColorRef>{0x00FFFFFF, 0x00EFDFCF}));
    EXPECT_EQ(graph.YCoorAxDerivation.size(), 2U);
    EXPECT_EQ(graph.Triggers.size(), 2U);
    EXPECT_EQ(graph.YScales.size(), 2U);
}

TEST(WavoGraphTest, InitGraphWithoutAnAxisLeavesOneScaleMoreThanBefore) {
    TableOfLimits limits;
    limits.Add("", -3.0, 3.0);
    WavoGraph graph;
    graph.InitGraph(3, "X", 0, nullptr);
    graph.InitGraph(4, "Y", 0, nullptr);
    graph.InitGraph(5, nullptr, 0, &limits);
    EXPECT_TRUE(graph.YCoorAxName.empty());
    EXPECT_TRUE(graph.YCoorAxColor.empty());
    EXPECT_TRUE(graph.YCoorAxDerivation.empty());
    EXPECT_TRUE(graph.Triggers.empty());
    ASSERT_EQ(graph.YScales.size(), 3U);
    EXPECT_EQ(graph.YScales[2],
              (ScaleDefinition{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -10.0, 10.0}));
}

TEST(WavoGraphTest, ComplementColorTurnsEachColourByte) {
    EXPECT_EQ(ComplementColor(0x00FFFFFF), 0x00000000U);
    EXPECT_EQ(ComplementColor(0x00000000), 0x00FFFFFFU);
    // Red 48, green 32, blue 16 gives 207, 223, 239.
    EXPECT_EQ(ComplementColor(48U | 32U << 8U | 16U << 16U), 207U | 223U << 8U | 239U << 16U);
    EXPECT_EQ(ComplementColor(0xFF000000), 0x00FFFFFFU);
    EXPECT_EQ(ComplementColor(0x12FFFFFF), 0x00000000U);
}

WavoGraph GraphWithCircles() {
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    graph.XScale.Minimum = 0.0;
    graph.XScale.Maximum = 100.0;
    graph.YScales[0].Minimum = -5.0;
    graph.YScales[0].Maximum = 5.0;
    graph.InnerGuidingCircleDX = 10.0;
    graph.OuterGuidingCircleDX = 20.0;
    return graph;
}

TEST(WavoGraphTest, AutoCirclesAreRoundOnTheScreen) {
    WavoGraph graph = GraphWithCircles();
    graph.UpdateGuidingCircles();
    EXPECT_EQ(graph.InnerGuidingCircleDY, 10.0);
    EXPECT_EQ(graph.OuterGuidingCircleDY, 20.0);
    EXPECT_EQ(graph.InnerGuidingCircleDX, 10.0);
    EXPECT_EQ(graph.OuterGuidingCircleDX, 20.0);
}

TEST(WavoGraphTest, AutoCircleKeepsAnAbsentCircleAbsent) {
    WavoGraph graph = GraphWithCircles();
    graph.InnerGuidingCircleDX = kNoRadius;
    graph.InnerGuidingCircleDY = 3.0;
    graph.UpdateGuidingCircles();
    EXPECT_EQ(graph.InnerGuidingCircleDY, kNoRadius);
}

TEST(WavoGraphTest, CirclesFollowTheScalesWithoutAutoCircle) {
    WavoGraph graph = GraphWithCircles();
    graph.AutoCircle = false;
    graph.YScales.push_back({ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 0.0, 1000.0});
    graph.UpdateGuidingCircles();
    EXPECT_EQ(graph.InnerGuidingCircleDY, 1.0);
    EXPECT_EQ(graph.OuterGuidingCircleDY, 2.0);
}

TEST(WavoGraphTest, CirclesDivideBeforeTheyMultiply) {
    WavoGraph graph = GraphWithCircles();
    graph.AutoCircle = false;
    graph.XScale.Maximum = 49.0;
    graph.YScales[0].Minimum = 0.0;
    graph.YScales[0].Maximum = 49.0;
    graph.OuterGuidingCircleDX = 1.0;
    graph.UpdateGuidingCircles();
    EXPECT_EQ(graph.OuterGuidingCircleDY, 1.0 / 49.0 * 49.0);
    EXPECT_NE(graph.OuterGuidingCircleDY, 1.0);
}

TEST(WavoGraphTest, CirclesStayWithoutAnYScale) {
    WavoGraph graph = GraphWithCircles();
    graph.AutoCircle = false;
    graph.YScales.clear();
    graph.InnerGuidingCircleDY = 0.25;
    graph.OuterGuidingCircleDY = 0.5;
    graph.UpdateGuidingCircles();
    EXPECT_EQ(graph.InnerGuidingCircleDY, 0.25);
    EXPECT_EQ(graph.OuterGuidingCircleDY, 0.5);
}

TEST(WavoGraphTest, CopiesAreDeep) {
    WavoGraph graph = GraphWithCircles();
    WavoGraph copy = graph;
    EXPECT_EQ(copy, graph);
    copy.YCoorAxName[0] = "other";
    copy.Triggers[0].AxName = "other";
    copy.YScales[0].Maximum = 77.0;
    EXPECT_EQ(graph.YCoorAxName[0], "X");
    EXPECT_EQ(graph.Triggers[0].AxName, "");
    EXPECT_EQ(graph.YScales[0].Maximum, 5.0);
    EXPECT_NE(copy, graph);
    graph = copy;
    EXPECT_EQ(copy, graph);
}

TEST(WavoGraphTest, LabelCarriesOneMarkPerDerivation) {
    EXPECT_EQ(AxisLabel("X", 0), "X");
    EXPECT_EQ(AxisLabel("X", 1), "X'");
    EXPECT_EQ(AxisLabel("X", 2), "X''");
    EXPECT_EQ(AxisLabel("", 3), "'''");
    EXPECT_EQ(AxisLabel("X", -1), "X");
}

}  // namespace
}  // namespace wavo
