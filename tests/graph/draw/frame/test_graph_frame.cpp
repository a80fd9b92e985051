// The frame of a graph: what is painted, and what is left alone.
#include "graph/draw/frame/graph_frame.h"

#include <gtest/gtest.h>

#include <QImage>

#include "drawing_fixture.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::ManualScale;
using testing::TimeGraph;

constexpr QRgb kFrameMark = qRgb(1, 2, 3);

/// A frame with one curve, and a picture around it.
struct Framed {
    Framed() : graph(OneAxis()), frame(graph, Looks(), QRect(10, 20, 400, 200)) {
        content.x_scale = graph.XScale;
        picture.fill(Qt::darkGray);
        SpreadY();
    }

    static WavoGraph OneAxis() {
        WavoGraph graph = TimeGraph(10.0);
        graph.ZeroLines = true;
        AddAxis(graph, "X", ManualScale(-10.0, 10.0));
        return graph;
    }
    static GraphFrame::Looks Looks() { return {Qt::black, MakeFont({}), 5, 3}; }

    /// Spreads the y scale over the lines as a curve does.
    void SpreadY() {
        y_lines = frame.Geometry().horizontal;
        FillScaleValues(y_lines, {graph.YScales[0].Minimum, graph.YScales[0].Maximum});
        content.curves.clear();
        content.curves.push_back({y_lines, Qt::yellow, Qt::yellow});
    }
    bool Draw() { return frame.Draw(picture, content); }
    /// Whether the part of the picture is as it was.
    [[nodiscard]] bool IsAsBefore(const QRect& part) const {
        return picture.copy(part) == before.copy(part);
    }
    [[nodiscard]] QRect TopTexts() const {
        return {QPoint(10, 20), QPoint(409, frame.PlotArea().top() - 1)};
    }

    WavoGraph graph;
    GraphFrame frame;
    ScaleLines y_lines;
    GraphFrame::Content content;
    QImage picture{420, 240, QImage::Format_RGB32};
    QImage before;
};

TEST(GraphFrame, PaintsItsRectangleAndNothingElse) {
    Framed framed;
    EXPECT_TRUE(framed.Draw());
    EXPECT_EQ(framed.picture.pixelColor(9, 30), QColor(Qt::darkGray));
    EXPECT_EQ(framed.picture.pixelColor(30, 19), QColor(Qt::darkGray));
    EXPECT_EQ(framed.picture.pixelColor(410, 30), QColor(Qt::darkGray));
    EXPECT_EQ(framed.picture.pixelColor(30, 220), QColor(Qt::darkGray));
    EXPECT_EQ(framed.picture.pixelColor(10, 20), QColor(Qt::black));
    EXPECT_EQ(framed.frame.Image(), framed.picture.copy(QRect(10, 20, 400, 200)));
}

TEST(GraphFrame, IsLeftAloneWhileItSaysTheSame) {
    Framed framed;
    framed.Draw();
    framed.picture.setPixel(200, 120, kFrameMark);
    framed.picture.setPixel(12, 22, kFrameMark);
    framed.before = framed.picture.copy();
    EXPECT_FALSE(framed.Draw());
    EXPECT_EQ(framed.picture, framed.before);
}

TEST(GraphFrame, NewTextsLeaveThePlotAreaAlone) {
    Framed framed;
    framed.Draw();
    framed.picture.setPixel(200, 120, kFrameMark);
    framed.before = framed.picture.copy();
    framed.content.state = RunState::kWaitingForStop;
    EXPECT_FALSE(framed.Draw());
    EXPECT_TRUE(framed.IsAsBefore(framed.frame.PlotArea()));
    EXPECT_FALSE(framed.IsAsBefore(framed.TopTexts()));
}

TEST(GraphFrame, OnlyTextsThatSayAnotherThingArePaintedAnew) {
    Framed framed;
    framed.Draw();
    const QRect below(QPoint(10, framed.frame.PlotArea().bottom() + 1), QPoint(409, 219));
    framed.picture.setPixel(12, 22, kFrameMark);
    framed.picture.setPixel(below.left() + 1, below.bottom(), kFrameMark);
    framed.before = framed.picture.copy();
    framed.graph.YScales[0] = ManualScale(-20.0, 20.0);
    framed.SpreadY();
    EXPECT_FALSE(framed.Draw());
    EXPECT_TRUE(framed.IsAsBefore(framed.TopTexts()));
    EXPECT_FALSE(framed.IsAsBefore(below));
    framed.picture.setPixel(below.left() + 1, below.bottom(), kFrameMark);
    framed.before = framed.picture.copy();
    framed.content.window = {1.0, 3.0};
    EXPECT_FALSE(framed.Draw());
    EXPECT_FALSE(framed.IsAsBefore(framed.TopTexts()));
    EXPECT_TRUE(framed.IsAsBefore(below));
}

TEST(GraphFrame, AZeroLineThatMovesPaintsThePlotAreaAnew) {
    Framed framed;
    framed.Draw();
    framed.picture.setPixel(200, 120, kFrameMark);
    framed.graph.YScales[0].Maximum = 30.0;
    framed.SpreadY();
    EXPECT_TRUE(framed.Draw());
    EXPECT_NE(framed.picture.pixel(200, 120), kFrameMark);
}

TEST(GraphFrame, IsPaintedAnewWhenItWasLostOrMoved) {
    Framed framed;
    framed.Draw();
    const QImage painted = framed.picture.copy();
    framed.picture.fill(Qt::darkGray);
    framed.frame.Invalidate();
    EXPECT_TRUE(framed.Draw());
    EXPECT_EQ(framed.picture, painted);
    framed.frame.SetRectangle(QRect(0, 0, 300, 100));
    framed.SpreadY();
    EXPECT_TRUE(framed.Draw());
    EXPECT_EQ(framed.frame.Origin(), QPoint(0, 0));
}

TEST(GraphFrame, FollowsTheRatioOfTheDevice) {
    Framed framed;
    EXPECT_FALSE(framed.frame.FitToDevice(1.0));
    EXPECT_FALSE(framed.frame.FitToDevice(0.0));
    EXPECT_TRUE(framed.frame.FitToDevice(2.0));
    const QRect& logical = framed.frame.PlotArea();
    EXPECT_EQ(framed.frame.DevicePlotArea(), QRect(2 * logical.left(), 2 * logical.top(),
                                                   2 * logical.width(), 2 * logical.height()));
    framed.frame.SetXRange({0.0, 10.0});
    EXPECT_NEAR(framed.frame.XValueAt(logical.center().x()), 5.0, 0.05);
    EXPECT_EQ(framed.frame.PixelOfX(0.0), logical.left());
}

}  // namespace
}  // namespace wavo
