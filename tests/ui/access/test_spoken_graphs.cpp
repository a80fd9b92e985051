// What a graph says of itself to what reads the screen aloud, and when.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QTest>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "graph/draw/graph_words.h"
#include "machine_fixture.h"
#include "ui/panes/measure_control.h"
#include "view/view_access.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Heard = std::pair<QAccessible::Event, std::string>;

/// What is told of graphs while there is one of these, as if something read the screen.
class Hearing {
 public:
    Hearing() {
        SetGraphListener([this](QAccessible::Event event, QAccessibleInterface& graph) {
            m_heard.emplace_back(event, graph.text(QAccessible::Name).toStdString());
        });
    }
    ~Hearing() { SetGraphListener(nullptr); }
    Hearing(const Hearing&) = delete;
    Hearing& operator=(const Hearing&) = delete;

    std::vector<Heard> Take() { return std::exchange(m_heard, {}); }

 private:
    std::vector<Heard> m_heard;
};

class SpokenGraphs : public testing::MachineFixture {
 protected:
    SpokenGraphs() : MachineFixture({"X", "Y"}) {
        m_measure = std::make_unique<MeasureControl>(*m_frame, *m_view, m_prompts, &m_settings);
        ShowFrame();
    }
    ~SpokenGraphs() override { m_measure.reset(); }

    static WavoGraph Graph(std::uint32_t number, const char* axis) {
        WavoGraph graph = OverTime(number, axis);
        graph.XScale.TimeRange = 0.1;
        graph.YScales[0] = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -10.0, 10.0};
        return graph;
    }
    /// What a graph is to what reads the screen; null when there is none.
    QAccessibleInterface* Chart(const char* name) {
        QAccessibleInterface* const view = QAccessible::queryAccessibleInterface(m_view);
        for (int i = 0; i < view->childCount(); ++i) {
            QAccessibleInterface* const child = view->child(i);
            if (child->role() == QAccessible::Chart &&
                child->text(QAccessible::Name) == QLatin1String(name)) {
                return child;
            }
        }
        return nullptr;
    }
    std::string Says(const char* name, QAccessible::Text kind = QAccessible::Description) {
        QAccessibleInterface* const chart = Chart(name);
        return chart == nullptr ? "(nothing)" : chart->text(kind).toStdString();
    }
    /// Lines at X 0, 1, 2, ...; Y is 5.
    void GiveRamp(int lines) {
        std::vector<double> x;
        for (int i = 0; i < lines; ++i) {
            x.push_back(i);
        }
        const std::vector<double> y(x.size(), 5.0);
        Give({&x, &y});
    }

    std::unique_ptr<MeasureControl> m_measure;
};

TEST_F(SpokenGraphs, SayTheirAxesAndWhatTheirScalesShow) {
    WavoGraph first = Graph(1, "X");
    first.YCoorAxName.emplace_back("X");
    first.YCoorAxDerivation.push_back(1);
    first.YCoorAxColor.push_back(0xFFFFFF);
    first.YScales.push_back({ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 0.0, 2.5});
    first.Triggers.push_back({TriggerTypeCode::kNone, 0.0, "X"});
    Show({first, Graph(2, "Y")});
    EXPECT_EQ(Says("graph 1"),
              "X from -10.0 to 10.0, X' from 0.0 to 2.5, over time from 0.0 to 0.1 s");
    EXPECT_EQ(Says("graph 1", QAccessible::Value), "");
    GiveRamp(200);
    m_view->Zooms().ZoomGraph(0, 0.02, 0.05);
    EXPECT_EQ(Says("graph 1"),
              "X from -10.0 to 10.0, X' from 0.0 to 2.5, over time from 0.02 to 0.05 s");
}

TEST_F(SpokenGraphs, SayWhatTheTriggerDoes) {
    WavoGraph graph = Graph(1, "X");
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 150.0, "X"};
    Show({graph});
    EXPECT_EQ(Says("graph 1", QAccessible::Value),
              "running, waiting for stop-trigger, X above 150.0");
    EXPECT_EQ(Says("graph 1"),
              "X from -10.0 to 10.0, over time from 0.0 to 0.1 s; "
              "running, waiting for stop-trigger, X above 150.0");
    GiveRamp(200);
    EXPECT_EQ(Says("graph 1", QAccessible::Value), "stopped after stop-trigger, X above 150.0");
}

TEST_F(SpokenGraphs, SayWhatTheCursorsRead) {
    Show({Graph(1, "X"), Graph(2, "Y")});
    GiveRamp(200);
    Stop();
    m_measure->Execute(CommandId::kMeasurements);
    const std::string said = Says("graph 1", QAccessible::Value);
    EXPECT_THAT(said, HasSubstr("cursor A at -0.0"));
    EXPECT_THAT(said, HasSubstr(" s: X 1"));
    EXPECT_THAT(said, HasSubstr("; cursor B at -0.0"));
    m_view->Cursors().PutOn(CursorName::kA, 150);
    m_view->Cursors().PutOn(CursorName::kB, 199);
    const double since = (150 - 199) * 0.001;
    EXPECT_EQ(Says("graph 1", QAccessible::Value),
              "cursor A at " + TimeInWords(since) + ": X 150.0; cursor B at 0.0 s: X 199.0");
    EXPECT_EQ(Says("graph 2", QAccessible::Value), "") << "it is not the one that is selected";
}

TEST_F(SpokenGraphs, AreDescribedInTheStatusBarWhenItIsAskedFor) {
    QString told;
    QObject::connect(&m_view->News(), &ViewNews::PaneTextChanged, m_view,
                     [&told](StatusPane pane, const QString& text) {
                         told = pane == StatusPane::kMessage ? text : told;
                     });
    m_measure->Execute(CommandId::kDescribeGraph);
    EXPECT_EQ(told.toStdString(), "no graph is selected");
    Show({Graph(1, "X"), Graph(2, "Y")});
    m_view->Zooms().Select(2);
    QApplication::processEvents();
    m_measure->Execute(CommandId::kDescribeGraph);
    EXPECT_EQ(told.toStdString(), "graph 2: Y from -10.0 to 10.0, over time from 0.0 to 0.1 s");
}

TEST_F(SpokenGraphs, TellWhatTheUserDoesAndNothingThatABatchBrings) {
    Show({Graph(1, "X"), Graph(2, "Y")});
    m_frame->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_frame.get()));
    m_view->setFocus();
    m_measure->Execute(CommandId::kMeasurements);
    Hearing hearing;
    ASSERT_NE(Chart("graph 1"), nullptr);     // something has asked for the graphs
    QTest::keyClick(m_view, Qt::Key_Escape);  // the arrows are the cursors' no more
    hearing.Take();
    QTest::keyClick(m_view, Qt::Key_Down);
    QApplication::processEvents();
    EXPECT_THAT(hearing.Take(), ElementsAre(Heard(QAccessible::Focus, "graph 2")));
    QAccessibleInterface* const view = QAccessible::queryAccessibleInterface(m_view);
    EXPECT_EQ(view->focusChild(), Chart("graph 2"));
    EXPECT_TRUE(Chart("graph 2")->state().focused);
    EXPECT_FALSE(Chart("graph 1")->state().selected);

    GiveRamp(400);
    EXPECT_THAT(hearing.Take(), IsEmpty());
    Stop();
    hearing.Take();
    m_view->Cursors().PutOn(CursorName::kA, 390);
    EXPECT_THAT(hearing.Take(), ElementsAre(Heard(QAccessible::DescriptionChanged, "graph 2")));
}

TEST_F(SpokenGraphs, TellThatATriggerHasFired) {
    WavoGraph graph = Graph(1, "X");
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 150.0, "X"};
    Show({graph});
    m_view->Zooms().Select(1);
    QApplication::processEvents();
    Hearing hearing;
    ASSERT_NE(Chart("graph 1"), nullptr);
    m_view->Zooms().Select(1);
    QApplication::processEvents();
    hearing.Take();
    GiveRamp(120);
    EXPECT_THAT(hearing.Take(), IsEmpty());
    GiveRamp(200);
    EXPECT_THAT(hearing.Take(), ElementsAre(Heard(QAccessible::DescriptionChanged, "graph 1")));
}

TEST_F(SpokenGraphs, AreFoundWhereTheyAreDrawn) {
    Show({Graph(1, "X"), Graph(2, "Y")});
    QAccessibleInterface* const view = QAccessible::queryAccessibleInterface(m_view);
    for (const char* const name : {"graph 1", "graph 2"}) {
        QAccessibleInterface* const chart = Chart(name);
        const QPoint middle = chart->rect().center();
        EXPECT_EQ(view->childAt(middle.x(), middle.y()), chart) << name;
        EXPECT_EQ(m_view->Board().Find(name[6] - '0')->Rectangle(),
                  QRect(m_view->mapFromGlobal(chart->rect().topLeft()), chart->rect().size()));
    }
}

/// Asks for every widget that gets a child, and for those that it is in: as what reads the screen
/// does from the start of the program on.
class EarlyReader : public QObject {
 public:
    EarlyReader() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* const widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::ChildAdded && widget != nullptr) {
            for (QAccessibleInterface* access = QAccessible::queryAccessibleInterface(widget);
                 access != nullptr; access = access->parent()) {
                children += access->childCount();
                ++asked;
            }
        }
        return false;
    }

    int asked = 0;
    int children = 0;
};

TEST(SpokenView, KnowsItsGraphsAlsoWhereItIsReadWhileItIsMade) {
    EarlyReader reader;
    QTemporaryDir folder;
    qputenv(testing::kDataHome, folder.path().toLocal8Bit());
    {
        CWavoView view(testing::RealPrompts(), nullptr, std::make_unique<testing::Machine>());
        EXPECT_GT(reader.asked, 20);
        EXPECT_GT(reader.children, 20);
        view.resize(600, 400);
        view.show();
        view.OnInitialUpdate();
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        view.Work().Graphs().Replace({graph});
        view.Work().RebuildGraphs();
        QAccessibleInterface* const access = QAccessible::queryAccessibleInterface(&view);
        ASSERT_GT(access->childCount(), 0);
        EXPECT_EQ(access->child(access->childCount() - 1)->text(QAccessible::Name), "graph 1");
    }
    qunsetenv(testing::kDataHome);
}

TEST_F(SpokenGraphs, LineStylesAreSwitchedWhileValuesAreShownAndKept) {
    WavoGraph graph = Graph(1, "X");
    graph.YCoorAxName.emplace_back("Y");
    graph.YCoorAxDerivation.push_back(0);
    graph.YCoorAxColor.push_back(0x00FF00);
    graph.YScales.push_back(graph.YScales[0]);
    graph.Triggers.push_back({TriggerTypeCode::kNone, 0.0, "Y"});
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 150.0, "X"};
    Show({graph});
    GiveRamp(300);  // the trigger has stopped it: what it shows is nowhere else
    m_view->Zooms().ZoomGraph(0, 0.02, 0.05);
    const QImage before = m_view->Screen().Picture();
    EXPECT_FALSE(m_measure->IsChecked(CommandId::kLineStyles));
    m_measure->Execute(CommandId::kLineStyles);
    EXPECT_TRUE(m_measure->IsChecked(CommandId::kLineStyles));
    EXPECT_NE(m_view->Screen().Picture(), before);
    EXPECT_EQ(m_view->Work().Settings().Current().line_styles, true);
    m_measure->Execute(CommandId::kLineStyles);
    EXPECT_EQ(m_view->Screen().Picture(), before);
}

}  // namespace
}  // namespace wavo
