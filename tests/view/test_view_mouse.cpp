#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <string>
#include <vector>

#include "settings/view_settings.h"
#include "view/view_keys.h"
#include "view/view_mouse.h"
#include "view/zoom_band.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Graph 1 and 2 over time (10 s), graph 3 one axis over another; 100 pixels high each.
class Pointing : public ::testing::Test, public ZoomTarget {
 protected:
    Pointing() {
        for (const std::uint32_t number : {1U, 2U, 3U}) {
            WavoGraph graph;
            graph.InitGraph(number, "X", 0, nullptr);
            if (number == 3) {
                graph.XCoorType = CoorType::kAxis;
                graph.XCoorAxName = "Y";
                graph.XScale.ScaleType = ScaleTypeCode::kAxis;
                graph.XScale.ScaleAx = ScaleAxCode::kManual;
                graph.XScale.Maximum = 1.0;
            }
            m_graphs.Add(graph);
        }
        m_board.CreateAllGraphRects({0, 0, 400, 300}, 0.004, {"X", "Y"}, ViewSettings());
        QImage picture(400, 300, QImage::Format_RGB32);
        m_board.DrawAll(picture, false);
    }

    void Select(std::uint32_t number) override {
        m_happened.push_back("select " + std::to_string(number));
        m_selected = number;
    }
    [[nodiscard]] std::uint32_t Selected() const override { return m_selected; }
    [[nodiscard]] bool IsEnabled() const override { return m_enabled; }
    [[nodiscard]] bool IsBusy() const override { return m_busy; }
    [[nodiscard]] double TimeStep() const override { return m_time_step; }
    void ZoomTo(std::uint32_t number, const TimeWindow& span) override {
        m_happened.push_back("zoom " + std::to_string(number));
        m_span = span;
    }
    void ZoomOut(std::uint32_t number) override {
        m_happened.push_back("out " + std::to_string(number));
    }
    void UpdatePart(const QRect&) override { ++m_updates; }
    void RepaintPart(const QRect& part) override {
        EXPECT_EQ(part, Drawer(0).Rectangle());
        m_happened.emplace_back("repaint");
    }

    [[nodiscard]] GraphDraw& Drawer(std::size_t index) { return *m_board.Drawers()[index]; }
    [[nodiscard]] int PlotColumn(double part) {
        const QRect& plot = Drawer(0).PlotArea();
        return plot.left() + static_cast<int>(part * plot.width());
    }
    std::vector<std::string> Take() { return std::exchange(m_happened, {}); }

    GraphList m_graphs;
    ValueStreams m_streams;
    GraphBoard m_board{m_graphs, m_streams, [] {}};
    ViewMouse m_mouse{m_board, *this};
    ViewKeys m_keys{m_board, *this};
    std::uint32_t m_selected = 0;
    bool m_enabled = true;
    bool m_busy = false;
    double m_time_step = 0.004;
    TimeWindow m_span;
    int m_updates = 0;
    std::vector<std::string> m_happened;
};

TEST_F(Pointing, TheLeftButtonSelectsTheGraphUnderIt) {
    m_mouse.LeftButtonDown({10, 150});
    m_mouse.LeftButtonDown({10, 299});
    m_mouse.LeftButtonDown({10, 300});
    m_mouse.LeftButtonDown({-1, 10});
    EXPECT_THAT(Take(), ElementsAre("select 2", "select 3"));
}

TEST_F(Pointing, EveryGraphUnderThePointIsSelectedTheFirstIsZoomed) {
    Drawer(1).SetRectangle(Drawer(0).Rectangle());
    m_mouse.LeftButtonDown({10, 50});
    EXPECT_THAT(Take(), ElementsAre("select 1", "select 2"));
    m_mouse.RightButtonDown({PlotColumn(0.25), 50});
    m_mouse.MouseMove({PlotColumn(0.75), 50});
    EXPECT_TRUE(Drawer(1).Tracker().isNull());
    m_mouse.RightButtonUp({PlotColumn(0.75), 50});
    EXPECT_THAT(Take(), ElementsAre("select 1", "select 2", "zoom 1"));
}

TEST_F(Pointing, ADragToTheRightZoomsToTheTimesUnderIt) {
    EXPECT_TRUE(m_mouse.RightButtonDown({PlotColumn(0.25), 50}));
    m_mouse.MouseMove({PlotColumn(0.75), 20});
    const QRect graph = Drawer(0).Rectangle();
    EXPECT_EQ(Drawer(0).Tracker(), QRect(QPoint(PlotColumn(0.25), graph.top() + 1),
                                         QPoint(PlotColumn(0.75), graph.bottom() - 1)));
    EXPECT_EQ(m_updates, 1);
    m_mouse.RightButtonUp({PlotColumn(0.75), 20});
    EXPECT_THAT(Take(), ElementsAre("select 1", "zoom 1"));
    EXPECT_NEAR(m_span.start, 2.5, 0.05);
    EXPECT_NEAR(m_span.end, 7.5, 0.05);
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    EXPECT_FALSE(m_mouse.IsDragging());
}

TEST_F(Pointing, ADragToTheLeftNeverChangesTheBand) {
    m_mouse.RightButtonDown({200, 50});
    m_mouse.MouseMove({200, 50});
    m_mouse.MouseMove({100, 50});
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    m_mouse.MouseMove({300, 50});
    const QRect band = Drawer(0).Tracker();
    m_mouse.MouseMove({100, 50});
    EXPECT_EQ(Drawer(0).Tracker(), band);
}

TEST_F(Pointing, ABandStaysInsideItsGraph) {
    m_mouse.RightButtonDown({200, 50});
    m_mouse.MouseMove({4000, 2000});
    EXPECT_EQ(Drawer(0).Tracker(), QRect(QPoint(200, 1), QPoint(399, 98)));
    m_mouse.RightButtonUp({4000, 2000});
    EXPECT_THAT(Take(), ElementsAre("select 1", "zoom 1"));
    EXPECT_NEAR(m_span.end, 10.0, 0.05);
}

TEST_F(Pointing, ADragOfLessThanFiveTimeStepsSelects) {
    const double step = (Drawer(0).PixelToTime(220) - Drawer(0).PixelToTime(200)) / 5.0;
    m_time_step = step * 1.001;
    m_mouse.RightButtonDown({200, 50});
    m_mouse.MouseMove({220, 50});
    m_mouse.RightButtonUp({220, 50});
    EXPECT_THAT(Take(), ElementsAre("select 1", "repaint", "select 1"));
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    m_time_step = step * 0.999;
    m_mouse.RightButtonDown({200, 50});
    m_mouse.MouseMove({220, 50});
    m_mouse.RightButtonUp({220, 50});
    EXPECT_THAT(Take(), ElementsAre("select 1", "zoom 1"));
}

TEST_F(Pointing, AClickWithTheRightButtonSelectsAlone) {
    m_mouse.RightButtonDown({200, 50});
    m_mouse.RightButtonUp({200, 50});
    EXPECT_THAT(Take(), ElementsAre("select 1", "repaint", "select 1"));
}

TEST_F(Pointing, WhatIsNotOverTimeOrNotAllowedIsOnlySelected) {
    m_mouse.RightButtonDown({100, 250});
    EXPECT_FALSE(m_mouse.IsDragging());
    m_mouse.RightButtonUp({300, 250});
    m_enabled = false;
    EXPECT_TRUE(m_mouse.RightButtonDown({100, 50}));
    EXPECT_FALSE(m_mouse.IsDragging());
    m_enabled = true;
    m_busy = true;
    EXPECT_FALSE(m_mouse.RightButtonDown({100, 50}));
    EXPECT_FALSE(m_mouse.IsDragging());
    EXPECT_THAT(Take(), ElementsAre("select 3", "select 1", "select 1"));
}

TEST_F(Pointing, ACancelledDragLeavesNoBand) {
    m_mouse.RightButtonDown({100, 50});
    m_mouse.MouseMove({200, 50});
    m_mouse.Cancel();
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    m_mouse.MouseMove({300, 50});
    m_mouse.RightButtonUp({300, 50});
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    EXPECT_THAT(Take(), ElementsAre("select 1"));
}

TEST_F(Pointing, KeysSelectTheGraphsInTheirOrder) {
    EXPECT_TRUE(m_keys.KeyPress(Qt::Key_Down, Qt::NoModifier));
    m_keys.KeyPress(Qt::Key_Down, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Down, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Up, Qt::NoModifier);
    EXPECT_THAT(Take(), ElementsAre("select 2", "select 3", "select 3", "select 2"));
}

TEST_F(Pointing, KeysActOnTheGraphThatWasClicked) {
    m_mouse.LeftButtonDown({10, 150});
    m_keys.KeyPress(Qt::Key_Plus, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Right, Qt::NoModifier);
    EXPECT_FALSE(Drawer(1).Tracker().isNull());
    m_selected = 1;  // chosen in the editor
    m_keys.KeyPress(Qt::Key_Right, Qt::NoModifier);
    EXPECT_TRUE(Drawer(1).Tracker().isNull());
    EXPECT_FALSE(Drawer(0).Tracker().isNull());
    m_keys.KeyPress(Qt::Key_Down, Qt::NoModifier);
    EXPECT_THAT(Take(), ElementsAre("select 2", "zoom 2", "select 2"));
}

TEST_F(Pointing, KeysSpanABandAndZoomToIt) {
    m_keys.KeyPress(Qt::Key_Left, Qt::NoModifier);
    const int mark = Drawer(0).Tracker().left();
    EXPECT_EQ(Drawer(0).Tracker().width(), 1);
    m_keys.KeyPress(Qt::Key_Right, Qt::ShiftModifier);
    m_keys.KeyPress(Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
    const int step = Drawer(0).PlotArea().width() / 50;
    EXPECT_EQ(Drawer(0).Tracker().left(), mark);
    EXPECT_EQ(Drawer(0).Tracker().right(), mark + step + 1);
    const double from = Drawer(0).PixelToTime(mark);
    const double to = Drawer(0).PixelToTime(mark + step + 1);
    m_keys.KeyPress(Qt::Key_Return, Qt::NoModifier);
    EXPECT_THAT(Take(), ElementsAre("zoom 1"));
    EXPECT_EQ(m_span.start, from);
    EXPECT_EQ(m_span.end, to);
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
}

TEST_F(Pointing, KeysSpanABandToTheLeftAsWell) {
    m_keys.KeyPress(Qt::Key_Right, Qt::NoModifier);
    const int mark = Drawer(0).Tracker().left();
    m_keys.KeyPress(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(Drawer(0).Tracker().right(), mark);
    EXPECT_LT(Drawer(0).Tracker().left(), mark);
}

TEST_F(Pointing, PlusZoomsToTheMiddleHalfAndMinusStepsBack) {
    m_keys.KeyPress(Qt::Key_Plus, Qt::NoModifier);
    EXPECT_NEAR(m_span.start, 2.5, 0.05);
    EXPECT_NEAR(m_span.end, 7.5, 0.05);
    m_keys.KeyPress(Qt::Key_Minus, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Backspace, Qt::NoModifier);
    EXPECT_THAT(Take(), ElementsAre("zoom 1", "out 1", "out 1"));
}

TEST_F(Pointing, EscapeTakesTheBandAwayAndIsLeftToOthersWithoutOne) {
    EXPECT_FALSE(m_keys.KeyPress(Qt::Key_Escape, Qt::NoModifier));
    m_keys.KeyPress(Qt::Key_Right, Qt::NoModifier);
    EXPECT_TRUE(m_keys.KeyPress(Qt::Key_Escape, Qt::NoModifier));
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    EXPECT_FALSE(m_keys.KeyPress(Qt::Key_Q, Qt::NoModifier));
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(Pointing, KeysZoomNeitherWhereItIsNotAllowedNorOverAnAxis) {
    m_enabled = false;
    m_keys.KeyPress(Qt::Key_Right, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Plus, Qt::NoModifier);
    EXPECT_TRUE(Drawer(0).Tracker().isNull());
    m_enabled = true;
    m_keys.KeyPress(Qt::Key_Down, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Down, Qt::NoModifier);
    Take();
    m_keys.KeyPress(Qt::Key_Right, Qt::NoModifier);
    m_keys.KeyPress(Qt::Key_Plus, Qt::NoModifier);
    EXPECT_TRUE(Drawer(2).Tracker().isNull());
    EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(Pointing, WithoutGraphsKeysAreLeftToOthers) {
    m_graphs.Replace({});
    m_board.CreateAllGraphRects({0, 0, 400, 300}, 0.004, {}, ViewSettings());
    EXPECT_FALSE(m_keys.KeyPress(Qt::Key_Plus, Qt::NoModifier));
    m_keys.Cancel();
    m_mouse.Cancel();
}

TEST_F(Pointing, ABandCanBeSeenOnEveryBackground) {
    Drawer(0).SetTracker({100, 1, 100, 98});
    for (const ColorRef background : {0x000000U, 0xFFFFFFU, 0x808080U, 0x0000FFU}) {
        QImage image(400, 300, QImage::Format_RGB32);
        image.fill(ToQColor(background));
        QPainter painter(&image);
        PaintBands(painter, m_board, background);
        painter.end();
        EXPECT_EQ(image.pixelColor(50, 50), ToQColor(background));
        EXPECT_EQ(image.pixelColor(250, 50), ToQColor(background));
        const int difference =
            std::abs(image.pixelColor(150, 50).lightness() - ToQColor(background).lightness());
        EXPECT_GT(difference, 25) << std::hex << background;
    }
}

}  // namespace
}  // namespace wavo
