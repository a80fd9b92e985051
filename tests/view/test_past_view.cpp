// Recordings in the whole viewer: opened, moved through, closed.
#include <gmock/gmock.h>

#include <QCheckBox>
#include <cmath>

#include "past_fixture.h"
#include "ui/controls/controls.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Past = testing::PastFixture;

TEST_F(Past, ARecordingTakesThePlaceOfTheLiveValues) {
    Give(1.0, 5);
    const int holds = m_source->holds;
    OpenSample();
    EXPECT_EQ(m_source->holds, holds + 1);
    EXPECT_FALSE(m_source->comes_back);
    EXPECT_EQ(m_title, "night.mcap - wavo.ini");
    EXPECT_EQ(m_panes[2], "cycl. time=0.00100s");
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "Y", "Z"));
    EXPECT_TRUE(m_view->Past().Window().IsShown());
    EXPECT_EQ(Seen(), (LineRange{100, 5100}));
    EXPECT_EQ(Graph().DisplayedWindow(), (TimeWindow{0.0, 4.999}));
    for (const CommandId id : {CommandId::kStart, CommandId::kStop, CommandId::kStartAfterTrigger,
                               CommandId::kConnect}) {
        EXPECT_FALSE(IsEnabled(id)) << static_cast<int>(id);
    }
    EXPECT_TRUE(IsEnabled(CommandId::kOpen));
    EXPECT_TRUE(IsEnabled(CommandId::kSaveAs));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(Past, WhatTheMasterSaysMeanwhileIsNotShown) {
    Give(1.0, 5);
    OpenSample();
    const QImage before = m_view->Screen().Picture().copy();
    EXPECT_FALSE(m_source->events->BatchReady());
    m_source->description.axis_names = {"Q"};
    m_source->events->Described(true);
    m_source->events->ValuesBegin(true);
    m_source->events->StateChanged();
    m_source->events->ShowFault("overrun");
    m_source->events->Ended();
    EXPECT_EQ(m_view->Screen().Picture(), before);
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "Y", "Z"));
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_EQ(m_source->answers, 1);
}

TEST_F(Past, ClosingBringsGraphsPathAndLinkBack) {
    Give(1.0, 5);
    const std::string path = m_view->Work().Files().CurrentPath();
    const auto graphs = m_view->Work().Graphs().Graphs();
    ASSERT_THAT(graphs, SizeIs(1));
    const int starts = m_source->starts;
    OpenSample();
    m_view->Commands().Execute(CommandId::kNew);
    ASSERT_THAT(m_view->Work().Graphs().Graphs(), SizeIs(1)) << "a default graph, as of a batch";
    m_view->Work().Files().SetCurrentPath("/elsewhere.ini");
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_FALSE(m_view->Past().Window().IsShown());
    EXPECT_EQ(m_view->Work().Files().CurrentPath(), path);
    ASSERT_THAT(m_view->Work().Graphs().Graphs(), SizeIs(1));
    EXPECT_EQ(m_view->Work().Graphs().Graphs()[0], graphs[0]);
    EXPECT_EQ(m_source->starts, starts + 1);
    EXPECT_TRUE(m_source->comes_back);
    EXPECT_EQ(m_title, "wavo.ini - running");
    EXPECT_TRUE(IsEnabled(CommandId::kStop));
    Give(7.0, 3);
    std::vector<double> shown;
    EXPECT_TRUE(Graph().GetAxValues("X", shown));
    ASSERT_GE(shown.size(), 9U) << "what was there, a gap, what has come since";
    EXPECT_THAT(std::vector(shown.begin(), shown.begin() + 5),
                ElementsAre(1.0, 2.0, 3.0, 4.0, 5.0));
    EXPECT_TRUE(std::isnan(shown[5]));
    EXPECT_THAT(std::vector(shown.end() - 3, shown.end()), ElementsAre(7.0, 8.0, 9.0));
}

TEST_F(Past, ADefaultGraphFitsTheValuesWhereNoLimitsAreKnown) {
    ASSERT_TRUE(m_view->Work().Graphs().IsEmpty());
    const std::string path = PathOf("plain.mcap");
    recording::RecordingHead head = testing::MakeHead(2);
    head.limits.clear();
    std::vector<std::vector<double>> lines;
    for (int i = 0; i < 100; ++i) {
        lines.push_back({1000.0 + i, 0.0});
    }
    testing::WriteRecording(path, head, lines);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    ASSERT_THAT(m_view->Board().Drawers(), SizeIs(1));
    const ScaleDefinition& scale = Graph().Graph().YScales[0];
    EXPECT_EQ(scale.ScaleAx, ScaleAxCode::kAutomatic);
    (void)m_view->Screen().Picture();
    EXPECT_LE(Graph().Graph().YScales[0].Minimum, 1000.0);
    EXPECT_GE(Graph().Graph().YScales[0].Maximum, 1099.0);
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_TRUE(m_view->Work().Graphs().IsEmpty());
}

TEST_F(Past, AStoppedViewerIsStoppedAgain) {
    m_view->Commands().Execute(CommandId::kStop);
    OpenSample();
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_EQ(m_title, "wavo.ini - stopped");
    EXPECT_TRUE(IsEnabled(CommandId::kStart));
    EXPECT_FALSE(IsEnabled(CommandId::kStop));
}

TEST_F(Past, ARecordingThatCannotBeOpenedLeavesAllAsItWas) {
    Give(1.0, 5);
    const int holds = m_source->holds;
    EXPECT_FALSE(m_view->Past().Files().Open(PathOf("missing.mcap")));
    ASSERT_THAT(m_boxes, SizeIs(1));
    EXPECT_THAT(m_boxes[0], HasSubstr("missing.mcap"));
    EXPECT_EQ(m_source->holds, holds);
    EXPECT_EQ(m_title, "wavo.ini - running");
    Give(7.0, 3);
    OpenSample();
    EXPECT_FALSE(m_view->Past().Files().Open(PathOf("missing.mcap")));
    EXPECT_EQ(m_title, "night.mcap - wavo.ini");
    EXPECT_EQ(Seen(), (LineRange{100, 5100}));
}

TEST_F(Past, AnotherRecordingTakesThePlaceOfTheFirst) {
    Give(1.0, 5);
    const int holds = m_source->holds;
    OpenSample();
    const std::string path = PathOf("other.mcap");
    testing::WriteRecording(path, testing::MakeHead(1, 0.002), testing::MakeLines(1, 300, 1));
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_EQ(m_title, "other.mcap - wavo.ini");
    EXPECT_EQ(Seen(), (LineRange{0, 300}));
    EXPECT_EQ(m_source->holds, holds + 1);
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_EQ(m_title, "wavo.ini - running");
}

TEST_F(Past, TriggersDoNotWait) {
    Give(1.0, 5);
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 1e9, "X"}};
    m_view->Work().Graphs().Put(graph);
    EXPECT_EQ(Graph().State(), RunState::kWaitingForStart);
    OpenSample();
    EXPECT_EQ(Graph().State(), RunState::kRunning);
    EXPECT_EQ(m_view->Work().Graphs().Graphs()[0].Triggers, graph.Triggers);
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_EQ(Graph().State(), RunState::kWaitingForStart);
}

TEST_F(Past, AxesThatTheRecordingHasNotAreTold) {
    Give(1.0, 5);
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.YCoorAxName = {"Spindle"};
    m_view->Work().Graphs().Put(graph);
    OpenSample();
    EXPECT_EQ(m_panes[0], "Not in the recording: Spindle");
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_EQ(m_panes[0], "From memory");
}

TEST_F(Past, WheelZoomsAtThePointerAndShiftMoves) {
    OpenSample();
    const QRect plot = Graph().PlotArea();
    Wheel(plot.center(), 120);
    EXPECT_EQ(Seen().Count(), 4000);
    EXPECT_NEAR(static_cast<double>(Seen().begin + Seen().end) / 2, 2600.0, 3.0);
    Wheel(plot.center(), 120, Qt::ShiftModifier);
    const LineRange moved = Seen();
    EXPECT_EQ(moved.Count(), 4000);
    EXPECT_NEAR(static_cast<double>(moved.begin), 200.0, 3.0) << "up is back";
    for (int i = 0; i < 100; ++i) {
        Wheel({plot.left(), plot.center().y()}, 120);
    }
    EXPECT_EQ(Seen(), (LineRange{moved.begin, moved.begin + SeenLines::kFewest}));
    for (int i = 0; i < 100; ++i) {
        Wheel(plot.center(), -120);
    }
    EXPECT_EQ(Seen(), (LineRange{100, 5100}));
    EXPECT_EQ(Graph().State(), RunState::kRunning);
}

TEST_F(Past, KeysGoToBothEndsAndByPages) {
    OpenSample();
    m_view->Past().Window().Show({1000, 2001});
    QTest::keyClick(m_view.get(), Qt::Key_PageDown);
    EXPECT_EQ(Seen(), (LineRange{1900, 2901}));
    QTest::keyClick(m_view.get(), Qt::Key_PageUp);
    EXPECT_EQ(Seen(), (LineRange{1000, 2001}));
    QTest::keyClick(m_view.get(), Qt::Key_End);
    EXPECT_EQ(Seen(), (LineRange{4099, 5100}));
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    EXPECT_EQ(Seen(), (LineRange{100, 1101}));
}

TEST_F(Past, TheMiddleButtonMovesWhatIsUnderThePointer) {
    OpenSample();
    m_view->Past().Window().Show({1000, 2001});
    const QRect plot = Graph().PlotArea();
    const QPoint from = plot.center();
    const QPoint to = from - QPoint(plot.width() / 4, 0);
    QTest::mousePress(m_view.get(), Qt::MiddleButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, to, m_view->mapToGlobal(to), Qt::NoButton, Qt::MiddleButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(m_view.get(), &move);
    QTest::mouseRelease(m_view.get(), Qt::MiddleButton, {}, to);
    EXPECT_NEAR(static_cast<double>(Seen().begin), 1250.0, 5.0);
    EXPECT_EQ(Seen().Count(), 1001);
}

TEST_F(Past, TheRightButtonZoomsAndMinusStepsBack) {
    OpenSample();
    constexpr int kZoomEnable = 1072;
    FindControl<QCheckBox>(m_view->Editor(), kZoomEnable)->setChecked(true);
    const QRect plot = Graph().PlotArea();
    const auto drag = [&](int left, int right) {
        const QPoint from(left, plot.center().y());
        const QPoint to(right, plot.center().y());
        QTest::mousePress(m_view.get(), Qt::RightButton, {}, from);
        QTest::mouseMove(m_view.get(), to);
        QTest::mouseRelease(m_view.get(), Qt::RightButton, {}, to);
    };
    drag(plot.left() + plot.width() / 4, plot.left() + plot.width() / 2);
    const LineRange once = Seen();
    EXPECT_NEAR(static_cast<double>(once.Count()), 1250.0, 15.0);
    drag(plot.left() + plot.width() / 4, plot.left() + plot.width() / 2);
    EXPECT_NEAR(static_cast<double>(Seen().Count()), 312.0, 5.0);
    QTest::keyClick(m_view.get(), Qt::Key_Minus);
    EXPECT_EQ(Seen(), once);
    QTest::keyClick(m_view.get(), Qt::Key_Minus);
    EXPECT_EQ(Seen(), (LineRange{100, 5100}));
}

TEST_F(Past, AllGraphsOverTimeShowTheSameWindow) {
    OpenSample();
    WavoGraph second = m_view->Work().Graphs().Graphs()[0];
    second.GraphNumber = m_view->Work().Graphs().FreeNumber();
    second.YCoorAxName = {"Z"};
    second.YCoorAxDerivation = {2};
    m_view->Work().Graphs().Add(second);
    WavoGraph third = second;
    third.GraphNumber = m_view->Work().Graphs().FreeNumber();
    third.XCoorType = CoorType::kAxis;
    third.XCoorAxName = "X";
    third.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, 0.0, 0.0};
    m_view->Work().Graphs().Add(third);
    m_view->Past().Window().Show({1000, 2001});
    EXPECT_EQ(Graph(0).DisplayedWindow(), Graph(1).DisplayedWindow());
    EXPECT_EQ(Graph(2).Past()->lines, (LineRange{1000, 2001}));
    const QImage before = m_view->Screen().Picture().copy();
    QTest::keyClick(m_view.get(), Qt::Key_PageDown);
    EXPECT_NE(m_view->Screen().Picture(), before);
    QTest::keyClick(m_view.get(), Qt::Key_PageUp);
    EXPECT_EQ(m_view->Screen().Picture(), before);
}

TEST_F(Past, ManyPointsOverAnAxisComeInSteps) {
    const std::string path = PathOf("long.mcap");
    testing::WriteRecording(path, testing::MakeHead(2), testing::MakeLines(2, 300000, 5));
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y";
    graph.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, 0.0, 0.0};
    m_view->Work().Graphs().Put(graph);
    const auto points = [this] {
        const LinesDrawAxis& curve = *Graph().Lines().front();
        std::size_t count = 0;
        for (std::size_t i = 0; i < curve.ShownSize(); ++i) {
            count += std::isnan(curve.ShownPoint(i).y_value) ? 0 : 1;
        }
        return count;
    };
    EXPECT_GT(points(), 0U);
    EXPECT_LT(points(), 300000U);
    EXPECT_FALSE(m_view->Board().IsExact()) << "there is a sign that points are missing";
    for (int i = 0; i < 2000 && !m_view->Board().IsExact(); ++i) {
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(m_view->Board().IsExact());
    EXPECT_EQ(points(), 300000U);
    const std::uint64_t read = m_view->Work().Recording()->Reader().BytesRead();
    m_view->Past().Window().Show({1000, 300000});
    EXPECT_EQ(points(), 299000U);
    EXPECT_LT(m_view->Work().Recording()->Reader().BytesRead() - read, 100000U);
    m_view->Past().Window().Show({0, 300000});
    EXPECT_FALSE(m_view->Screen().Picture().isNull());
    EXPECT_EQ(points(), 300000U) << "a print has all";
}

TEST_F(Past, PointsOverAnAxisAreThoseOfTheirWindow) {
    const std::string path = PathOf("spiral.mcap");
    std::vector<std::vector<double>> lines(20000);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double angle = 0.01 * static_cast<double>(i);
        const double radius = 0.002 * static_cast<double>(i);
        lines[i] = {radius * std::cos(angle), radius * std::sin(angle)};
    }
    testing::WriteRecording(path, testing::MakeHead(2), lines);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y";
    graph.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -50.0, 50.0};
    graph.YScales.front() = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -50.0, 50.0};
    m_view->Work().Graphs().Put(graph);
    m_view->Past().Window().Show({1000, 3000});
    const QImage first = m_view->Screen().Picture().copy();
    for (const std::int64_t begin : {5000, 5010, 16000, 1000}) {
        m_view->Past().Window().Show({begin, begin + 2000});
        const QImage shown = m_view->Screen().Picture().copy();
        m_view->Past().Window().Show({begin, begin + 2001});
        m_view->Work().RebuildGraphs();
        m_view->Past().Window().Show({begin, begin + 2000});
        EXPECT_EQ(shown, m_view->Screen().Picture()) << begin;
        EXPECT_EQ(shown == first, begin == 1000) << begin;
    }
}

TEST_F(Past, AStoppedGraphMovesWithinWhatItHolds) {
    for (int i = 0; i < 3000; i += 100) {
        Give(i, 100);
    }
    const QRect plot = Graph().PlotArea();
    Wheel(plot.center(), 120);
    EXPECT_FALSE(m_view->Past().Window().IsShown()) << "while it runs";
    m_view->Commands().Execute(CommandId::kStop);
    const QImage stopped = m_view->Screen().Picture().copy();
    Wheel(plot.center(), 120);
    EXPECT_TRUE(m_view->Past().Window().IsShown());
    EXPECT_EQ(Graph().State(), RunState::kRunning);
    const LineRange held = m_view->Past().Window().Window().Held();
    EXPECT_EQ(held.end, 3000);
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    EXPECT_EQ(Seen().begin, held.begin);
    EXPECT_EQ(Graph().Places().ValueAt(0, 0.0), static_cast<double>(held.begin));
    QTest::keyClick(m_view.get(), Qt::Key_End);
    EXPECT_EQ(Seen().end, 3000);
    QTest::keyClick(m_view.get(), Qt::Key_Minus);
    EXPECT_FALSE(m_view->Past().Window().IsShown());
    EXPECT_EQ(m_view->Screen().Picture(), stopped);
}

TEST_F(Past, TheMiddleButtonOverAnXyGraphMovesNothing) {
    Give(0.0, 300);
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y";
    m_view->Work().Graphs().Put(graph);
    m_view->Commands().Execute(CommandId::kStop);
    const QPoint from = Graph().PlotArea().center();
    QTest::mousePress(m_view.get(), Qt::MiddleButton, {}, from);
    EXPECT_FALSE(m_view->Past().Window().IsShown());
    EXPECT_FALSE(m_view->Past().Window().DragTo(from - QPoint(50, 0)));
    QTest::mouseRelease(m_view.get(), Qt::MiddleButton, {}, from);
    EXPECT_FALSE(Graph().Past().has_value());
}

TEST_F(Past, StartLeavesThePast) {
    Give(0.0, 300);
    m_view->Commands().Execute(CommandId::kStop);
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    EXPECT_TRUE(m_view->Past().Window().IsShown());
    m_view->Commands().Execute(CommandId::kStart);
    EXPECT_FALSE(m_view->Past().Window().IsShown());
    Give(500.0, 3);
    std::vector<double> shown;
    EXPECT_TRUE(Graph().GetAxValues("X", shown));
    EXPECT_THAT(shown, ElementsAre(500.0, 501.0, 502.0));
}

TEST_F(Past, GraphsOfTheRecordingComeOnRequestAndSaveAsksForAName) {
    const std::string graphs = PathOf("graphs.ini");
    Give(1.0, 5);
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.YCoorAxName = {"Z"};
    m_view->Work().Graphs().Put(graph);
    ASSERT_TRUE(m_view->Work().Files().WriteCopy(graphs));
    QFile file(QString::fromStdString(graphs));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::string text = file.readAll().toStdString();
    graph.YCoorAxName = {"X"};
    m_view->Work().Graphs().Put(graph);
    OpenSample();
    EXPECT_FALSE(m_view->Past().Files().IsEnabled(CommandId::kRecordingGraphs));
    const std::string path = PathOf("with_graphs.mcap");
    testing::WriteRecording(path, testing::MakeHead(3), m_lines, 0, 0,
                            recording::GraphFile{"shapes.ini", text});
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_THAT(Graph().Graph().YCoorAxName, ElementsAre("X")) << "the user's";
    m_view->Past().Files().Execute(CommandId::kRecordingGraphs);
    EXPECT_THAT(Graph().Graph().YCoorAxName, ElementsAre("Z"));
    EXPECT_EQ(m_title, "with_graphs.mcap - shapes.ini");
    EXPECT_TRUE(Graph().Past().has_value());
    int asked = 0;
    m_prompts.save_file = [&](QWidget*, const FileQuestion&) {
        ++asked;
        return std::optional<QString>();
    };
    ASSERT_TRUE(IsEnabled(CommandId::kSave));
    m_view->Commands().Execute(CommandId::kSave);
    EXPECT_EQ(asked, 1);
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    EXPECT_THAT(Graph().Graph().YCoorAxName, ElementsAre("X"));
    m_view->Commands().Execute(CommandId::kSave);
    EXPECT_EQ(asked, 1) << "it has a name again";
}

TEST_F(Past, ThePictureIsExactEvenWhereNobodySeesTheWindow) {
    const std::string path = PathOf("long.mcap");  // more than a drawing reads
    testing::WriteRecording(path, testing::MakeHead(3), testing::MakeLines(3, 60000, 5));
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    const QImage seen = m_view->Screen().Picture().copy();
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    m_view->hide();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_EQ(m_view->Screen().Picture(), seen);
    EXPECT_TRUE(m_view->Board().IsExact());
}

TEST_F(Past, AlmostEmptyRecordingsAreShown) {
    for (const std::size_t axes : {0U, 1U}) {
        for (const std::size_t lines : {0U, 1U, 2U}) {
            const std::string path =
                PathOf(("few" + std::to_string(axes) + std::to_string(lines) + ".mcap").c_str());
            testing::WriteRecording(path, testing::MakeHead(axes),
                                    testing::MakeLines(axes, lines, 3));
            EXPECT_TRUE(m_view->Past().Files().Open(path));
            QTest::keyClick(m_view.get(), Qt::Key_End);
            Wheel(m_view->rect().center(), 120);
            QTest::keyClick(m_view.get(), Qt::Key_PageUp);
            EXPECT_FALSE(m_view->Screen().Picture().isNull());
        }
    }
    EXPECT_THAT(m_boxes, IsEmpty());
}

}  // namespace
}  // namespace wavo
