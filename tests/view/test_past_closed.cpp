// A recording that was opened and closed again: all is as it was before.
#include <gmock/gmock.h>

#include <QFile>
#include <QLineEdit>
#include <cmath>

#include "past_fixture.h"
#include "settings/view_settings_file.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/graph_editor/editor_controls.h"

namespace wavo {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class PastClosed : public testing::PastFixture {
 protected:
    PastClosed() { Give(1.0, 5); }

    void Close() { m_view->Past().Execute(CommandId::kCloseRecording); }
    void OpenAndClose() {
        OpenSample();
        EXPECT_TRUE(Graph().Past().has_value());
        m_view->Past().Window().Show({1000, 1201});
        Close();
        QCoreApplication::processEvents();
    }
    void Change(const std::function<void(WavoGraph&)>& change) {
        WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
        change(graph);
        m_view->Work().Graphs().Put(graph);
        QCoreApplication::processEvents();
    }
    void AddSecondGraph() {
        WavoGraph second = m_view->Work().Graphs().Graphs()[0];
        second.GraphNumber = m_view->Work().Graphs().FreeNumber();
        second.YCoorAxName = {"Y"};
        m_view->Work().Graphs().Add(second);
        QCoreApplication::processEvents();
    }
    /// Seconds, in the graph editor.
    [[nodiscard]] QString ShownTime() {
        return FindControl<QLineEdit>(m_view->Editor(), static_cast<int>(EditorControl::kTimeRange))
            ->text();
    }
    [[nodiscard]] QImage Picture() { return m_view->Screen().Picture().copy(); }
    [[nodiscard]] std::vector<double> Shown() const {
        std::vector<double> shown;
        EXPECT_TRUE(Graph().GetAxValues("X", shown));
        return shown;
    }
};

TEST_F(PastClosed, AStoppedViewerShowsTheSamePictureAgain) {
    Give(6.0, 300);
    m_view->Commands().Execute(CommandId::kStop);
    const QImage before = Picture();
    OpenAndClose();
    EXPECT_EQ(Picture(), before);
    EXPECT_EQ(m_title, "wavo.ini - stopped");
    EXPECT_EQ(m_panes[2], "cycl. time=0.00400s");
    EXPECT_THAT(Shown(), SizeIs(305));
}

TEST_F(PastClosed, AGraphThatItsTriggerHasStoppedStandsAsItStood) {
    Change([](WavoGraph& graph) { graph.Triggers = {{TriggerTypeCode::kStopAbove, 2.0, "X"}}; });
    Give(1.0, 100);
    EXPECT_EQ(Graph().State(), RunState::kStoppedAfterStop);
    const QImage before = Picture();
    OpenAndClose();
    EXPECT_EQ(Graph().State(), RunState::kStoppedAfterStop);
    Give(500.0, 10);
    EXPECT_EQ(Picture(), before);
    m_view->Commands().Execute(CommandId::kStartAfterTrigger);
    Give(500.0, 1);
    EXPECT_EQ(Graph().State(), RunState::kStoppedAfterStop) << "it takes values again";
}

TEST_F(PastClosed, AGraphThatWaitsForItsTriggerGoesOnWaiting) {
    Change([](WavoGraph& graph) { graph.Triggers = {{TriggerTypeCode::kStartAbove, 50.0, "X"}}; });
    Give(1.0, 10);
    EXPECT_EQ(Graph().State(), RunState::kWaitingForStart);
    OpenAndClose();
    EXPECT_EQ(Graph().State(), RunState::kWaitingForStart);
    Give(60.0, 3);
    EXPECT_EQ(Graph().State(), RunState::kRunningAfterStart);
}

TEST_F(PastClosed, AZoomIsOnAgainAndCanBeSteppedBackFrom) {
    Give(6.0, 300);
    m_view->Commands().Execute(CommandId::kStop);
    const QImage whole = Picture();
    m_view->Zooms().ZoomGraph(0, 0.1, 0.5);
    const QImage zoomed = Picture();
    ASSERT_NE(zoomed, whole);
    const QString time = ShownTime();
    OpenAndClose();
    EXPECT_TRUE(Graph().Zoom().active);
    EXPECT_EQ(Picture(), zoomed);
    EXPECT_EQ(ShownTime(), time);
    QTest::keyClick(m_view.get(), Qt::Key_Minus);
    EXPECT_EQ(Picture(), whole);
}

TEST_F(PastClosed, AStoppedGraphIsWhereItWasMovedTo) {
    for (int i = 0; i < 3000; i += 100) {
        Give(i, 100);
    }
    m_view->Commands().Execute(CommandId::kStop);
    const QImage newest = Picture();
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    Wheel(Graph().PlotArea().center(), 120);
    const LineRange seen = Seen();
    const QImage before = Picture();
    OpenAndClose();
    EXPECT_TRUE(m_view->Past().Window().IsShown());
    EXPECT_EQ(Seen(), seen);
    EXPECT_EQ(Picture(), before);
    QTest::keyClick(m_view.get(), Qt::Key_End);
    EXPECT_EQ(Seen().end, 3005);
    QTest::keyClick(m_view.get(), Qt::Key_Minus);
    EXPECT_EQ(Picture(), newest);
}

TEST_F(PastClosed, TheGraphThatWasSelectedIsSelectedAgain) {
    AddSecondGraph();
    const std::uint32_t number = m_view->Work().Graphs().Graphs()[1].GraphNumber;
    m_view->Zooms().Select(number);
    OpenAndClose();
    EXPECT_EQ(m_view->Editor().SelectedNumber(), number);
}

TEST_F(PastClosed, AnotherRecordingBetweenMakesNoDifference) {
    m_view->Commands().Execute(CommandId::kStop);
    const QImage before = Picture();
    OpenSample();
    const std::string path = PathOf("other.mcap");
    testing::WriteRecording(path, testing::MakeHead(1, 0.002), testing::MakeLines(1, 300, 1));
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    Close();
    EXPECT_EQ(Picture(), before);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    Close();
    EXPECT_EQ(Picture(), before);
}

TEST_F(PastClosed, AWindowOfAnotherSizeShowsTheGraphsInIt) {
    m_view->Commands().Execute(CommandId::kStop);
    const QImage before = Picture();
    m_view->resize(700, 500);
    const QImage smaller = Picture();
    m_view->resize(900, 700);
    ASSERT_EQ(Picture(), before);
    OpenSample();
    m_view->resize(700, 500);
    Close();
    EXPECT_EQ(Picture(), smaller);
}

TEST_F(PastClosed, SettingsOfAGraphFileThatWasOpenedMeanwhileAreGone) {
    const std::string path = PathOf("dark.ini");
    ASSERT_TRUE(m_view->Work().Files().WriteCopy(path));
    const ViewSettings before = m_view->Work().Settings().Current();
    ViewSettings other = before;
    other.background = 0x00203040;
    other.scale_lines_x = before.scale_lines_x + 3;
    ASSERT_TRUE(WriteProperties(path, other));
    m_view->Commands().Execute(CommandId::kStop);
    const QImage picture = Picture();
    OpenSample();
    m_prompts.open_file = [&](QWidget*, const FileQuestion&) {
        return std::optional(QString::fromStdString(path));
    };
    m_view->Commands().Execute(CommandId::kOpen);
    ASSERT_EQ(m_view->Work().Settings().Current().background, other.background);
    Close();
    EXPECT_EQ(m_view->Work().Settings().Current(), before);
    EXPECT_EQ(Picture(), picture);
}

TEST_F(PastClosed, SettingsThatTheUserHasSavedMeanwhileStay) {
    m_view->Commands().Execute(CommandId::kStop);
    OpenSample();
    m_view->Work().Settings().Current().background = 0x00203040;  // as with OK of Properties
    m_view->Work().SaveSettings();
    m_view->Work().RebuildGraphs();
    Close();
    EXPECT_EQ(m_view->Work().Settings().Current().background, 0x00203040U);
    EXPECT_THAT(Shown(), ElementsAre(1.0, 2.0, 3.0, 4.0, 5.0));
    EXPECT_EQ(m_view->Screen().Picture().pixel(2, m_view->Screen().GraphArea().top() + 2),
              0xFF403020U);
}

TEST_F(PastClosed, AMasterWithOtherAxesBeginsAnew) {
    OpenSample();
    m_source->found = SourceDescription{{"X", "Q"}, 0.004};
    Close();
    Give(7.0, 3);
    EXPECT_THAT(Shown(), ElementsAre(7.0, 8.0, 9.0));
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "Q"));
}

TEST_F(PastClosed, AMasterWithAnotherCycleTimeBeginsAnew) {
    OpenSample();
    m_source->found = SourceDescription{{"X", "Y"}, 0.002};
    Close();
    EXPECT_EQ(m_panes[2], "cycl. time=0.00200s");
    Give(7.0, 3);
    EXPECT_THAT(Shown(), ElementsAre(7.0, 8.0, 9.0));
}

TEST_F(PastClosed, AMasterThatHasGoneLeavesWhatTheGraphsShow) {
    OpenSample();
    m_source->is_present = false;
    m_source->events->Ended();
    Close();
    EXPECT_THAT(Shown(), ElementsAre(1.0, 2.0, 3.0, 4.0, 5.0));
    m_source->is_present = true;
    ASSERT_TRUE(IsEnabled(CommandId::kConnect) || m_source->starts > 1);
    m_view->Work().Values().ConnectByUser();
    Give(7.0, 3);
    EXPECT_THAT(Shown(), ElementsAre(7.0, 8.0, 9.0)) << "asked for: anew";
}

TEST_F(PastClosed, AMasterThatComesBackByItselfGoesOnBehindAGap) {
    OpenSample();
    m_source->is_present = false;
    m_source->events->Ended();
    Close();
    m_source->is_present = true;
    m_source->events->Described(true);
    m_source->events->ValuesBegin(true);
    Give(7.0, 3);
    const std::vector<double> shown = Shown();
    ASSERT_GE(shown.size(), 9U);
    EXPECT_EQ(shown.front(), 1.0);
    EXPECT_TRUE(std::isnan(shown[5]));
    EXPECT_EQ(shown.back(), 9.0);
}

TEST_F(PastClosed, ValuesThatAreBeingSavedAreThoseOfTheRequest) {
    Give(6.0, 3);
    m_view->Commands().Execute(CommandId::kStop);
    const QImage before = Picture();
    const QString path = QString::fromStdString(PathOf("values.txt"));
    QMetaObject::invokeMethod(
        qApp,
        [this, path] {
            auto* const dialog = dynamic_cast<PathSaveData*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            OpenSample();
            FindControl<QLineEdit>(*dialog, static_cast<int>(PathSaveDataId::kPath))->setText(path);
            dialog->accept();
        },
        Qt::QueuedConnection);
    SendAppMessage(m_view.get(), AppMessage::kSaveValues, 0,
                   reinterpret_cast<std::int64_t>(&m_view->Work().Graphs().Graphs()[0]));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(),
              "X\r\n1.000000\r\n2.000000\r\n3.000000\r\n4.000000\r\n5.000000\r\n6.000000\r\n"
              "7.000000\r\n8.000000\r\n");
    EXPECT_EQ(m_title, "night.mcap - wavo.ini");
    Close();
    EXPECT_EQ(Picture(), before);
    EXPECT_EQ(m_view->Work().Settings().Current().export_settings.data_file, path.toStdString());
}

TEST_F(PastClosed, SaveValuesOfAMovedGraphSavesWhatIsSeen) {
    for (int i = 6; i < 3006; i += 100) {
        Give(i, 100);
    }
    m_view->Commands().Execute(CommandId::kStop);
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    m_view->Past().Window().Show({1000, 1010});
    const QString path = QString::fromStdString(PathOf("values.txt"));
    QMetaObject::invokeMethod(
        qApp,
        [path] {
            auto* const dialog = dynamic_cast<PathSaveData*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            FindControl<QLineEdit>(*dialog, static_cast<int>(PathSaveDataId::kPath))->setText(path);
            dialog->accept();
        },
        Qt::QueuedConnection);
    SendAppMessage(m_view.get(), AppMessage::kSaveValues, 0,
                   reinterpret_cast<std::int64_t>(&m_view->Work().Graphs().Graphs()[0]));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    ASSERT_EQ(lines.size(), 12);
    EXPECT_EQ(lines[1].toStdString(), "1001.000000\r");
    EXPECT_EQ(lines[10].toStdString(), "1010.000000\r");
}

}  // namespace
}  // namespace wavo
