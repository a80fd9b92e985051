// When a command can be used: every rule, through the action that stands in the menu. Nothing here
// waits for the event loop before it looks at an action, unless a message has to arrive.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QResizeEvent>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "expect_errors.h"
#include "fake_shared_memory.h"
#include "graph/model/graph_ini_data.h"
#include "link/wire_format.h"
#include "master_link_of.h"
#include "master_window.h"
#include "real_prompts.h"
#include "settings/view_settings_file.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "ui/graph_editor/editor_controls.h"
#include "ui/messages.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;

/// Counts the messages that reach an object.
class Watch : public QObject {
 public:
    explicit Watch(QObject& watched) { watched.installEventFilter(this); }
    int recordings_ended = 0;

 protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == AppMessageEvent::EventType()) {
            const auto& message = static_cast<const AppMessageEvent&>(*event);
            if (message.number() == AppMessage::kRecordingEnded && message.wParam() == 0 &&
                message.lParam() == 0) {
                ++recordings_ended;
            }
        }
        return false;
    }
};

class Offered : public ::testing::Test {
 protected:
    Offered() {
        testing::ResetFakeSharedMemory();
        for (const char* const name : {"XDG_RUNTIME_DIR", testing::kDataHome, "XDG_STATE_HOME"}) {
            qputenv(name, m_folder.path().toUtf8());
        }
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        m_frame = std::make_unique<CMainFrame>(m_prompts);
        m_frame->resize(1000, 700);
        m_frame->show();
    }

    /// Publishes a master and begins with a graph of X1 over 2 seconds with a trigger.
    void BeginWithMaster(TriggerTypeCode trigger = TriggerTypeCode::kNone) {
        m_master = std::make_unique<testing::MasterWindow>();
        m_master->Publish();
        View().OnInitialUpdate(GraphFile(trigger));
        QApplication::processEvents();
    }
    void BeginWithoutMaster() {
        View().OnInitialUpdate(GraphFile(TriggerTypeCode::kNone));
        QApplication::processEvents();
    }

    std::string GraphFile(TriggerTypeCode trigger) {
        WavoGraph graph;
        graph.InitGraph(1, "X1", 0, nullptr);
        graph.XScale.TimeRange = 2.0;
        graph.Triggers = {{trigger, 5.0, "X1"}};
        MIniData store;
        std::string path = m_folder.filePath(QStringLiteral("graphs.ini")).toStdString();
        EXPECT_TRUE(store.Open(path));
        EXPECT_TRUE(GetGraphAsIniData(store, {graph}, ""));
        EXPECT_TRUE(store.Save());
        EXPECT_TRUE(WriteProperties(path, DefaultViewSettings()));
        return path;
    }

    /// Gives the graph so many values and draws them.
    void Feed(int count, double value) {
        for (int i = 0; i < count; ++i) {
            for (GraphValue& buffer : View().Work().Streams().Registry().Values()) {
                buffer.SetValue(value);
            }
        }
        QResizeEvent draw(View().size(), View().size());
        QCoreApplication::sendEvent(&View(), &draw);
    }
    [[nodiscard]] RunState State() { return View().Board().Drawers().front()->State(); }

    /// A message as of a master, handled.
    void Hear(FromMaster number, std::uint64_t w_param) {
        std::string error;
        const auto sender = platform::MessageWindow::Create(
            [](const platform::Message&) { return std::int64_t{1}; }, &error);
        ASSERT_NE(sender, nullptr) << error;
        const platform::Message message{static_cast<std::uint32_t>(number), w_param, 0};
        ASSERT_EQ(sender->Send(testing::MasterLinkOf(View()).Window(), message).status,
                  platform::SendStatus::kDone);
    }

    /// The item of that text in the menus.
    QAction& Item(const char* text) {
        for (const QAction* const menu : m_frame->menuBar()->actions()) {
            for (QAction* const item : menu->menu()->actions()) {
                if (item->text() == QLatin1String(text) && item->isVisible()) {
                    return *item;
                }
            }
        }
        qFatal("no item %s", text);
    }
    [[nodiscard]] bool Offers(const char* text) { return Item(text).isEnabled(); }

    CWavoView& View() { return m_frame->View(); }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    std::unique_ptr<testing::MasterWindow> m_master;
    std::unique_ptr<CMainFrame> m_frame;
    std::vector<std::string> m_boxes;
};

TEST_F(Offered, StartWhileStoppedAndStopWhileRunning) {
    BeginWithoutMaster();
    EXPECT_FALSE(Offers("St&art"));
    EXPECT_TRUE(Offers("Stop"));
    Item("Stop").trigger();
    EXPECT_TRUE(Offers("St&art"));
    EXPECT_FALSE(Offers("Stop"));
    Item("St&art").trigger();
    EXPECT_FALSE(Offers("St&art"));
    EXPECT_TRUE(Offers("Stop"));
}

TEST_F(Offered, StartAfterTriggerAfterAStopTrigger) {
    BeginWithMaster(TriggerTypeCode::kStopAbove);
    EXPECT_FALSE(Offers("Start after &trigger"));
    Feed(10, 1.0);
    ASSERT_EQ(State(), RunState::kWaitingForStop);
    EXPECT_FALSE(Offers("Start after &trigger"));
    Feed(10, 10.0);
    ASSERT_EQ(State(), RunState::kStoppedAfterStop);
    EXPECT_TRUE(Offers("Start after &trigger"));
    Item("Start after &trigger").trigger();
    EXPECT_EQ(State(), RunState::kWaitingForStop);
    EXPECT_FALSE(Offers("Start after &trigger"));
}

TEST_F(Offered, StartAfterTriggerAfterARecordingThatAStartTriggerBegan) {
    BeginWithMaster(TriggerTypeCode::kStartAbove);
    const Watch watch(*m_frame);
    Feed(10, 1.0);
    ASSERT_EQ(State(), RunState::kWaitingForStart);
    Feed(10, 10.0);
    ASSERT_EQ(State(), RunState::kRunningAfterStart);
    EXPECT_FALSE(Offers("Start after &trigger"));
    EXPECT_EQ(watch.recordings_ended, 0);
    Feed(500, 10.0);
    ASSERT_EQ(State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(watch.recordings_ended, 1);
    EXPECT_TRUE(Offers("Start after &trigger"));
    Item("Start after &trigger").trigger();
    EXPECT_EQ(State(), RunState::kWaitingForStart);
    EXPECT_FALSE(Offers("Start after &trigger"));
}

TEST_F(Offered, StartAfterTriggerNoMoreOnceTheGraphsAreGone) {
    BeginWithMaster(TriggerTypeCode::kStopAbove);
    Feed(10, 10.0);
    ASSERT_TRUE(Offers("Start after &trigger"));
    Item("&New").trigger();
    EXPECT_FALSE(Offers("Start after &trigger"));
}

TEST_F(Offered, TheFrameAsksAnewWhenItIsToldThatARecordingEnded) {
    BeginWithoutMaster();
    Item("Stop").setEnabled(false);
    EXPECT_EQ(SendAppMessage(m_frame.get(), AppMessage::kRecordingEnded, 0, 0), 1);
    EXPECT_TRUE(Offers("Stop"));
    EXPECT_EQ(SendAppMessage(m_frame.get(), AppMessage::kGraphChanged, 0, 0), 0);
}

TEST_F(Offered, ConnectWithoutAMasterOrAfterTheLinkBroke) {
    BeginWithoutMaster();
    EXPECT_TRUE(Offers("&Connect Machine data"));
    Item("&Connect Machine data").trigger();
    EXPECT_THAT(m_boxes, ElementsAre("Master process (Dorvane) not present."));
    EXPECT_TRUE(Offers("&Connect Machine data"));
    m_master = std::make_unique<testing::MasterWindow>();
    m_master->Publish();
    Item("&Connect Machine data").trigger();
    EXPECT_FALSE(Offers("&Connect Machine data"));
    m_boxes.clear();
    Hear(FromMaster::kOverrun, 0);
    EXPECT_THAT(m_boxes,
                ElementsAre("overrun value fifo (main -> wavo.) from master proc. detected"));
    EXPECT_TRUE(Offers("&Connect Machine data"));
    EXPECT_TRUE(Offers("&Open..."));  // the master is known still
    Item("&Connect Machine data").trigger();
    EXPECT_FALSE(Offers("&Connect Machine data"));
}

TEST_F(Offered, OpenAndSaveAsWhileAMasterIsKnown) {
    BeginWithoutMaster();
    EXPECT_FALSE(Offers("&Open..."));
    EXPECT_FALSE(Offers("Save &As..."));
    m_master = std::make_unique<testing::MasterWindow>();
    m_master->Publish();
    Item("&Connect Machine data").trigger();
    EXPECT_TRUE(Offers("&Open..."));
    EXPECT_TRUE(Offers("Save &As..."));
    Hear(FromMaster::kValues, static_cast<std::uint64_t>(ValuesNotice::kLinkEnded));
    EXPECT_FALSE(Offers("&Open..."));
    EXPECT_FALSE(Offers("Save &As..."));
    EXPECT_TRUE(Offers("&Connect Machine data"));
}

TEST_F(Offered, SaveOnceThereIsAFileAndAfterNewToo) {
    EXPECT_FALSE(Offers("&Save"));
    BeginWithoutMaster();
    EXPECT_TRUE(Offers("&Save"));
    Item("&New").trigger();
    EXPECT_TRUE(Offers("&Save"));
}

TEST_F(Offered, SaveWhenTheFileOfTheStartCouldNotBeRead) {
    const QString path = m_folder.filePath(QStringLiteral("utf16.ini"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("\xFF\xFE[\0", 4));
    file.close();
    {
        const testing::ExpectErrorLog no_settings(
            {"CWavoView::WriteProperties: failed to open '" + path.toStdString() + "'",
             "CWavoView::ReadProperties: back ground defination not complete, create default back "
             "ground color",
             "CWavoView::ReadProperties: graphs font defination not complete, create default "
             "font"});
        View().OnInitialUpdate(path.toStdString());
    }
    EXPECT_THAT(m_boxes, ElementsAre("failed to read " + path.toStdString() +
                                     ".\nUTF16/32 Unicode format not supported."));
    EXPECT_TRUE(Offers("&Save"));
}

TEST_F(Offered, TheGraphEditorWhileItIsNotShown) {
    BeginWithoutMaster();
    EXPECT_FALSE(Offers("Graph Editor"));
    FindControl<QPushButton>(View().Editor(), static_cast<int>(EditorControl::kClose))->click();
    EXPECT_TRUE(Offers("Graph Editor"));
    EXPECT_FALSE(View().Screen().IsEditorShown());
    Item("Graph Editor").trigger();
    EXPECT_FALSE(Offers("Graph Editor"));
    EXPECT_TRUE(View().Screen().IsEditorShown());
}

TEST_F(Offered, AlwaysNewPropertiesTextAndPrinting) {
    const auto all_offered = [this] {
        for (const char* const text : {"&New", "Proper&ties", "Add. &Text", "&Print...",
                                       "Print Pre&view", "P&rint Setup...", "E&xit"}) {
            EXPECT_TRUE(Offers(text)) << text;
        }
    };
    all_offered();
    BeginWithMaster();
    all_offered();
    Item("Stop").trigger();
    Item("&New").trigger();
    Hear(FromMaster::kValues, static_cast<std::uint64_t>(ValuesNotice::kLinkEnded));
    all_offered();
}

TEST_F(Offered, RecentFilesOnceThereAreSome) {
    EXPECT_FALSE(Offers("Recent &File"));
    BeginWithoutMaster();
    auto* const first = m_frame->findChild<QAction*>(QStringLiteral("recent_file_1"));
    EXPECT_TRUE(first->isVisible());
    EXPECT_TRUE(first->isEnabled());
    EXPECT_EQ(first->text(), QStringLiteral("&1 ") + QDir::toNativeSeparators(m_folder.filePath(
                                                         QStringLiteral("graphs.ini"))));
}

// A key press goes through the window first, as the platform hands it over.
TEST_F(Offered, ByItsKeysWhereverInTheGraphEditorTheKeyboardIs) {
    BeginWithoutMaster();
    m_frame->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_frame.get()));
    int edits = 0;
    for (QWidget* const control : View().Editor().findChildren<QWidget*>()) {
        if (!control->isVisible() || !control->isEnabled() ||
            (control->focusPolicy() & Qt::TabFocus) == 0) {
            continue;
        }
        SCOPED_TRACE(control->objectName().toStdString());
        control->setFocus();
        const auto* const edit = qobject_cast<QLineEdit*>(control);
        edits += edit != nullptr ? 1 : 0;
        const QString text = edit != nullptr ? edit->text() : QString();
        QTest::keyClick(m_frame->windowHandle(), Qt::Key_H, Qt::ControlModifier);
        EXPECT_TRUE(Offers("St&art"));
        QTest::keyClick(m_frame->windowHandle(), Qt::Key_A, Qt::ControlModifier);
        EXPECT_TRUE(Offers("Stop"));
        if (edit != nullptr) {
            EXPECT_EQ(edit->text(), text);
        }
    }
    EXPECT_GT(edits, 2);
}

}  // namespace
}  // namespace wavo
