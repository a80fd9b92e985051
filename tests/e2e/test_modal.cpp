// No window that waits for the user stops the batches of a live master from being taken and
// answered.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

#include "ui/controls/controls.h"
#include "ui/dialogs/wavo_properties_controls.h"
#include "ui/graph_editor/editor_controls.h"
#include "user.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

namespace wp = wavo_properties;

/// A window that waits, and the way to it.
struct Waiting {
    const char* name;
    std::function<void(CMainFrame&, Prompts&)> open;
    std::vector<User::Step> steps;  ///< to the window, from those below it
    bool answers_boxes = false;     ///< a question before it is answered with yes
    friend void PrintTo(const Waiting& waiting, std::ostream* out) { *out << waiting.name; }
};

std::function<void(CMainFrame&, Prompts&)> Command(CommandId id) {
    return [id](CMainFrame& frame, Prompts&) { frame.Action(id)->trigger(); };
}

std::function<void(CMainFrame&, Prompts&)> OpenMenu(const char* text) {
    return [text](CMainFrame& frame, Prompts&) {
        QAction* const title = MenuOf(*frame.menuBar(), text).menuAction();
        QTest::mouseClick(frame.menuBar(), Qt::LeftButton, {},
                          frame.menuBar()->actionGeometry(title).center());
    };
}

User::Step ClickControl(int id) {
    return [id](QWidget& top) {
        auto* const button = FindControl<QWidget>(top, id);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    };
}

std::function<void(CMainFrame&, Prompts&)> ClickEditor(EditorControl id) {
    return [id](CMainFrame& frame, Prompts&) {
        auto* const control = FindControl<QWidget>(frame.View().Editor(), static_cast<int>(id));
        QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(8, control->height() / 2));
    };
}

void SaveValuesWhileStopped(CMainFrame& frame, Prompts& prompts) {
    frame.Action(CommandId::kStop)->trigger();
    ClickEditor(EditorControl::kSaveValues)(frame, prompts);
}

void AskAboutAFileThatExists(CMainFrame& frame, Prompts& prompts) {
    prompts.save_file = [](QWidget*, const FileQuestion& question) {
        return std::optional(question.initial_path);
    };
    frame.Action(CommandId::kSaveAs)->trigger();
    prompts.save_file = testing::RealPrompts().save_file;
}

void OpenAMissingFile(CMainFrame& frame, Prompts& prompts) {
    prompts.open_file = [](QWidget*, const FileQuestion&) {
        return std::optional(QStringLiteral("/nowhere/at/all.ini"));
    };
    frame.Action(CommandId::kOpen)->trigger();
    prompts.open_file = testing::RealPrompts().open_file;
}

void RightClickOnTheMenuBar(CMainFrame& frame, Prompts&) {
    const QPoint place(3, 3);
    QContextMenuEvent click(QContextMenuEvent::Mouse, place, frame.menuBar()->mapToGlobal(place));
    QCoreApplication::sendEvent(frame.menuBar(), &click);
}

std::vector<Waiting> AllThatWait() {
    return {
        {"Open", Command(CommandId::kOpen), {}},
        {"SaveAs", Command(CommandId::kSaveAs), {}},
        {"QuestionBeforeOverwriting", AskAboutAFileThatExists, {}},
        {"ErrorBox", OpenAMissingFile, {}},
        {"QuestionBeforePrinting", Command(CommandId::kPrint), {}},
        {"Print", Command(CommandId::kPrint), {}, true},
        {"PrintPreview", Command(CommandId::kPrintPreview), {}, true},
        {"PageSetup", Command(CommandId::kPageSetup), {}},
        {"Properties", Command(CommandId::kProperties), {}},
        {"ColourOfProperties", Command(CommandId::kProperties), {ClickControl(wp::kBackground)}},
        {"FontOfProperties", Command(CommandId::kProperties), {ClickControl(wp::kSelectFont)}},
        {"FileOfProperties", Command(CommandId::kProperties), {ClickControl(wp::kSelectDataFile)}},
        {"AdditionalText", Command(CommandId::kAdditionalText), {}},
        {"TriggerCondition", ClickEditor(EditorControl::kTrigger), {}},
        {"ColourOfACurve", ClickEditor(EditorControl::kColor), {}},
        {"SaveValues", SaveValuesWhileStopped, {}},
        {"ListOfGraphs",
         [](CMainFrame& frame, Prompts&) {
             FindControl<QComboBox>(frame.View().Editor(),
                                    static_cast<int>(EditorControl::kGraphNumber))
                 ->showPopup();
         },
         {}},
        {"Customize", Command(CommandId::kCustomize), {}},
        {"About", Command(CommandId::kAbout), {}},
        {"FileMenu", OpenMenu("&File"), {}},
        {"ViewMenu", OpenMenu("&View"), {}},
        {"MachineDataMenu", OpenMenu("&Machine Data"), {}},
        {"RunControlMenu", OpenMenu("&Run control"), {}},
        {"HelpMenu", OpenMenu("&Help"), {}},
        {"MenuOfBars", RightClickOnTheMenuBar, {}},
        {"MenuOfLooks",
         [](CMainFrame& frame, Prompts&) {
             frame.LookMenu().popup(frame.mapToGlobal(QPoint(50, 50)));
         },
         {}},
    };
}

class WhileItWaits : public Viewer, public ::testing::WithParamInterface<Waiting> {};

TEST_P(WhileItWaits, BatchesAreTakenAndAnswered) {
    const Waiting& waiting = GetParam();
    DemoMaster master({"--motion", "circle"});
    Open({"X", "Y"});
    m_frame->activateWindow();
    ASSERT_TRUE(WaitForLines(100));
    m_prompts.box = testing::RealPrompts().box;
    if (waiting.answers_boxes) {
        m_prompts.box = [](QWidget*, const Box&) { return BoxAnswer::kYes; };
    }
    std::uint64_t lines = 0;
    std::uint64_t answered = 0;
    User user;
    user.Begin(waiting.steps, [&] {
        if (lines == 0) {
            lines = Cycle().TotalLines();
            answered = Cycle().Counters().batches_answered;
        }
        return Cycle().TotalLines() >= lines + 200 &&
               Cycle().Counters().batches_answered >= answered + 3;
    });
    waiting.open(*m_frame, m_prompts);
    EXPECT_TRUE(WaitFor([&] { return user.IsDone(); }, 8000)) << "last seen: " << user.LastSeen();
    EXPECT_TRUE(WaitFor([] {
        return QApplication::activeModalWidget() == nullptr &&
               QApplication::activePopupWidget() == nullptr;
    }));
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
}

INSTANTIATE_TEST_SUITE_P(Each, WhileItWaits, ::testing::ValuesIn(AllThatWait()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Viewer, AMasterThatTellsToQuitClosesWhatWaits) {
    DemoMaster master({"--motion", "circle", "--fault", "quit", "--fault-after", "600"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(50));
    m_prompts.box = testing::RealPrompts().box;
    m_frame->Action(CommandId::kSaveAs)->trigger();  // comes back when the program is to end
    EXPECT_FALSE(Cycle().Source().IsPresent());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(View().Work().Files().CurrentPath(),
              m_folder.filePath(QStringLiteral("graphs.ini")).toStdString());
}

}  // namespace
}  // namespace wavo::testing
