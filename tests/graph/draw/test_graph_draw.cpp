#include "graph/draw/graph_draw.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/frame/texts.h"
#include "support/diagnostics.h"

namespace wavo {
namespace {

using testing::AddAxis;
using ::testing::AnyOf;
using testing::AutomaticScale;
using testing::AxisGraph;
using testing::CollectReports;
using testing::CountingHost;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;

const QColor kCurve(255, 255, 0);

WavoGraph OneAxis(GraphMode mode = GraphMode::kContinuity) {
    WavoGraph graph = TimeGraph(1.0, mode);
    AddAxis(graph, "X", ManualScale(0.0, 10.0));
    return graph;
}

TEST(GraphDrawFrame, BadNumbersOfScaleLinesAreReportedAndReplaced) {
    CountingHost host;
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(Qt::black);
    const ExpectErrorLog expected(
        {"GraphDraw::GraphDraw(): invalid number of scale lines x-corr., setting five scale line",
         "GraphDraw::GraphDraw(): invalid number of scale lines y-corr., setting three scale "
         "line"});
    GraphDraw draw(QRect(0, 0, 400, 200), OneAxis(), host, {}, 0.25, 0, -1, {{nullptr}, nullptr});
    draw.DrawGraph(image, false);
    EXPECT_EQ(draw.Lines()[0]->XLines().size(), 7U);
    EXPECT_EQ(draw.Lines()[0]->YLines().size(), 5U);
}

TEST(GraphDrawFrame, DrawsScaleLinesDimmerThanTheFrameAndTextsAbove) {
    Scope scope(OneAxis());
    scope.Draw();
    const FrameColors colors(Qt::black);
    const QRect plot = scope.draw->PlotArea();
    EXPECT_EQ(scope.Image().pixelColor(plot.left(), plot.center().y()), colors.frame);
    EXPECT_EQ(scope.Image().pixelColor(plot.right(), plot.center().y()), colors.frame);
    EXPECT_EQ(scope.Image().pixelColor(plot.center().x(), plot.top()), colors.frame);
    EXPECT_EQ(scope.Image().pixelColor(plot.center().x(), plot.bottom()), colors.frame);
    EXPECT_GT(scope.Count(colors.scale_line), 3 * plot.width() + 3 * plot.height());
    int text_pixels = 0;
    for (int y = 0; y < plot.top(); ++y) {
        for (int x = 0; x < 400; ++x) {
            text_pixels += scope.Image().pixelColor(x, y) != QColor(Qt::black) ? 1 : 0;
        }
    }
    EXPECT_GT(text_pixels, 50);
}

TEST(GraphDrawFrame, TheStatusTextStandsInTheMiddleOfTheTopLine) {
    WavoGraph graph = OneAxis();
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 5.0, "X"};
    Scope waiting(graph);
    waiting.Draw();
    Scope running(OneAxis());
    running.Draw();
    int left = 400;
    int right = 0;
    for (int y = 0; y < waiting.draw->PlotArea().top(); ++y) {
        for (int x = 0; x < 400; ++x) {
            const QColor pixel = waiting.Image().pixelColor(x, y);
            if (pixel != QColor(Qt::black) && pixel.red() > pixel.blue() + 40) {  // amber
                left = std::min(left, x);
                right = std::max(right, x);
            }
            const QColor other = running.Image().pixelColor(x, y);
            EXPECT_LE(other.red(), other.blue() + 40) << "no status text while just running";
        }
    }
    ASSERT_LT(left, right);
    EXPECT_NEAR((left + right) / 2.0, 200.0, 4.0);
}

TEST(GraphDrawFrame, ZeroLinesAreDrawnWhereZeroLiesInsideTheScale) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", ManualScale(-10.0, 6.0));
    graph.ZeroLines = true;
    Scope with(graph);
    with.Draw();
    const QRect plot = with.draw->PlotArea();
    const QColor zero = Blend(Qt::black, kCurve, 0.45);
    EXPECT_GE(with.Count(zero), plot.width() - 10);
    graph.ZeroLines = false;
    Scope without(graph);
    without.Draw();
    EXPECT_EQ(without.Count(zero), 0);
    graph.ZeroLines = true;
    graph.YScales[0] = ManualScale(1.0, 6.0);
    Scope outside(graph);
    outside.Draw();
    EXPECT_EQ(outside.Count(zero), 0);
}

TEST(GraphDrawFrame, LabelsDoNotMoveThePictureWhenNumbersGrow) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", AutomaticScale());
    AddAxis(graph, "Y", AutomaticScale());
    Scope scope(graph);
    scope.Feed({{1.0}, {2.0}});
    const QRect plot = scope.draw->PlotArea();
    scope.Feed({{123456.789012}, {-98765.4321}});
    EXPECT_EQ(scope.draw->PlotArea(), plot);
}

TEST(GraphDrawSteps, TheCurveIsDrawnAndStaysWithoutNewValues) {
    Scope scope(OneAxis());
    scope.Feed({{5, 5, 5}});
    const int drawn = scope.Count(kCurve);
    EXPECT_GT(drawn, 150);
    scope.Draw();
    EXPECT_EQ(scope.Count(kCurve), drawn);
}

TEST(GraphDrawSteps, TheConstructorTakesWhatTheBufferHoldsAndDrawsNothing) {
    const WavoGraph graph = OneAxis();
    GraphValue value("X", 0.25, 1.0, 0);
    for (const double sample : {1.0, 2.0, 3.0}) {
        value.SetValue(sample);
    }
    value.EmptyNewValues();
    value.SetValue(4.0);  // still new: comes with the first step
    CountingHost host;
    GraphDraw draw(QRect(0, 0, 400, 200), graph, host, {}, 0.25, 5, 3, {{&value}, nullptr});
    std::vector<double> shown;
    draw.Lines()[0]->GetYValues(shown);
    EXPECT_EQ(shown, (std::vector<double>{1, 2, 3}));
    QImage image(400, 200, QImage::Format_RGB32);
    draw.DrawGraph(image, false);
    draw.Lines()[0]->GetYValues(shown);
    EXPECT_EQ(shown, (std::vector<double>{1, 2, 3, 4}));
}

TEST(GraphDrawSteps, AnAutomaticLabelNeverLagsItsCurve) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", AutomaticScale());
    Scope scope(graph);
    scope.Feed({{0.0, 10.0}});
    EXPECT_DOUBLE_EQ(scope.draw->Graph().YScales[0].Maximum, 10.5);
    EXPECT_DOUBLE_EQ(scope.Line().YLines().back().value, 10.5);
    EXPECT_EQ(YText(scope.draw->Graph(), 0), "Y: X=(-0.5 ... 10.5)");
}

TEST(GraphDrawSteps, OverAnAxisBothScalesFollow) {
    Scope scope(AxisGraph(10.0, AutomaticScale(), AutomaticScale()));
    scope.Feed({{0.0, 10.0}, {100.0, 300.0}});
    EXPECT_EQ(XText(scope.draw->Graph(), {}), "X: X=(90.0 ... 310.0)");
    EXPECT_EQ(YText(scope.draw->Graph(), 0), "Y: Y=(-0.5 ... 10.5)");
    EXPECT_EQ(scope.Line().Point(0).x, scope.Line().XLines()[0].x1 + 17);
}

TEST(GraphDrawSteps, OverAnAxisPointsCanBeDrawnInsteadOfLines) {
    WavoGraph graph = AxisGraph(10.0, ManualScale(0.0, 10.0), ManualScale(0.0, 10.0));
    graph.ModeAx = AxisDrawMode::kPoints;
    Scope scope(graph);
    scope.Feed({{2.0, 6.0, 2.0}, {2.0, 6.0, 6.0}});
    const LinePoint second = scope.Line().Point(1);
    const QImage& image = scope.Image();
    EXPECT_NE(image.pixelColor(second.x, second.y), scope.Background());
    const LinePoint third = scope.Line().Point(2);
    ASSERT_EQ(third.x, second.x);
    ASSERT_GT(third.y, second.y + 20);
    for (int y = second.y + 6; y < third.y - 6; ++y) {  // clear of points and mark
        EXPECT_THAT(image.pixelColor(second.x, y),
                    AnyOf(scope.Background(), FrameColors(scope.Background()).scale_line))
            << "a line";
    }
}

TEST(GraphDrawSteps, BuffersThatReachBackDifferentlyAreAlignedAtTheNewestSample) {
    WavoGraph graph = AxisGraph(10.0, ManualScale(0.0, 10.0), ManualScale(0.0, 10.0));
    GraphValue x("X", 0.25, 10.0, 0);
    GraphValue y("Y", 0.25, 10.0, 0);
    for (const double sample : {1.0, 2.0, 3.0, 4.0}) {
        x.SetValue(sample);
    }
    for (const double sample : {8.0, 9.0}) {
        y.SetValue(sample);
    }
    x.EmptyNewValues();
    y.EmptyNewValues();
    CountingHost host;
    const GraphDraw draw(QRect(0, 0, 400, 200), graph, host, {}, 0.25, 5, 3, {{&y}, &x});
    ASSERT_EQ(draw.Lines()[0]->Size(), 2U);
    EXPECT_EQ(draw.Lines()[0]->Point(0).x_value, 3.0);
    EXPECT_EQ(draw.Lines()[0]->Point(0).y_value, 8.0);
}

TEST(GraphDrawSteps, CurvesAreAddressedByTheirPlaceNotTheirName) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", ManualScale(0.0, 10.0));
    AddAxis(graph, "X", ManualScale(-100.0, 100.0), TriggerTypeCode::kNone, 0.0, 1);
    Scope scope(graph);
    scope.Feed({{1.0, 2.0}, {1.0, 2.0}});
    EXPECT_EQ(scope.Shown(0), (std::vector<double>{1, 2}));
    EXPECT_EQ(scope.Shown(1), (std::vector<double>{0, 4}));
}

TEST(GraphDrawSteps, TheTracesOfATimeGraphAreExact) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", ManualScale(0.0, 10.0));
    AddAxis(graph, "Y", AutomaticScale());
    Scope scope(graph);
    scope.Set({{1, 2}, {1, 2}});
    _MTrace_SetLevel("default", 4);
    const CollectReports traces(diagnostics::Service::kTrace);
    scope.Draw();
    _MTrace_SetLevel("default", 1);
    EXPECT_EQ(
        traces.Texts(),
        (std::vector<std::string>{
            "DrawGraph(): --- starting to get act. valus", "DrawGraph(): --- end of get act values",
            "DrawGraph(): --- starting test trigger condition",
            "DrawGraph(): --- end of test trigger condition", "CheckYScaleValue(): --- starting",
            "CheckYScaleValue(): --- leaving", "CheckYScaleValue(): --- starting",
            "CheckYScaleValue(): --- leaving", "DrawGraph(): --- starting to draw graphs",
            "DrawAllLinesXIsTime(): --- starting", "DrawAllLinesXIsTime(): --- leaving",
            "DrawAllLinesXIsTime(): --- starting", "DrawAllLinesXIsTime(): --- leaving",
            "DrawGraph(): --- end of drawing graphs"}));
}

TEST(GraphDrawSteps, TheTracesOfAGraphOverAnAxisAreExact) {
    Scope scope(AxisGraph(1.0, AutomaticScale(), ManualScale(0.0, 10.0)));
    scope.Set({{1, 2}, {1, 2}});
    _MTrace_SetLevel("default", 4);
    const CollectReports traces(diagnostics::Service::kTrace);
    scope.Draw();
    _MTrace_SetLevel("default", 1);
    EXPECT_EQ(
        traces.Texts(),
        (std::vector<std::string>{
            "DrawGraph(): --- starting to get act. valus", "DrawGraph(): --- end of get act values",
            "DrawGraph(): --- starting test trigger condition",
            "DrawGraph(): --- end of test trigger condition", "CheckYScaleValue(): --- starting",
            "CheckYScaleValue(): --- leaving", "CheckXScaleValue(): --- starting",
            "CheckXScaleValue(): --- leaving", "DrawGraph(): --- starting to draw graphs",
            "DrawAllLinesXIsAx(): --- starting", "DrawAllLines(): --- leaving",
            "DrawGraph(): --- end of drawing graphs"}));
}

TEST(GraphDrawSteps, AGraphWithoutYAxesIsReportedAndDrawsItsFrame) {
    Scope scope(TimeGraph(1.0));
    const ExpectErrorLog expected({"GraphDraw::DrawGraph(): invalid size of m_pLinesY"});
    scope.Draw();
    EXPECT_GT(scope.Count(FrameColors(Qt::black).frame), 500);
}

TEST(GraphDrawSteps, ADifferentNumberOfBuffersIsReportedTwice) {
    CountingHost host;
    QImage image(400, 200, QImage::Format_RGB32);
    GraphDraw draw(QRect(0, 0, 400, 200), OneAxis(), host, {}, 0.25, 5, 3, {});
    const std::string text = "GraphDraw::DrawGraph(): m_pLinesY.size()!=m_pVectYValueFifo.size()";
    const ExpectErrorLog expected({text, text});
    draw.DrawGraph(image, false);
}

TEST(GraphDrawSteps, AnXScaleThatIsNoTimeRangeIsReported) {
    WavoGraph graph = OneAxis();
    graph.XScale = ManualScale(0.0, 1.0);
    Scope scope(graph);
    const ExpectErrorLog expected({"LinesDrawAxis::GetXTimeRange(): x scale is not a time range"});
    scope.Draw();
}

TEST(GraphDrawSteps, MissingXValuesAreReported) {
    Scope scope(AxisGraph(1.0, ManualScale(0.0, 10.0), ManualScale(0.0, 10.0)));
    const ExpectErrorLog expected(
        {"LinesDrawAxis::DrawLinesXIsAx(): number of values x-coor. and number of values y-coor. "
         "are not equal"});
    scope.Feed({{1, 2}, {1}});
    EXPECT_EQ(scope.Line().Size(), 0U);
}

TEST(GraphDrawValues, AreTheMostRecentSpan) {
    Scope scope(OneAxis(), 0.25, QRect(0, 0, 400, 200), 10.0);
    for (int first = 0; first < 20; first += 4) {
        scope.Feed({Ramp(first, 4)});
    }
    std::vector<double> values{99};
    EXPECT_TRUE(scope.draw->GetAxValues("X", values));
    EXPECT_EQ(values, Ramp(16, 4));
}

TEST(GraphDrawValues, OfAZoomAreItsWindow) {
    Scope scope(OneAxis());
    scope.Feed({Ramp(0, 4)});
    scope.draw->SetZoomRange(0.25, 0.75);
    scope.Draw();
    std::vector<double> values;
    EXPECT_TRUE(scope.draw->GetAxValues("X", values));
    EXPECT_EQ(values, (std::vector<double>{1, 2}));
}

TEST(GraphDrawValues, OfAFinishedRecordingAreTheRecording) {
    WavoGraph graph = OneAxis();
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 5.0, "X"};
    Scope scope(graph);
    scope.Feed({{1, 2, 7, 1}});
    std::vector<double> values;
    EXPECT_TRUE(scope.draw->GetAxValues("X", values));
    EXPECT_EQ(values, (std::vector<double>{1, 2, 7}));
}

TEST(GraphDrawValues, OfANameWithSeveralDerivationsAreThoseOfTheFirst) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", ManualScale(0.0, 10.0), TriggerTypeCode::kNone, 0.0, 1);
    AddAxis(graph, "X", ManualScale(0.0, 10.0));
    Scope scope(graph);
    scope.Feed({{1, 2}, {1, 2}});
    std::vector<double> values;
    EXPECT_TRUE(scope.draw->GetAxValues("X", values));
    EXPECT_EQ(values, (std::vector<double>{0, 4}));
}

TEST(GraphDrawValues, KnowTheXAxisOfAGraphOverAnAxis) {
    Scope scope(AxisGraph(1.0, ManualScale(0.0, 10.0), ManualScale(0.0, 10.0)));
    scope.Feed({{1, 2}, {3, 4}});
    std::vector<double> values;
    EXPECT_TRUE(scope.draw->GetAxValues("X", values));
    EXPECT_EQ(values, (std::vector<double>{3, 4}));
    EXPECT_TRUE(scope.draw->GetAxValues("Y", values));
    EXPECT_EQ(values, (std::vector<double>{1, 2}));
}

TEST(GraphDrawValues, OfAnUnknownAxisAreReported) {
    Scope scope(OneAxis());
    std::vector<double> values{1, 2};
    const ExpectErrorLog expected(
        {"GraphDraw::GetAxValues(): unknown axis: x", "GraphDraw::GetAxValues(): unknown axis: "});
    EXPECT_FALSE(scope.draw->GetAxValues("x", values));
    EXPECT_TRUE(values.empty());
    EXPECT_FALSE(scope.draw->GetAxValues("", values));
}

TEST(GraphDrawBuffers, MayBeAbsent) {
    CountingHost host;
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(Qt::black);
    GraphDraw draw(QRect(0, 0, 400, 200), OneAxis(), host, {}, 0.25, 5, 3, {{nullptr}, nullptr});
    draw.DrawGraph(image, false);
    draw.SetZoomRange(0.1, 0.5);
    draw.DrawGraph(image, false);
    draw.SetRestartFlag();
    draw.DrawGraph(image, false);
    EXPECT_TRUE(draw.Recorder().Values().empty());
    EXPECT_EQ(LatestTime(draw.Recorder()), 0.0);
    std::vector<double> values;
    EXPECT_TRUE(draw.GetAxValues("X", values));
    EXPECT_TRUE(values.empty());
}

TEST(GraphDrawBuffers, AfterDetachingTheCurvesAreStillShown) {
    Scope scope(OneAxis());
    scope.Feed({{1, 5, 3}});
    const int drawn = scope.Count(kCurve);
    scope.draw->DetachValues();
    scope.values.clear();
    scope.Draw();
    EXPECT_EQ(scope.Count(kCurve), drawn);
    std::vector<double> values;
    EXPECT_TRUE(scope.draw->GetAxValues("X", values));
    EXPECT_EQ(values, (std::vector<double>{1, 5, 3}));
    scope.draw->SetRectangle(QRect(0, 0, 300, 150));
    scope.Draw();
    EXPECT_GT(scope.Count(kCurve), 50);
}

TEST(GraphDrawBuffers, AreListedWithTheirLatestTime) {
    Scope scope(AxisGraph(1.0, ManualScale(0.0, 10.0), ManualScale(0.0, 10.0)));
    scope.Feed({{1, 2}, {3, 4}});
    EXPECT_EQ(scope.draw->Recorder().Values(),
              (std::vector<GraphValue*>{&scope.values[0], &scope.values[1]}));
    EXPECT_EQ(LatestTime(scope.draw->Recorder()), 0.5);
}

TEST(GraphDrawBuffers, HaveToCoverTheTimeRangeOrTheFadeOutTime) {
    WavoGraph graph = TimeGraph(4.0);
    graph.FadeOutTime = 2.5;
    EXPECT_EQ(GraphTimeRange(graph), 4.0);
    graph.XCoorType = CoorType::kAxis;
    EXPECT_EQ(GraphTimeRange(graph), 2.5);
}

TEST(GraphDrawDevice, CurvesUseAllPixelsOfAFineScreen) {
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", ManualScale(0.0, 10.0));
    GraphValue value("X", 0.25, 1.0, 0);
    for (const double sample : {0.0, 10.0, 0.0}) {
        value.SetValue(sample);
    }
    CountingHost host;
    GraphDraw draw(QRect(0, 0, 400, 200), graph, host, {}, 0.25, 5, 3, {{&value}, nullptr});
    QImage image(800, 400, QImage::Format_RGB32);
    image.setDevicePixelRatio(2.0);
    image.fill(Qt::black);
    draw.DrawGraph(image, false);
    const QRect plot = draw.PlotArea();
    EXPECT_EQ(draw.Lines()[0]->Point(0).x, plot.left() * 2);
    EXPECT_EQ(draw.Lines()[0]->Point(0).y, plot.bottom() * 2 + 1);
    EXPECT_EQ(draw.Lines()[0]->Point(1).y, plot.top() * 2);
    int widest = 0;
    for (int y = plot.top() * 2 + 4; y < plot.bottom() * 2 - 4; ++y) {
        int run = 0;
        for (int x = 0; x < 400; ++x) {
            run = image.pixelColor(x, y) == kCurve ? run + 1 : 0;
            widest = std::max(widest, run);
        }
    }
    EXPECT_EQ(widest, 1) << "a steep line is one device pixel wide";
    EXPECT_NEAR(draw.PixelToTime(plot.right()), 1.0, 0.01);
}

}  // namespace
}  // namespace wavo
