// The view and its graph editor: where it stands, what its messages do, and stepping back from
// zooms.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include "real_prompts.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::IsEmpty;

WavoGraph TimeGraph(std::uint32_t number) {
    WavoGraph graph;
    graph.InitGraph(number, "X", 0, nullptr);
    return graph;
}

class ViewWithEditor : public ::testing::Test {
 protected:
    ViewWithEditor() {
        qputenv(testing::kDataHome, m_folder.path().toUtf8());
        qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        m_view = std::make_unique<CWavoView>(m_prompts);
        m_view->resize(1366, 700);
        m_view->show();
        m_view->OnInitialUpdate();
        QApplication::sendPostedEvents();
    }
    ~ViewWithEditor() override {
        m_view.reset();
        qunsetenv(testing::kDataHome);
        qunsetenv("XDG_RUNTIME_DIR");
    }

    /// Graphs over time, as if a file with them was opened.
    void Show(std::vector<WavoGraph> graphs) {
        m_view->Work().Graphs().Replace(std::move(graphs), GraphList::Telling::kSilent);
        m_view->Editor().Init(m_view->Work().Graphs(), {"X", "Y"});
        QApplication::sendPostedEvents();
    }
    QAbstractButton& Button(EditorControl id) {
        return *FindControl<QAbstractButton>(m_view->Editor(), static_cast<int>(id));
    }
    [[nodiscard]] bool IsEnabled(EditorControl id) {
        return FindControl(m_view->Editor(), static_cast<int>(id))->isEnabled();
    }
    [[nodiscard]] const GraphDraw& Drawer(std::size_t index) {
        return *m_view->Board().Drawers().at(index);
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    std::vector<std::string> m_boxes;
    std::unique_ptr<CWavoView> m_view;
};

TEST_F(ViewWithEditor, StandsAboveTheGraphs) {
    Show({TimeGraph(1), TimeGraph(2)});
    EXPECT_THAT(m_boxes, IsEmpty());
    ASSERT_TRUE(m_view->Screen().IsEditorShown());
    const QRect editor = m_view->Editor().geometry();
    EXPECT_EQ(editor.topLeft(), QPoint(0, 0));
    EXPECT_EQ(editor.width(), 1366);
    EXPECT_EQ(m_view->Screen().GraphArea(),
              QRect(0, editor.height() + 1, 1366, 700 - editor.height() - 1));
    EXPECT_EQ(Drawer(0).Rectangle().top(), editor.height() + 1);
    m_view->resize(640, 700);
    EXPECT_GT(m_view->Editor().height(), editor.height());
    EXPECT_EQ(m_view->Editor().width(), 640);
    EXPECT_EQ(Drawer(0).Rectangle().top(), m_view->Editor().height() + 1);
}

TEST_F(ViewWithEditor, LeavesAllRoomToTheGraphsWhenItIsClosed) {
    Show({TimeGraph(1)});
    Button(EditorControl::kClose).click();
    EXPECT_FALSE(m_view->Screen().IsEditorShown());
    EXPECT_EQ(m_view->Screen().GraphArea(), m_view->rect());
    EXPECT_EQ(Drawer(0).Rectangle().top(), 0);
    m_view->Commands().ShowGraphEditor();
    EXPECT_TRUE(m_view->Screen().IsEditorShown());
    EXPECT_TRUE(m_view->Editor().IsShown());
    EXPECT_EQ(Drawer(0).Rectangle().top(), m_view->Editor().height() + 1);
}

TEST_F(ViewWithEditor, ShowsAChangeAtOnce) {
    Show({TimeGraph(1)});
    EXPECT_TRUE(Drawer(0).Graph().ZeroLines);
    Button(EditorControl::kZeroLines).click();
    QApplication::sendPostedEvents();
    EXPECT_FALSE(Drawer(0).Graph().ZeroLines);
    Button(EditorControl::kDeleteGraph).click();
    QApplication::sendPostedEvents();
    EXPECT_THAT(m_view->Board().Drawers(), IsEmpty());
}

TEST_F(ViewWithEditor, KeepsCirclesRoundByTheSizeThatItsGraphIsDrawnWith) {
    WavoGraph graph = TimeGraph(1);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y";
    graph.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -10.0, 30.0};
    graph.YScales[0].Minimum = -5.0;
    graph.YScales[0].Maximum = 5.0;
    Show({graph});
    auto* const maximum =
        FindControl<QLineEdit>(m_view->Editor(), static_cast<int>(EditorControl::kYMaximum));
    const QRect wide = Drawer(0).PlotArea();
    ASSERT_GT(wide.height(), 0);
    for (const int width : {m_view->width(), 600}) {
        m_view->resize(width, 500);
        QApplication::sendPostedEvents();
        const QRect plot = Drawer(0).PlotArea();
        maximum->selectAll();
        QTest::keyClicks(maximum, "6");
        EXPECT_EQ(m_view->Work().Graphs().Graphs()[0].XScale.Maximum,
                  -10.0 + plot.width() * 11.0 / static_cast<double>(plot.height()));
        EXPECT_EQ(plot.width() == wide.width(), width != 600);
    }
}

TEST_F(ViewWithEditor, StepsBackFromZoomsOneByOne) {
    Show({TimeGraph(1), TimeGraph(2)});
    m_view->Zooms().ZoomGraph(0, 1.0, 3.0);
    m_view->Zooms().ZoomGraph(0, 0.5, 1.0);
    EXPECT_TRUE(Drawer(0).Zoom().active);
    EXPECT_FALSE(Drawer(1).Zoom().active);
    EXPECT_FALSE(IsEnabled(EditorControl::kTimeRange));
    EXPECT_FALSE(IsEnabled(EditorControl::kAllGraphs));
    EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "0.500");
    Button(EditorControl::kZoomOut).click();
    EXPECT_EQ(Drawer(0).Zoom().start, 1.0);
    EXPECT_EQ(Drawer(0).Zoom().end, 3.0);
    EXPECT_FALSE(IsEnabled(EditorControl::kTimeRange));
    EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "2.000");
    Button(EditorControl::kZoomOut).click();
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_EQ(Drawer(0).Graph().XScale.TimeRange, 10.0);
    EXPECT_EQ(Drawer(0).State(), RunState::kRunning);
    EXPECT_TRUE(IsEnabled(EditorControl::kTimeRange));
    EXPECT_TRUE(IsEnabled(EditorControl::kAllGraphs));
    EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "10.000");
    Button(EditorControl::kZoomOut).click();  // nothing left
    EXPECT_FALSE(Drawer(0).Zoom().active);
}

TEST_F(ViewWithEditor, ZoomsAllGraphsOverTimeTogether) {
    WavoGraph over_axis = TimeGraph(3);
    over_axis.XCoorType = CoorType::kAxis;
    over_axis.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 0.0, 1.0};
    Show({TimeGraph(1), TimeGraph(2), over_axis});
    Button(EditorControl::kAllGraphs).setChecked(true);
    m_view->Zooms().ZoomGraph(1, 1.0, 3.0);
    EXPECT_TRUE(Drawer(0).Zoom().active);
    EXPECT_TRUE(Drawer(1).Zoom().active);
    EXPECT_FALSE(Drawer(2).Zoom().active);
    m_view->Zooms().ZoomOut(2);
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_FALSE(Drawer(1).Zoom().active);
    EXPECT_TRUE(IsEnabled(EditorControl::kAllGraphs));
}

TEST_F(ViewWithEditor, ForgetsZoomsWhenTheGraphsAreMadeAnewOrRestarted) {
    Show({TimeGraph(1)});
    m_view->Zooms().ZoomGraph(0, 1.0, 3.0);
    Button(EditorControl::kZeroLines).click();
    QApplication::sendPostedEvents();
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_TRUE(IsEnabled(EditorControl::kTimeRange));
    m_view->Zooms().ZoomGraph(0, 1.0, 3.0);
    m_view->Commands().Execute(CommandId::kStop);
    m_view->Commands().Execute(CommandId::kStart);
    EXPECT_TRUE(IsEnabled(EditorControl::kTimeRange));
    EXPECT_FALSE(Drawer(0).Zoom().active);
}

struct WayOut {
    const char* name;
    void (*leave)(CWavoView& view);
};

void AcceptProperties(CWavoView& view) {
    QMetaObject::invokeMethod(
        qApp, [] { dynamic_cast<QDialog&>(*QApplication::activeModalWidget()).accept(); },
        Qt::QueuedConnection);
    view.Commands().EditProperties();
}

TEST_F(ViewWithEditor, ShowsTheTimeOfTheRecordOnceZoomsAreLeft) {
    const WayOut ways[] = {{"Start",
                            [](CWavoView& view) {
                                view.Commands().Execute(CommandId::kStop);
                                view.Commands().Execute(CommandId::kStart);
                            }},
                           {"Properties", AcceptProperties},
                           {"an edit",
                            [](CWavoView& view) {
                                FindControl<QAbstractButton>(
                                    view.Editor(), static_cast<int>(EditorControl::kZeroLines))
                                    ->click();
                                QApplication::sendPostedEvents();
                            }},
                           {"zoom out", [](CWavoView& view) { view.Zooms().ZoomOut(1); }},
                           {"New graphs", [](CWavoView& view) {
                                view.Editor().SetNotInitialised();
                                view.Editor().ResetSelection();
                                view.Editor().Init(view.Work().Graphs(), {"X", "Y"});
                                QApplication::sendPostedEvents();
                            }}};
    for (const WayOut& way : ways) {
        SCOPED_TRACE(way.name);
        Button(EditorControl::kAllGraphs).setChecked(false);
        Show({TimeGraph(1), TimeGraph(2)});
        m_view->Zooms().ZoomGraph(0, 1.0, 3.5);
        EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "2.500");
        way.leave(*m_view);
        EXPECT_FALSE(Drawer(0).Zoom().active);
        EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "10.000");
        ASSERT_TRUE(IsEnabled(EditorControl::kAllGraphs));
        Button(EditorControl::kXTime).click();
        Button(EditorControl::kAllGraphs).click();
        QApplication::sendPostedEvents();
        for (const WavoGraph& graph : m_view->Work().Graphs().Graphs()) {
            EXPECT_EQ(graph.XScale.TimeRange, 10.0);
        }
    }
}

TEST_F(ViewWithEditor, ShowsTheSpanOfAZoomAgainWhenItsGraphIsSelectedAgain) {
    Show({TimeGraph(1), TimeGraph(2)});
    m_view->Zooms().ZoomGraph(0, 1.0, 3.5);
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, Drawer(1).PlotArea().center());
    EXPECT_EQ(m_view->Editor().SelectedNumber(), 2U);
    EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "10.000");
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, Drawer(0).PlotArea().center());
    EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "2.500");
    EXPECT_FALSE(IsEnabled(EditorControl::kTimeRange));
}

TEST_F(ViewWithEditor, KeepsTheTimeOfTheRecordWhenTimeIsClickedDuringAZoom) {
    Show({TimeGraph(1), TimeGraph(2)});
    Button(EditorControl::kAllGraphs).setChecked(true);
    m_view->Zooms().ZoomGraph(0, 1.0, 3.5);
    Button(EditorControl::kXTime).click();
    QApplication::sendPostedEvents();
    for (const WavoGraph& graph : m_view->Work().Graphs().Graphs()) {
        EXPECT_EQ(graph.XScale.TimeRange, 10.0);
    }
    EXPECT_EQ(m_view->Editor().Fields().Text(EditorControl::kTimeRange), "10.000");
}

TEST_F(ViewWithEditor, AllowsSavingOnlyWhileItIsStopped) {
    Show({TimeGraph(1)});
    EXPECT_FALSE(IsEnabled(EditorControl::kSaveValues));
    m_view->Commands().Execute(CommandId::kStop);
    EXPECT_TRUE(IsEnabled(EditorControl::kSaveValues));
    m_view->Commands().Execute(CommandId::kStart);
    EXPECT_FALSE(IsEnabled(EditorControl::kSaveValues));
}

}  // namespace
}  // namespace wavo
