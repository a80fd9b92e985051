// The tables of commands and menus, and the menus, actions and shortcuts that are made from them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QActionGroup>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>
#include <algorithm>
#include <memory>
#include <set>

#include "real_prompts.h"
#include "ui/bars/commands.h"
#include "ui/bars/menu_table.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;

struct Line {
    int depth;
    std::string text;
    int id;

    friend bool operator==(const Line&, const Line&) = default;
    friend void PrintTo(const Line& line, std::ostream* out) {
        *out << line.depth << " \"" << line.text << "\" " << line.id;
    }
};

const Line kSeparatorLine1{1, "-", 0};

const std::vector<Line>& ExpectedMenuBar() {
    static const std::vector<Line> lines = {
        {0, "&File", 0},
        {1, "&New\tCtrl+N", 57600},
        {1, "&Open...\tCtrl+O", 57601},
        {1, "&Save\tCtrl+S", 57603},
        {1, "Save &As...", 57604},
        kSeparatorLine1,
        {1, "&Print...\tCtrl+P", 57607},
        {1, "Print Pre&view", 57609},
        {1, "P&rint Setup...", 57606},
        kSeparatorLine1,
        {1, "Proper&ties", 32781},
        {1, "Add. &Text", 32786},
        kSeparatorLine1,
        {1, "Recent &File", 57616},
        kSeparatorLine1,
        {1, "E&xit", 57665},
        {0, "&View", 0},
        {1, "&Toolbars and Docking Windows", 59392},
        {1, "&Status Bar", 59393},
        {1, "&Application Look", 0},
        {2, "Windows &2000", 210},
        {2, "Office &XP", 211},
        {2, "&Windows XP", 212},
        {2, "Office 200&3", 213},
        {2, "Visual Studio.NET 200&5", 214},
        {2, "Office 200&7", 0},
        {3, "&Blue Style", 215},
        {3, "B&lack Style", 216},
        {3, "&Silver Style", 217},
        {3, "&Aqua Style", 218},
        {1, "Graph Editor", 32782},
        {0, "&Machine Data", 0},
        {1, "&Connect Machine data", 32773},
        {0, "&Run control", 0},
        {1, "St&art\tCtrl+A", 32779},
        {1, "Stop\tCtrl+H", 32777},
        {1, "Start after &trigger\tCtrl+T", 32778},
        {0, "Rec&ording", 0},
        {1, "&Record...\tCtrl+R", 32760},
        {1, "&Stop Recording\tCtrl+Shift+R", 32761},
        {1, "-", 0},
        {1, "&Open Recording...\tCtrl+Shift+O", 32740},
        {1, "&Close Recording\tCtrl+Shift+W", 32741},
        {1, "&Graphs of the Recording", 32742},
        {1, "&Follow", 32743},
        {1, "-", 0},
        {1, "&Next Trigger\tF3", 32744},
        {1, "&Previous Trigger\tShift+F3", 32745},
        {1, "Next E&vent\tCtrl+F3", 32746},
        {1, "Previous Even&t\tCtrl+Shift+F3", 32747},
        {1, "-", 0},
        {1, "Next F&ile\tCtrl+PgDown", 32752},
        {1, "Previous Fi&le\tCtrl+PgUp", 32753},
        {1, "-", 0},
        {1, "E&xport Part...\tCtrl+Shift+E", 32748},
        {1, "-", 0},
        {1, "Recent R&ecordings", 57632},
        {0, "Meas&ure", 0},
        {1, "&Measurements\tCtrl+M", 32720},
        {1, "&Hide at the Edge", 32721},
        {1, "&Spectrum\tCtrl+Shift+M", 32722},
        {1, "Hide Spectrum at the &Edge", 32723},
        kSeparatorLine1,
        {1, "C&omputed Axes...", 32730},
        {1, "-", 0},
        {1, "&Circle Test...\tCtrl+Shift+C", 32750},
        {1, "&Axis Test...\tCtrl+Shift+A", 32751},
        {1, "&Reference...\tCtrl+Shift+G", 32754},
        {1, "-", 0},
        {1, "&Line Styles", 32770},
        {1, "&Describe Graph\tCtrl+Shift+D", 32771},
        {0, "&Help", 0},
        {1, "&About Wavo...", 57664},
    };
    return lines;
}

/// The number of the command that an action stands for; 0 for none.
int IdOf(const CMainFrame& frame, const QAction& action) {
    for (const Command& command : Commands()) {
        if (frame.Action(command.id) == &action ||
            action.objectName() == QLatin1String(command.object_name) + QStringLiteral("_menu")) {
            return static_cast<int>(command.id);
        }
    }
    return 0;
}

void CollectLines(const CMainFrame& frame, const QList<QAction*>& actions, int depth,
                  std::vector<Line>& lines) {
    for (const QAction* const action : actions) {
        if (!action->isVisible()) {
            continue;
        }
        std::string text = action->isSeparator() ? "-" : action->text().toStdString();
        if (!action->shortcut().isEmpty()) {
            text += "\t" + action->shortcut().toString().toStdString();
        }
        const int id = IdOf(frame, *action);
        lines.push_back({depth, text, id});
        if (action->menu() != nullptr && id != static_cast<int>(CommandId::kToolBars)) {
            CollectLines(frame, action->menu()->actions(), depth + 1, lines);
        }
    }
}

class Frame : public ::testing::Test {
 protected:
    QMenu& Menu(const char* text) {
        for (QAction* const action : m_frame.menuBar()->actions()) {
            if (action->text() == QLatin1String(text)) {
                return *action->menu();
            }
        }
        ADD_FAILURE() << text;
        return *m_frame.menuBar()->actions().front()->menu();
    }

    CMainFrame m_frame{testing::RealPrompts()};
};

TEST(CommandTable, NumbersAndNamesAreUnique) {
    std::set<int> ids;
    std::set<std::string> names;
    for (const Command& command : Commands()) {
        EXPECT_TRUE(ids.insert(static_cast<int>(command.id)).second) << command.object_name;
        EXPECT_TRUE(names.insert(command.object_name).second) << command.object_name;
    }
    EXPECT_EQ(FindCommand(static_cast<CommandId>(1)), nullptr);
}

TEST(CommandTable, EveryCommandHasAPromptAndAToolTip) {
    for (const Command& command : Commands()) {
        EXPECT_FALSE(StatusPrompt(command).isEmpty()) << command.object_name;
        if (command.id != CommandId::kRecentFile) {  // has a path as its tool tip
            EXPECT_FALSE(ToolTip(command).isEmpty()) << command.object_name;
        }
    }
}

TEST(CommandTable, TheBasicCommandsAreThese) {
    std::vector<int> ids;
    for (const CommandId id : BasicCommands()) {
        ids.push_back(static_cast<int>(id));
    }
    EXPECT_THAT(ids, ElementsAre(57600, 57601, 57603, 57607, 57665, 32773, 32779, 32777, 32778,
                                 57664, 59393, 59392, 213, 214, 215, 217, 216, 218));
}

TEST_F(Frame, ShowsAllMenusToTheLetter) {
    std::vector<Line> lines;
    CollectLines(m_frame, m_frame.menuBar()->actions(), 0, lines);
    EXPECT_EQ(lines, ExpectedMenuBar());
}

TEST_F(Frame, MarksLooksAsOneOfSeveral) {
    for (int id = 210; id <= 218; ++id) {
        const QActionGroup* const group = m_frame.Action(static_cast<CommandId>(id))->actionGroup();
        ASSERT_NE(group, nullptr) << id;
        EXPECT_TRUE(group->isExclusive()) << id;
    }
    // In the menu that pops up the look that is chosen may be none of the four.
    QMenu& menu = m_frame.LookMenu();
    const auto checked = [&menu] {
        menu.popup(QPoint(0, 0));
        menu.close();
        std::vector<std::string> texts;
        for (const QAction* const action : menu.actions()) {
            if (action->isChecked()) {
                texts.push_back(action->text().toStdString());
            }
        }
        return texts;
    };
    EXPECT_THAT(checked(), ElementsAre());
    menu.actions()[2]->trigger();
    EXPECT_THAT(checked(), ElementsAre("Office 2007 (&Silver Style)"));
    menu.actions()[2]->trigger();
    EXPECT_THAT(checked(), ElementsAre("Office 2007 (&Silver Style)"));
    m_frame.Action(CommandId::kLookStudio)->trigger();
    EXPECT_THAT(checked(), ElementsAre());
}

TEST_F(Frame, ShowsTheMenuOfLooksToTheLetter) {
    std::vector<std::string> texts;
    for (const QAction* const action : m_frame.LookMenu().actions()) {
        texts.push_back(action->text().toStdString());
    }
    EXPECT_THAT(texts, ElementsAre("Office 2007 (&Blue Style)", "Office 2007 (B&lack Style)",
                                   "Office 2007 (&Silver Style)", "Office 2007 (&Aqua Style)"));
    std::vector<int> ids;
    for (const LookMenuRow& row : LookMenuRows()) {
        ids.push_back(static_cast<int>(row.id));
    }
    EXPECT_THAT(ids, ElementsAre(215, 216, 217, 218));
}

TEST_F(Frame, TheMenuOfLooksChangesTheLook) {
    m_frame.LookMenu().actions()[1]->trigger();
    EXPECT_TRUE(m_frame.Action(CommandId::kLookBlack)->isChecked());
    EXPECT_FALSE(m_frame.Action(CommandId::kLookStudio)->isChecked());
}

TEST_F(Frame, StatusTextsAndToolTipsComeFromTheTable) {
    const QAction* const connect = m_frame.Action(CommandId::kConnect);
    EXPECT_EQ(connect->statusTip(), "connecting machine data");
    EXPECT_EQ(connect->toolTip(), "connecting");
    EXPECT_EQ(m_frame.Action(CommandId::kStop)->statusTip(), "stop wavo.");
    EXPECT_EQ(m_frame.Action(CommandId::kStop)->toolTip(), "stop (Ctrl+H)");
    EXPECT_EQ(m_frame.Action(CommandId::kStart)->statusTip(), "start wavo.");
    EXPECT_EQ(m_frame.Action(CommandId::kStart)->toolTip(), "start (Ctrl+A)");
    const QAction* const after = m_frame.Action(CommandId::kStartAfterTrigger);
    EXPECT_EQ(after->statusTip(), "start after trigger event");
    EXPECT_EQ(after->toolTip(), " start after trigger (Ctrl+T)");
    EXPECT_EQ(m_frame.Action(CommandId::kStart)->toolTip(), "start (Ctrl+A)");
    EXPECT_EQ(m_frame.Action(CommandId::kRecentFile)->statusTip(), "Open this document");
}

TEST_F(Frame, TheShortcutsAreTheseAndNoneStandsTwice) {
    std::map<std::string, int> shortcuts;
    for (const Command& command : Commands()) {
        const QString text = m_frame.Action(command.id)->shortcut().toString();
        if (!text.isEmpty()) {
            EXPECT_TRUE(shortcuts.emplace(text.toStdString(), static_cast<int>(command.id)).second);
        }
    }
    const std::map<std::string, int> expected = {{"Ctrl+N", 57600},
                                                 {"Ctrl+O", 57601},
                                                 {"Ctrl+S", 57603},
                                                 {"Ctrl+P", 57607},
                                                 {"Ctrl+A", 32779},
                                                 {"Ctrl+H", 32777},
                                                 {"Ctrl+T", 32778},
                                                 {"F6", 57680},
                                                 {"Shift+F6", 57681},
                                                 {"Ctrl+R", 32760},
                                                 {"Ctrl+Shift+R", 32761},
                                                 {"Ctrl+Shift+O", 32740},
                                                 {"Ctrl+Shift+W", 32741},
                                                 {"F3", 32744},
                                                 {"Shift+F3", 32745},
                                                 {"Ctrl+F3", 32746},
                                                 {"Ctrl+Shift+F3", 32747},
                                                 {"Ctrl+Shift+E", 32748},
                                                 {"Ctrl+M", 32720},
                                                 {"Ctrl+Shift+M", 32722},
                                                 {"Ctrl+Shift+C", 32750},
                                                 {"Ctrl+Shift+A", 32751},
                                                 {"Ctrl+Shift+G", 32754},
                                                 {"Ctrl+PgDown", 32752},
                                                 {"Ctrl+PgUp", 32753},
                                                 {"Ctrl+Shift+D", 32771},
                                                 {"F1", 32762}};
    EXPECT_EQ(shortcuts, expected);
}

TEST_F(Frame, CommandsOfTheViewAreEnabledAsTheViewSays) {
    for (const Command& command : Commands()) {
        EXPECT_EQ(
            m_frame.Action(command.id)->isEnabled(),
            command.owner == CommandOwner::kShell || command.id == CommandId::kRecord ||
                command.id == CommandId::kOpenRecording || command.id == CommandId::kMeasurements ||
                command.id == CommandId::kSpectrum || command.id == CommandId::kCircleTest ||
                command.id == CommandId::kAxisTest || command.id == CommandId::kReference ||
                command.id == CommandId::kLineStyles || command.id == CommandId::kDescribeGraph ||
                m_frame.View().Commands().IsEnabled(command.id))
            << command.object_name;
    }
    EXPECT_TRUE(m_frame.Action(CommandId::kStop)->isEnabled());
    EXPECT_FALSE(m_frame.Action(CommandId::kStart)->isEnabled());
}

TEST_F(Frame, StopAndStartChangeWhatCanBeCommandedAtOnce) {
    m_frame.Action(CommandId::kStop)->trigger();
    EXPECT_FALSE(m_frame.Action(CommandId::kStop)->isEnabled());
    EXPECT_TRUE(m_frame.Action(CommandId::kStart)->isEnabled());
    m_frame.Action(CommandId::kStart)->trigger();
    EXPECT_TRUE(m_frame.Action(CommandId::kStop)->isEnabled());
}

TEST_F(Frame, AShortcutWorksWhileAnEditHasTheKeyboard) {
    m_frame.show();
    m_frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_frame));
    auto* const edit = new QLineEdit(QStringLiteral("text"), &m_frame.View());
    edit->show();
    edit->setFocus();
    m_frame.Action(CommandId::kStop)->trigger();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(m_frame.Action(CommandId::kStop)->isEnabled());  // started
    EXPECT_FALSE(edit->hasSelectedText());
    // Start is not to be had now: the edit has its own meaning of the keys.
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(edit->selectedText(), "text");
}

TEST_F(Frame, APromptStandsInTheStatusBarWhileACommandIsPointedAt) {
    m_frame.show();
    QMenu& menu = Menu("&Run control");
    menu.popup(QPoint(0, 0));
    menu.setActiveAction(m_frame.Action(CommandId::kStop));
    EXPECT_EQ(m_frame.statusBar()->currentMessage(), "stop wavo.");
    menu.close();
}

TEST_F(Frame, ThePanesOfTheStatusBarStandBesideEachOtherInANarrowWindow) {
    m_frame.show();
    Q_EMIT m_frame.View().News().PaneTextChanged(StatusPane::kMessage, QStringLiteral("Connected"));
    Q_EMIT m_frame.View().News().PaneTextChanged(StatusPane::kTotalLines,
                                                 QStringLiteral("1234567890"));
    Q_EMIT m_frame.View().News().PaneTextChanged(StatusPane::kCycleTime,
                                                 QStringLiteral("cycl. time=0.00100s"));
    for (const int width : {210, 260, 600}) {
        m_frame.resize(width, 400);
        QCoreApplication::processEvents();
        ASSERT_LE(m_frame.width(), width);
        QList<QLabel*> panes =
            m_frame.statusBar()->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
        panes.removeIf([](const QLabel* pane) { return pane->isHidden(); });
        ASSERT_EQ(panes.size(), 3);
        std::sort(panes.begin(), panes.end(),
                  [](const QLabel* a, const QLabel* b) { return a->x() < b->x(); });
        EXPECT_LE(panes[0]->geometry().right(), panes[1]->geometry().left()) << width;
        EXPECT_LE(panes[1]->geometry().right(), panes[2]->geometry().left()) << width;
        EXPECT_LE(panes[2]->geometry().right(), m_frame.statusBar()->width()) << width;
        for (const QLabel* const pane : {panes[1], panes[2]}) {
            EXPECT_GE(pane->width(),
                      std::min(width / 3, pane->fontMetrics().horizontalAdvance(pane->text())))
                << width;
        }
    }
}

TEST_F(Frame, TheNumbersInTheStatusBarKeepTheirPlacesWhileTheyGrow) {
    m_frame.resize(800, 400);
    m_frame.show();
    const auto* const count = m_frame.findChild<QLabel*>(QStringLiteral("count_pane"));
    const auto place = [&](const char* text) {
        Q_EMIT m_frame.View().News().PaneTextChanged(StatusPane::kTotalLines,
                                                     QString::fromLatin1(text));
        QCoreApplication::processEvents();
        return count->geometry();
    };
    EXPECT_EQ(place("1"), place("1234567890"));
}

TEST_F(Frame, TheStatusBarIsShownAndHidden) {
    QAction* const action = m_frame.Action(CommandId::kStatusBar);
    EXPECT_TRUE(action->isChecked());
    action->trigger();
    EXPECT_TRUE(m_frame.statusBar()->isHidden());
    EXPECT_FALSE(action->isChecked());
    action->trigger();
    EXPECT_FALSE(m_frame.statusBar()->isHidden());
    EXPECT_TRUE(action->isChecked());
}

TEST_F(Frame, TheBarsMenuShowsAndHidesTheToolBar) {
    const std::unique_ptr<QMenu> menu(m_frame.createPopupMenu());
    std::vector<std::string> texts;
    for (const QAction* const action : menu->actions()) {
        texts.push_back(action->text().toStdString());
    }
    EXPECT_THAT(texts, ElementsAre("Standard", "Recording", "Measurements", "Spectrum",
                                   "Circle Test", "Axis Test", "Reference", "", "Customize..."));
    m_frame.show();
    const QToolBar* const bar = m_frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"));
    EXPECT_TRUE(bar->isVisible());
    menu->actions().front()->trigger();
    EXPECT_FALSE(bar->isVisible());
}

TEST_F(Frame, ShortMenusShowBasicAndUsedCommandsAndTheOthersOnDemand) {
    BarSetup bars = m_frame.Bars();
    bars.full_menus = false;
    m_frame.SetBars(bars);
    QMenu& file = Menu("&File");
    const auto holds = [&](CommandId id) { return file.actions().contains(m_frame.Action(id)); };
    const auto show = [&] {
        file.popup(QPoint(0, 0));
        file.close();
    };
    show();
    EXPECT_TRUE(holds(CommandId::kNew));
    EXPECT_FALSE(holds(CommandId::kSaveAs));
    EXPECT_EQ(file.actions().back()->text(), "Show all commands");

    bars.used_commands = {static_cast<int>(CommandId::kSaveAs)};
    m_frame.SetBars(bars);
    show();
    EXPECT_TRUE(holds(CommandId::kSaveAs));
    EXPECT_FALSE(holds(CommandId::kPageSetup));

    file.actions().back()->trigger();
    file.popup(QPoint(0, 0));
    EXPECT_TRUE(holds(CommandId::kPageSetup));
    EXPECT_EQ(file.actions().back()->text(), "E&xit");
    file.close();
    show();
    EXPECT_FALSE(holds(CommandId::kPageSetup));
    QMenu& recording = Menu("Rec&ording");
    recording.popup(QPoint(0, 0));
    recording.close();
    EXPECT_TRUE(recording.actions().contains(m_frame.Action(CommandId::kStopRecording)));
    EXPECT_NE(recording.actions().back()->text(), "Show all commands");
}

}  // namespace
}  // namespace wavo
