// A whole working day in short, through the program's own menus, keys and dialogs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPushButton>
#include <QSignalSpy>

#include "master_link_of.h"
#include "platform/system_dialogs.h"
#include "printed_page.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/trigger_condition_controls.h"
#include "ui/graph_editor/editor_controls.h"
#include "user.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

namespace tc = trigger_condition;

class Tour : public Viewer {
 protected:
    // Controls of dialogs that the system shows could not be found.
    Tour() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    ~Tour() override { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, false); }
    Tour(const Tour&) = delete;
    Tour& operator=(const Tour&) = delete;

    template <typename Widget>
    Widget& Editor(EditorControl id) {
        return *FindControl<Widget>(View().Editor(), static_cast<int>(id));
    }
    void Click(QWidget& control) {
        QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(8, control.height() / 2));
    }
    void ClickMenu(const char* menu, const char* item) {
        ClickItem(*m_frame->menuBar(), menu, item);
    }
    std::string Title() { return m_frame->windowTitle().toStdString(); }
    const GraphDraw& Drawer() { return *View().Board().Drawers().front(); }
    bool Offers(CommandId id) { return m_frame->Action(id)->isEnabled(); }
    QString Path(const char* name) { return m_folder.filePath(QString::fromLatin1(name)); }
    bool WaitForState(RunState state) {
        return WaitFor([this, state] { return Drawer().State() == state; });
    }
    /// Opens a file dialog by keys or menu and enters a path there.
    void ChooseFile(const std::function<void()>& command, const QString& path) {
        User user;
        user.Begin({[&](QWidget& top) { EnterPath(*qobject_cast<QDialog*>(&top), path); }});
        command();
        EXPECT_EQ(user.LastSeen(), "QFileDialog");
    }
    void Drag(double from, double to) {
        const QRect plot = Drawer().PlotArea();
        const auto at = [&plot](double part) {
            return QPoint(plot.left() + static_cast<int>(part * plot.width()), plot.center().y());
        };
        QTest::mousePress(&View(), Qt::RightButton, {}, at(from));
        QTest::mouseMove(&View(), at(to));
        QTest::mouseRelease(&View(), Qt::RightButton, {}, at(to));
    }

    void ConnectToTheMaster();
    void RunAndStop();
    void ZoomAndStepBack();
    void RecordWithATrigger();
    void SaveNewAndOpen();
    void PrintToAFile();
};

void Tour::ConnectToTheMaster() {
    ASSERT_TRUE(Offers(CommandId::kConnect));
    ASSERT_FALSE(Offers(CommandId::kOpen));
    ClickMenu("&Machine Data", "&Connect Machine data");
    EXPECT_FALSE(Offers(CommandId::kConnect));
    EXPECT_TRUE(Offers(CommandId::kOpen));
    EXPECT_EQ(Title(), "graphs.ini - running");
    ASSERT_TRUE(WaitForLines(200));
}

void Tour::RunAndStop() {
    Press(*m_frame, Qt::Key_H, Qt::ControlModifier);
    EXPECT_EQ(Title(), "graphs.ini - stopped");
    const std::size_t held = Held("X").size();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 200));
    EXPECT_EQ(Held("X").size(), held);
    ClickMenu("&Run control", "St&art");
    EXPECT_EQ(Title(), "graphs.ini - running");
    ASSERT_TRUE(WaitFor([this] { return Held("X").size() > 600; }));
    Press(*m_frame, Qt::Key_H, Qt::ControlModifier);
}

void Tour::ZoomAndStepBack() {
    auto& zoom_enable = Editor<QCheckBox>(EditorControl::kZoomEnable);
    if (!zoom_enable.isChecked()) {
        Click(zoom_enable);
    }
    Drag(0.05, 0.55);
    ASSERT_TRUE(Drawer().Zoom().active);
    const double by_mouse = Drawer().Zoom().end - Drawer().Zoom().start;
    EXPECT_FALSE(Editor<QWidget>(EditorControl::kAllGraphs).isEnabled());
    View().setFocus();
    Press(*m_frame, Qt::Key_Plus);
    EXPECT_NEAR(Drawer().Zoom().end - Drawer().Zoom().start, by_mouse / 2, by_mouse / 20);
    Press(*m_frame, Qt::Key_Minus);
    EXPECT_NEAR(Drawer().Zoom().end - Drawer().Zoom().start, by_mouse, 1e-9);
    Click(Editor<QPushButton>(EditorControl::kZoomOut));
    EXPECT_FALSE(Drawer().Zoom().active);
    EXPECT_TRUE(Editor<QWidget>(EditorControl::kAllGraphs).isEnabled());
}

void Tour::RecordWithATrigger() {
    User user;
    user.Begin({[](QWidget& top) {
        auto* const value = FindControl<QLineEdit>(top, tc::kValue);
        value->setFocus();
        value->selectAll();
        QTest::keyClicks(value, QStringLiteral("0"));
        const int conditions[] = {tc::kStopAbove, tc::kOk};
        for (const int id : conditions) {
            auto* const button = FindControl<QWidget>(top, id);
            QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
        }
    }});
    Click(Editor<QPushButton>(EditorControl::kTrigger));
    ASSERT_TRUE(WaitForState(RunState::kWaitingForStop));
    EXPECT_FALSE(Offers(CommandId::kStartAfterTrigger));
    Press(*m_frame, Qt::Key_A, Qt::ControlModifier);
    ASSERT_TRUE(WaitFor([this] { return Offers(CommandId::kStartAfterTrigger); }));
    EXPECT_EQ(Drawer().State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(Title(), "graphs.ini - running");
    // The graph waits again, until the next value above the limit: soon, perhaps at once.
    QSignalSpy offered(m_frame->Action(CommandId::kStartAfterTrigger), &QAction::enabledChanged);
    const auto began_and_ended = [&offered] {
        return offered.size() >= 2 && !offered[0][0].toBool() && offered[1][0].toBool();
    };
    Press(*m_frame, Qt::Key_T, Qt::ControlModifier);
    ASSERT_TRUE(WaitFor(began_and_ended));
    offered.clear();
    ClickMenu("&Run control", "Start after &trigger");
    ASSERT_TRUE(WaitFor(began_and_ended));
    EXPECT_EQ(Drawer().State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(Title(), "graphs.ini - running");
}

void Tour::SaveNewAndOpen() {
    ChooseFile([this] { ClickMenu("&File", "Save &As..."); }, Path("mine.ini"));
    EXPECT_EQ(Title(), "mine.ini");
    EXPECT_TRUE(QFile::exists(Path("mine.ini")));
    Press(*m_frame, Qt::Key_N, Qt::ControlModifier);
    // The next batch brings a graph, and with it the name of the document.
    ASSERT_TRUE(WaitFor([this] { return Title() == "graphs.ini - running"; }));
    ASSERT_TRUE(WaitFor([this] { return View().Board().Drawers().size() == 1; }));
    EXPECT_EQ(View().Work().Graphs().Graphs().front().Triggers.front().TriggerType,
              TriggerTypeCode::kNone);
    ChooseFile([this] { Press(*m_frame, Qt::Key_O, Qt::ControlModifier); }, Path("mine.ini"));
    EXPECT_EQ(Title(), "mine.ini - running");
    ASSERT_TRUE(WaitFor([this] { return Offers(CommandId::kStartAfterTrigger); }));
    Press(*m_frame, Qt::Key_N, Qt::ControlModifier);
    ASSERT_TRUE(WaitFor([this] { return Title() == "mine.ini - running"; }));
    const QAction* const recent = m_frame->findChild<QAction*>(QStringLiteral("recent_file_1"));
    EXPECT_EQ(recent->toolTip(), QDir::toNativeSeparators(Path("mine.ini")));
    ClickMenu("&File", recent->text().toUtf8().constData());
    EXPECT_EQ(Title(), "mine.ini - running");
    const std::uint64_t lines = Cycle().TotalLines();
    ASSERT_TRUE(WaitForLines(lines + 100));
    EXPECT_EQ(View().Work().Graphs().Graphs().front().Triggers.front().TriggerType,
              TriggerTypeCode::kStopAbove);
}

void Tour::PrintToAFile() {
    const QString file = Path("page.pdf");
    User user;
    user.Begin(
        {[](QWidget& top) {
             auto* const box = qobject_cast<QMessageBox*>(&top);
             ASSERT_NE(box, nullptr);
             EXPECT_EQ(box->windowTitle(), "Inconvenient back ground color");
             QTest::mouseClick(box->button(QMessageBox::Yes), Qt::LeftButton);
         },
         [&](QWidget& top) {
             if (platform::HasSystemDialogs()) {  // without a printer
                 EnterPath(*qobject_cast<QFileDialog*>(&top), file);
                 return;
             }
             auto* const dialog = qobject_cast<QPrintDialog*>(&top);
             ASSERT_NE(dialog, nullptr);
             auto* const printers = dialog->findChild<QComboBox*>(QStringLiteral("printers"));
             ASSERT_NE(printers, nullptr);
             printers->setCurrentIndex(printers->findText(QStringLiteral("Print to File (PDF)")));
             auto* const name = dialog->findChild<QLineEdit*>(QStringLiteral("filename"));
             ASSERT_NE(name, nullptr);
             name->setText(file);
             for (auto* const button : dialog->findChildren<QPushButton*>()) {
                 if (button->text().contains(QStringLiteral("Print"))) {
                     QTest::mouseClick(button, Qt::LeftButton);
                     return;
                 }
             }
             ADD_FAILURE() << "no button to print";
         }});
    m_prompts.box = testing::RealPrompts().box;
    Press(*m_frame, Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(user.LastSeen(), platform::HasSystemDialogs() ? "QFileDialog" : "QPrintDialog");
    ASSERT_TRUE(QFile::exists(file));
    if (!CanReadPages()) {
        return;
    }
    const QImage page = PageOf(file, 50);
    ASSERT_FALSE(page.isNull());
    EXPECT_EQ(page.pixelColor(0, 0), QColor(Qt::white));               // the margin
    EXPECT_LT(page.pixelColor(page.width() / 2, 40).lightness(), 64);  // the graphs
}

TEST_F(Tour, FromTheStartToTheEnd) {
    Open({"X"});
    View().Work().Source().SetComesBack(false);  // this user connects by the menu
    DemoMaster master({"--motion", "circle"});
    m_frame->resize(1200, 760);
    m_frame->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_frame.get()));
    ASSERT_NO_FATAL_FAILURE(ConnectToTheMaster());
    ASSERT_NO_FATAL_FAILURE(RunAndStop());
    ASSERT_NO_FATAL_FAILURE(ZoomAndStepBack());
    ASSERT_NO_FATAL_FAILURE(RecordWithATrigger());
    ASSERT_NO_FATAL_FAILURE(SaveNewAndOpen());
    ASSERT_NO_FATAL_FAILURE(PrintToAFile());
    EXPECT_THAT(TakeBoxes(), ::testing::IsEmpty());
    ClickMenu("&File", "E&xit");
    EXPECT_FALSE(m_frame->isVisible());
    EXPECT_FALSE(Cycle().Source().IsPresent());
    EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
    const std::uint64_t lines = Cycle().TotalLines();
    ASSERT_TRUE(WaitFor([&] { return master.Output().contains(QStringLiteral("disconnected")); }));
    QTest::qWait(100);
    EXPECT_EQ(Cycle().TotalLines(), lines);
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
}

}  // namespace
}  // namespace wavo::testing
