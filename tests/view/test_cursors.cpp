// The cursors in the real view: by mouse and by keys, on values that flow and that stand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QCoreApplication>
#include <QPrinter>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "lines_from_memory.h"
#include "printed_page.h"
#include "real_prompts.h"
#include "settings/view_settings.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "view/cursor_overlay.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::LinesFromMemory;
using ::testing::SizeIs;

constexpr double kLineTime = 0.004;
constexpr int kZoomEnable = 1072;  // control of the editor

class Cursors : public ::testing::Test {
 protected:
    Cursors() {
        qputenv(testing::kDataHome, m_folder.path().toLocal8Bit());
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_view = std::make_unique<CWavoView>(m_prompts, nullptr, std::move(source));
        m_view->resize(1000, 600);
        m_view->show();
        m_view->OnInitialUpdate();
        m_view->activateWindow();
        m_view->setFocus();
        QCoreApplication::processEvents();
    }
    ~Cursors() override {
        m_view.reset();
        qunsetenv(testing::kDataHome);
    }

    /// A graph of X over time, scrolling, `range` seconds.
    static WavoGraph OverTime(std::uint32_t number, double range) {
        WavoGraph graph;
        graph.InitGraph(number, "X", 0, nullptr);
        graph.Mode = GraphMode::kContinuity;
        graph.XScale.TimeRange = range;
        return graph;
    }
    static WavoGraph OverAxis(std::uint32_t number) {
        WavoGraph graph;
        graph.InitGraph(number, "Y", 0, nullptr);
        graph.XCoorType = CoorType::kAxis;
        graph.XCoorAxName = "X";
        graph.XScale.ScaleType = ScaleTypeCode::kAxis;
        graph.XScale.ScaleAx = ScaleAxCode::kManual;
        graph.XScale.Minimum = -2.0;
        graph.XScale.Maximum = 2.0;
        graph.YScales[0] = graph.XScale;
        graph.FadeOutTime = 10.0;
        return graph;
    }
    void Show(const std::vector<WavoGraph>& graphs) {
        GraphList& list = m_view->Work().Graphs();
        list.Replace(graphs);
        m_view->Work().RebuildGraphs();
        QCoreApplication::processEvents();
    }
    /// Gives `count` lines, in batches: X = cos, Y = sin of 2 s per turn.
    void Give(int count, int batch = 100) {
        for (; count > 0; count -= batch) {
            m_source->values.clear();
            for (int i = 0; i < std::min(count, batch); ++i) {
                const double angle = std::numbers::pi * kLineTime * static_cast<double>(m_given++);
                m_source->values.insert(m_source->values.end(), {std::cos(angle), std::sin(angle)});
            }
            EXPECT_TRUE(m_source->events->BatchReady());
        }
    }
    void Stop() { m_view->Commands().Execute(CommandId::kStop); }

    [[nodiscard]] GraphCursors& Pair() { return m_view->Cursors(); }
    [[nodiscard]] const GraphDraw& Graph(std::size_t index = 0) {
        return *m_view->Board().Drawers()[index];
    }
    [[nodiscard]] std::int64_t Line(CursorName name) {
        Pair().Renew();
        return Pair().LineOf(name).value_or(-99);
    }
    [[nodiscard]] int Column(CursorName name, std::size_t graph = 0) {
        Pair().Renew();
        const auto place = Pair().PlaceIn(Graph(graph), name);
        return place ? place->x() : -99;
    }
    /// A column of the plot area, by its part of the width.
    [[nodiscard]] int ColumnOfPart(double part, std::size_t graph = 0) {
        const QRect& plot = Graph(graph).PlotArea();
        return plot.left() + static_cast<int>(std::lround(part * (plot.width() - 1)));
    }
    [[nodiscard]] int Middle(std::size_t graph = 0) { return Graph(graph).PlotArea().center().y(); }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(m_view.get(), key, modifiers);
    }
    void Click(const QPoint& point, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mouseClick(m_view.get(), Qt::LeftButton, modifiers, point);
    }
    void Drag(const QPoint& from, const QPoint& to) {
        QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier, from);
        QTest::mouseMove(m_view.get(), (from + to) / 2);
        QTest::mouseMove(m_view.get(), to);
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, Qt::NoModifier, to);
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    LinesFromMemory* m_source = nullptr;
    std::unique_ptr<CWavoView> m_view;
    std::int64_t m_given = 0;
};

TEST_F(Cursors, OpenAtAThirdAndTwoThirds) {
    Show({OverTime(1, 4.0)});
    Give(2000);
    EXPECT_EQ(Column(CursorName::kA), -99) << "hidden at first";
    Pair().Show(true);
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0), 1);
    EXPECT_NEAR(Column(CursorName::kB), ColumnOfPart(2.0 / 3.0), 1);
    EXPECT_EQ(Pair().Active(), CursorName::kA);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kB) - Line(CursorName::kA)), 1000.0 / 3, 2);
    Pair().Show(false);
    EXPECT_EQ(Column(CursorName::kA), -99);
}

TEST_F(Cursors, ReadWhatPassesWhileValuesFlow) {
    Show({OverTime(1, 4.0)});
    Give(1500);
    Pair().Show(true);
    const int column = Column(CursorName::kA);
    const std::int64_t line = Line(CursorName::kA);
    Give(100);
    EXPECT_EQ(Column(CursorName::kA), column);
    EXPECT_EQ(Line(CursorName::kA), line + 100);
    m_view->resize(700, 500);
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0), 1) << "its place, not its pixel";
    Stop();
    const std::int64_t stood = Line(CursorName::kA);
    EXPECT_NEAR(static_cast<double>(stood - line), 100.0, 1.0);
    Give(50);
    EXPECT_EQ(Line(CursorName::kA), stood);
}

TEST_F(Cursors, StandOnASampleThroughZoomsAndRebuiltGraphs) {
    Show({OverTime(1, 4.0)});
    Give(1500);
    Pair().Show(true);
    Stop();
    const std::int64_t a = Line(CursorName::kA);
    const std::int64_t b = Line(CursorName::kB);
    m_view->Zooms().ZoomGraph(0, 1.0, 2.0);
    EXPECT_EQ(Line(CursorName::kA), a);
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0), 8)
        << "at 1.33 s of 1 to 2 s, 3.4 pixels per sample";
    EXPECT_EQ(Column(CursorName::kB), -99) << "out of what is shown";
    m_view->Zooms().ZoomOut(1);
    EXPECT_NEAR(Column(CursorName::kB), ColumnOfPart(2.0 / 3.0), 2);
    m_view->Work().RebuildGraphs();
    EXPECT_EQ(Line(CursorName::kA), a);
    EXPECT_EQ(Line(CursorName::kB), b);
    m_view->resize(640, 480);
    EXPECT_EQ(Line(CursorName::kA), a);
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0), 2);
    m_view->Commands().Execute(CommandId::kStart);
    Give(1500);
    EXPECT_GT(Line(CursorName::kA), b) << "other values";
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0), 2) << "at its place again";
}

TEST_F(Cursors, AreOneMomentInAllGraphsOverTime) {
    Show({OverTime(1, 4.0), OverTime(2, 2.0)});
    Give(2000);
    Pair().Show(true);
    EXPECT_EQ(Column(CursorName::kA, 1), -99) << "2.67 s ago, of which 2 s are shown";
    EXPECT_NEAR(Column(CursorName::kB, 1), ColumnOfPart(1.0 / 3.0, 1), 2) << "1.33 s ago";
    Drag({Column(CursorName::kB, 1), Middle(1)}, {ColumnOfPart(0.5, 1), Middle(1)});
    EXPECT_NEAR(Column(CursorName::kB, 0), ColumnOfPart(0.75, 0), 2) << "1 s ago";
    EXPECT_EQ(Pair().Active(), CursorName::kB);
}

TEST_F(Cursors, AreDraggedByTheirLinesAndTheirLabels) {
    Show({OverTime(1, 4.0)});
    Give(1500);
    Pair().Show(true);
    Stop();
    Drag({Column(CursorName::kA) + 3, Middle()}, {ColumnOfPart(0.2), Middle()});
    EXPECT_EQ(Column(CursorName::kA), ColumnOfPart(0.2));
    const auto mark = MarkOf(Graph(), Pair(), CursorName::kB);
    ASSERT_TRUE(mark.has_value());
    Drag(mark->label.center(), {ColumnOfPart(0.9), 5});
    EXPECT_EQ(Column(CursorName::kB), ColumnOfPart(0.9));
    EXPECT_EQ(Pair().Active(), CursorName::kB);
    Drag({ColumnOfPart(0.9), Middle()}, {5000, Middle()});
    EXPECT_EQ(Column(CursorName::kB), ColumnOfPart(1.0)) << "ends with the plot area";
    Click({ColumnOfPart(0.5), Middle()});
    EXPECT_EQ(Column(CursorName::kB), ColumnOfPart(1.0)) << "a click beside them moves none";
}

TEST_F(Cursors, ArePutByClicksWithCtrl) {
    Show({OverTime(1, 4.0), OverTime(2, 4.0)});
    Give(1500);
    Click({ColumnOfPart(0.1), Middle()}, Qt::ControlModifier);
    EXPECT_EQ(Pair().LineOf(CursorName::kA), std::nullopt) << "not shown";
    Pair().Show(true);
    Click({ColumnOfPart(0.1, 1), Middle(1)}, Qt::ControlModifier);
    Click({ColumnOfPart(0.6), Middle()}, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(0.1), 1);
    EXPECT_NEAR(Column(CursorName::kB), ColumnOfPart(0.6), 1);
    EXPECT_EQ(m_view->Editor().SelectedNumber(), 1U);
    EXPECT_EQ(Pair().Active(), CursorName::kB);
}

TEST_F(Cursors, MoveByKeys) {
    Show({OverTime(1, 4.0)});
    Give(1500);
    Pair().Show(true);
    Stop();
    const int column = Column(CursorName::kA);
    const std::int64_t line = Line(CursorName::kA);
    Key(Qt::Key_Right);
    EXPECT_EQ(Column(CursorName::kA), column + 1);
    Key(Qt::Key_Left);
    Key(Qt::Key_Left);
    EXPECT_EQ(Column(CursorName::kA), column - 1);
    Pair().PutOn(CursorName::kA, line);
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), line + 1);
    Key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(Line(CursorName::kA), line + 1 - 100);
    for (int i = 0; i < 20; ++i) {
        Key(Qt::Key_Right, Qt::ShiftModifier);
    }
    EXPECT_EQ(Line(CursorName::kA), 1499) << "ends with the values";
    Key(Qt::Key_Tab);
    EXPECT_EQ(Pair().Active(), CursorName::kB);
    const std::int64_t b = Line(CursorName::kB);
    Key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kB), b - 1);
    EXPECT_EQ(Line(CursorName::kA), 1499);
    Key(Qt::Key_A);
    EXPECT_EQ(Pair().Active(), CursorName::kA);
    Key(Qt::Key_Escape);
    EXPECT_EQ(Pair().Active(), std::nullopt);
    FindControl<QCheckBox>(m_view->Editor(), kZoomEnable)->setChecked(true);
    Key(Qt::Key_Right);
    EXPECT_FALSE(Graph().Tracker().isNull()) << "the mark of the zoom again";
    EXPECT_EQ(Line(CursorName::kA), 1499);
    Key(Qt::Key_B);
    EXPECT_EQ(Pair().Active(), CursorName::kB);
}

TEST_F(Cursors, MoveByKeysWhileValuesFlow) {
    Show({OverTime(1, 4.0)});
    Give(1500);
    Pair().Show(true);
    const int column = Column(CursorName::kA);
    const std::int64_t line = Line(CursorName::kA);
    Key(Qt::Key_Right);
    EXPECT_EQ(Column(CursorName::kA), column + 1);
    Key(Qt::Key_Left);
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), line + 1);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(Line(CursorName::kA), line + 1 + 100);
}

TEST_F(Cursors, MoveByAPixelByASampleAtLeast) {
    Show({OverTime(1, 0.04)});  // 10 samples
    Give(1500, 10);
    Pair().Show(true);
    Stop();
    const std::int64_t line = Line(CursorName::kA);
    Key(Qt::Key_Right);
    EXPECT_EQ(Line(CursorName::kA), line + 1);
    Key(Qt::Key_Left);
    EXPECT_EQ(Line(CursorName::kA), line);
}

TEST_F(Cursors, JumpToPeaksValleysAndZeroCrossings) {
    Show({OverTime(1, 4.0)});  // X = cos: peaks at lines 0, 500, 1000, 1500
    Give(1600);
    Pair().Show(true);
    Stop();
    Pair().PutOn(CursorName::kA, 800);
    Key(Qt::Key_P);
    EXPECT_EQ(Line(CursorName::kA), 1000);
    Key(Qt::Key_P);
    EXPECT_EQ(Line(CursorName::kA), 1500);
    Key(Qt::Key_P);
    EXPECT_EQ(Line(CursorName::kA), 1500) << "there is none behind";
    Key(Qt::Key_P, Qt::ShiftModifier);
    EXPECT_EQ(Line(CursorName::kA), 1000);
    Key(Qt::Key_V);
    EXPECT_EQ(Line(CursorName::kA), 1250);
    Key(Qt::Key_0);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1375.0, 1.0);
    Pair().PutOn(CursorName::kA, 1370);
    Key(Qt::Key_Z, Qt::ShiftModifier);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1125.0, 1.0);
    Pair().PutOn(CursorName::kA, 1130);
    Key(Qt::Key_Z);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1375.0, 1.0);
    Pair().PutOn(CursorName::kA, 1130);
    Key(Qt::Key_0, Qt::ShiftModifier);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1375.0, 1.0)
        << "where 0 is typed with Shift";
    Key(Qt::Key_T);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1375.0, 1.0) << "there is no trigger";
}

TEST_F(Cursors, JumpToTheTriggerOfARecordingAndStayInIt) {
    WavoGraph graph = OverTime(1, 1.0);
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 0.9999, "X"};
    Show({graph});
    m_given = 100;  // X rises above it at line 490 of the motion
    Give(300);
    Give(300);
    Give(300);
    ASSERT_EQ(Graph().State(), RunState::kStoppedAfterStart);
    Pair().Show(true);
    Key(Qt::Key_T);
    double value = *m_view->Measured().Renew().curves.at(0).figures.a;
    EXPECT_GT(value, 0.9999);
    EXPECT_EQ(Column(CursorName::kA), Graph().PlotArea().left());
    const std::int64_t a = Line(CursorName::kA);
    const std::int64_t b = Line(CursorName::kB);
    Give(300);
    EXPECT_EQ(Line(CursorName::kA), a) << "the recording stands";
    m_view->Zooms().ZoomGraph(0, 0.5, 0.9);
    EXPECT_EQ(Line(CursorName::kA), a);
    EXPECT_EQ(Line(CursorName::kB), b);
    EXPECT_EQ(Column(CursorName::kA), -99);
    EXPECT_NE(Column(CursorName::kB), -99);
    EXPECT_EQ(*m_view->Measured().Renew().curves.at(0).figures.a, value);
}

TEST_F(Cursors, OverAnAxisAreTheNearestPoint) {
    Show({OverAxis(1), OverTime(2, 4.0)});
    Give(400);
    Pair().Show(true);
    Stop();
    Pair().PutOn(CursorName::kB, 125);  // X 0, Y 1
    const auto top = Pair().PlaceIn(Graph(0), CursorName::kB);
    ASSERT_TRUE(top.has_value());
    const QRect& plot = Graph(0).PlotArea();
    EXPECT_NEAR(top->x(), plot.center().x(), 2);
    Click(plot.center() + QPoint(-plot.width() / 3, 0), Qt::ControlModifier);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 250.0, 3.0) << "X -1, Y 0";
    m_view->Measured().SetAllGraphs(true);
    const MeasuredTable& table = m_view->Measured().Renew();
    ASSERT_THAT(table.curves, SizeIs(2));
    EXPECT_EQ(table.curves[0].label, "Y over X");
    EXPECT_NEAR(*table.curves[0].figures.a, 0.0, 0.04);
    EXPECT_NEAR(*table.curves[0].x_at_a, -1.0, 0.001);
    EXPECT_NEAR(*table.a, (250.0 - 399.0) * kLineTime, 3.0 * kLineTime);
    EXPECT_EQ(Column(CursorName::kA, 1),
              Graph(1).Frame().PixelOfX(static_cast<double>(Line(CursorName::kA)) * kLineTime));
}

TEST_F(Cursors, StandWhereThereIsNothing) {
    Pair().Show(true);
    EXPECT_EQ(Pair().LineOf(CursorName::kA), std::nullopt);
    Show({OverTime(1, 4.0)});
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0), 1);
    EXPECT_FALSE(m_view->Measured().Renew().a.has_value());
    Key(Qt::Key_Right);
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(1.0 / 3.0) + 1, 1);
    Key(Qt::Key_P);
    Key(Qt::Key_T);
    Give(1);
    Stop();
    EXPECT_EQ(Line(CursorName::kA), 0) << "the one sample that there is";
    EXPECT_EQ(Line(CursorName::kB), 0);
    Show({});
    EXPECT_EQ(Line(CursorName::kA), -99) << "no graph";
}

TEST_F(Cursors, InASweepReadWhatTheScreenShowsAtTheirPlace) {
    WavoGraph graph = OverTime(1, 4.0);
    graph.Mode = GraphMode::kClassic;
    Show({graph});
    Give(1200);  // overwrites the first 200 or so
    Pair().Show(true);
    Click({ColumnOfPart(0.1), Middle()}, Qt::ControlModifier);
    Click({ColumnOfPart(0.9), Middle()}, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1100.0, 3.0) << "of the new sweep";
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kB)), 900.0, 3.0) << "of the one before";
    EXPECT_LT(*m_view->Measured().Renew().difference, 0.0) << "B was before A";
    Stop();
    EXPECT_NEAR(Column(CursorName::kA), ColumnOfPart(0.1), 1);
    Pair().PutOn(CursorName::kA, 1199);
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), 1199) << "the newest";
    Give(10);
    EXPECT_EQ(Line(CursorName::kA), 1199);
}

TEST_F(Cursors, MoveOverLinesThatTheGraphHasNot) {
    Show({OverTime(1, 4.0)});
    Give(300);
    for (GraphValue& value : m_view->Work().Streams().Registry().Values()) {
        value.SetEnabled(false);
    }
    Give(200);
    m_view->Work().Streams().Enable();
    Give(300);
    Pair().Show(true);
    Stop();
    Pair().PutOn(CursorName::kA, 299);
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), 500) << "200 lines are missing";
    Key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), 299);
    Pair().PutOn(CursorName::kB, 500);
    const MeasuredTable& table = m_view->Measured().Renew();
    EXPECT_EQ(table.curves.at(0).figures.between.count, 2);
    EXPECT_EQ(table.curves.at(0).figures.between.not_finite, 200);
    EXPECT_NEAR(*table.difference, 201 * kLineTime, 1e-9);
}

TEST_F(Cursors, ArePaintedOverThePageThatIsPrinted) {
    Show({OverTime(1, 4.0)});
    Give(900);
    Stop();
    const QImage none = CursorsOver(m_view->Screen().Picture(), m_view->Board(), Pair(), 0);
    EXPECT_TRUE(none.isNull());
    Pair().Show(true);
    const QImage over = CursorsOver(m_view->Screen().Picture(), m_view->Board(), Pair(), 0);
    ASSERT_EQ(over.size(), m_view->Screen().Picture().size());
    const int column = Column(CursorName::kA);
    EXPECT_EQ(over.pixel(column, Middle()), qRgba(255, 255, 255, 255));
    EXPECT_EQ(over.pixel(column + 5, Middle()), qRgba(0, 0, 0, 0));

    EXPECT_EQ(m_view->Screen().Picture().pixel(column, Middle()) & 0xFFFFFFU,
              m_view->Screen().Picture().pixel(column + 5, Middle()) & 0xFFFFFFU)
        << "not in the picture";
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    m_prompts.box = [](QWidget*, const Box&) { return BoxAnswer::kYes; };
    const auto printed = [this](const char* name) {
        const QString file = m_folder.filePath(QLatin1String(name));
        m_prompts.print = [&](QWidget*, QPrinter& printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(file);
            return true;
        };
        m_view->Printer().Print(nullptr);
        return testing::PageOf(file, 100);
    };
    const QImage with = printed("with.pdf");
    Pair().Show(false);
    const QImage without = printed("without.pdf");
    ASSERT_EQ(with.size(), without.size());
    int differing = 0;
    for (int x = 0; x < with.width(); ++x) {
        int rows = 0;
        for (int y = 0; y < with.height(); ++y) {
            rows += with.pixel(x, y) != without.pixel(x, y) ? 1 : 0;
        }
        differing += rows > 50 ? 1 : 0;
    }
    EXPECT_GE(differing, 2) << "two upright lines";
    EXPECT_LE(differing, 8);
}

/// No editor: nothing is selected.
struct NoZooms : ZoomTarget {
    void Select(std::uint32_t) override {}
    [[nodiscard]] std::uint32_t Selected() const override { return 0; }
    [[nodiscard]] bool IsEnabled() const override { return false; }
    [[nodiscard]] bool IsBusy() const override { return false; }
    [[nodiscard]] double TimeStep() const override { return kLineTime; }
    void ZoomTo(std::uint32_t, const TimeWindow&) override {}
    void ZoomOut(std::uint32_t) override {}
    void UpdatePart(const QRect&) override {}
    void RepaintPart(const QRect&) override {}
};

TEST(CursorsOnFineScreens, StandInLogicalPixelsAndAreAsWideAsOne) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(ratio);
        GraphList graphs;
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        graph.Mode = GraphMode::kContinuity;
        graph.XScale.TimeRange = 4.0;
        graphs.Add(graph);
        ValueStreams streams;
        GraphBoard board(graphs, streams, [] {});
        board.CreateAllGraphRects({0, 0, 400, 200}, kLineTime, {"X"}, ViewSettings());
        std::vector<double> values(900);
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<double>(i);
        }
        streams.Distribute({values.data(), values.size(), 1});
        QImage picture(QSizeF(400 * ratio, 200 * ratio).toSize(), QImage::Format_RGB32);
        picture.setDevicePixelRatio(ratio);
        board.DrawAll(picture, false);
        NoZooms zooms;
        GraphCursors cursors(
            board, zooms, [] { return false; }, [](const GraphDraw&, std::int64_t) {}, [] {});
        cursors.Show(true);
        const GraphDraw& drawer = *board.Drawers().front();
        cursors.PutAt(CursorName::kB, drawer, {100, 50});
        const auto mark = MarkOf(drawer, cursors, CursorName::kB);
        ASSERT_TRUE(mark.has_value());
        EXPECT_EQ(mark->place.x(), 100);
        const QImage over = CursorsOver(picture, board, cursors, 0);
        const auto is_line = [&](int x) {
            for (int y = static_cast<int>(40 * ratio); y < static_cast<int>(150 * ratio); ++y) {
                if (qAlpha(over.pixel(x, y)) > 200) {
                    return true;
                }
            }
            return false;
        };
        EXPECT_TRUE(is_line(static_cast<int>(100 * ratio)));
        EXPECT_FALSE(is_line(static_cast<int>(103 * ratio)));
    }
}

TEST_F(Cursors, LeaveThePictureAsItIs) {
    Show({OverTime(1, 4.0), OverAxis(2)});
    Give(900);
    Stop();
    const QImage picture = m_view->Screen().Picture().copy();
    const QImage window = m_view->grab().toImage();
    Pair().Show(true);
    EXPECT_EQ(m_view->Screen().Picture(), picture);
    EXPECT_NE(m_view->grab().toImage(), window);
    Pair().Show(false);
    EXPECT_EQ(m_view->grab().toImage(), window);
}

}  // namespace
}  // namespace wavo
