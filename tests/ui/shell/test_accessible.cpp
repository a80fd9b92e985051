// What reads the screen aloud: every control, pane, bar and graph has a name and a description.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "accessible_walk.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/bars/customize_dialog.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/choose_several.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/shell/about_dlg.h"
#include "ui/shell/count_pane.h"
#include "ui/shell/main_frame.h"
#include "view/view_access.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::AskedForAccessibleTexts;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::WithoutAccessibleTexts;

WavoGraph GraphOf(std::uint32_t number, const char* axis) {
    WavoGraph graph;
    graph.InitGraph(number, axis, 0, nullptr);
    return graph;
}

/// Folders of the user that go with the test; afterwards those from before are back.
class OwnFolders {
 public:
    OwnFolders() {
        for (const char* const name : kNames) {
            m_before.push_back(qgetenv(name));
            qputenv(name, m_folder.path().toUtf8());
        }
    }
    ~OwnFolders() {
        for (std::size_t i = 0; i < std::size(kNames); ++i) {
            m_before[i].isNull() ? qunsetenv(kNames[i]) : qputenv(kNames[i], m_before[i]);
        }
    }
    OwnFolders(const OwnFolders&) = delete;
    OwnFolders& operator=(const OwnFolders&) = delete;

 private:
    static constexpr const char* kNames[] = {testing::kDataHome, "XDG_RUNTIME_DIR"};

    const QTemporaryDir m_folder;
    std::vector<QByteArray> m_before;
};

class Accessible : public ::testing::Test {
 protected:
    Accessible() {
        m_frame.resize(1366, 768);
        m_frame.show();
        m_frame.View().OnInitialUpdate();
        QApplication::processEvents();
    }

    /// Graphs as if a file with them was opened.
    void Show(std::vector<WavoGraph> graphs) {
        GraphList& list = m_frame.View().Work().Graphs();
        list.Replace(std::move(graphs), GraphList::Telling::kSilent);
        m_frame.View().Editor().Init(list, {"X", "Y"});
        QApplication::sendPostedEvents();
    }
    static QString TextOf(QAccessibleInterface* access, QAccessible::Text kind) {
        return access == nullptr ? QStringLiteral("(nothing)") : access->text(kind);
    }

    const OwnFolders m_folders;  // before what makes files there
    CMainFrame m_frame{testing::RealPrompts()};
};

TEST_F(Accessible, IsEverythingOfTheFrameWithBarsPanesAndEditor) {
    ASSERT_TRUE(m_frame.View().Screen().IsEditorShown());
    EXPECT_THAT(WithoutAccessibleTexts(m_frame), IsEmpty());
    EXPECT_GT(AskedForAccessibleTexts(m_frame), 60);
}

TEST_F(Accessible, IsEverythingOfBarsThatTheUserMade) {
    BarSetup bars = m_frame.Bars();
    bars.bars.push_back({QStringLiteral("mine"), {static_cast<int>(CommandId::kStart)}});
    m_frame.SetBars(bars);
    EXPECT_THAT(WithoutAccessibleTexts(m_frame), IsEmpty());
}

TEST_F(Accessible, IsEveryItemOfEveryMenu) {
    int items = 0;
    for (const QMenu* const menu : m_frame.findChildren<QMenu*>()) {
        for (const QAction* const action : menu->actions()) {
            if (action->isSeparator() || !action->isVisible()) {
                continue;
            }
            ++items;
            EXPECT_FALSE(action->text().isEmpty()) << action->objectName().toStdString();
            EXPECT_FALSE(action->toolTip().isEmpty()) << action->text().toStdString();
        }
    }
    EXPECT_GT(items, 30);
}

TEST_F(Accessible, IsWhatAStatusPaneShows) {
    const auto name_of = [this](const char* pane) {
        return TextOf(QAccessible::queryAccessibleInterface(
                          m_frame.findChild<QLabel*>(QString::fromLatin1(pane))),
                      QAccessible::Name);
    };
    EXPECT_EQ(name_of("count_pane"), QStringLiteral("Lines received"));
    Q_EMIT m_frame.View().News().PaneTextChanged(StatusPane::kTotalLines, QStringLiteral("12"));
    EXPECT_EQ(name_of("count_pane"), QStringLiteral("Lines received: 12"));
    auto& pane = *m_frame.findChild<CountPane*>(QStringLiteral("count_pane"));
    pane.ShowDetails();
    EXPECT_THAT(WithoutAccessibleTexts(*pane.findChild<QFrame*>()), IsEmpty());
}

TEST_F(Accessible, IsEveryGraphByItsNumber) {
    WavoGraph over_axis = GraphOf(7, "Y");
    over_axis.XCoorType = CoorType::kAxis;
    over_axis.XCoorAxName = "X";
    Show({GraphOf(2, "X"), over_axis});
    QAccessibleInterface* const view = QAccessible::queryAccessibleInterface(&m_frame.View());
    ASSERT_NE(view, nullptr);
    std::vector<std::string> found;
    for (int i = 0; i < view->childCount(); ++i) {
        QAccessibleInterface* const child = view->child(i);
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(view->indexOfChild(child), i);
        EXPECT_EQ(child->parent(), view);
        if (child->role() == QAccessible::Chart) {
            found.push_back(TextOf(child, QAccessible::Name).toStdString() + ": " +
                            TextOf(child, QAccessible::Description).toStdString());
            const QRect area(m_frame.View().mapToGlobal(QPoint(0, 0)), m_frame.View().size());
            EXPECT_TRUE(area.contains(child->rect()));
            EXPECT_GT(child->rect().height(), 50);
        }
    }
    EXPECT_THAT(found, ElementsAre("graph 2: X from -10.0 to 10.0, over time from 0.0 to 10.0 s",
                                   "graph 7: Y from -10.0 to 10.0, over X from 0.0 to 10.0"));
    EXPECT_EQ(view->child(view->childCount()), nullptr);

    QAccessibleInterface* const gone = view->child(view->childCount() - 1);
    Show({GraphOf(2, "X")});
    EXPECT_FALSE(gone->isValid());
    EXPECT_EQ(TextOf(gone, QAccessible::Name), QString());
    EXPECT_EQ(gone->rect(), QRect());
}

TEST(AccessibleDialogs, HaveNamesAndDescriptionsOfAllTheirControls) {
    std::string text = "text";
    CAddText add_text(text);
    TriggerEntry trigger;
    CTriggerCondition condition(trigger);
    ViewSettings settings = DefaultViewSettings();
    CWavoProperties properties(settings, testing::RealPrompts());
    const PathSaveData path("values.txt", {"X"}, testing::RealPrompts(), nullptr);
    ExportProgress progress("values.txt", nullptr);
    progress.SetRows(1, 2);
    const CustomizeDialog customize(DefaultBarSetup(), {});
    const CAboutDlg about("Wavo\n1.0\nall rights");
    const SeveralDialog several({QStringLiteral("Stop"),
                                 QStringLiteral("Which?"),
                                 QStringLiteral("&Stop"),
                                 {QStringLiteral("a.mcap"), QStringLiteral("b.mcap")}},
                                nullptr);
    const std::vector<const QDialog*> dialogs = {&add_text, &condition, &properties, &path,
                                                 &progress, &customize, &about,      &several};
    for (const QDialog* const dialog : dialogs) {
        SCOPED_TRACE(dialog->windowTitle().toStdString());
        EXPECT_THAT(WithoutAccessibleTexts(*dialog), IsEmpty());
        EXPECT_GE(AskedForAccessibleTexts(*dialog), 3);
    }
}

TEST(AccessibleWalk, FindsWhatLacksATextAndAsksNoPartOfTheToolkit) {
    QWidget window;
    window.setWindowTitle(QStringLiteral("window"));
    auto* const column = new QVBoxLayout(&window);
    const auto add = [column](QWidget* widget, const char* name) {
        widget->setObjectName(QString::fromLatin1(name));
        column->addWidget(widget);
    };
    add(new QPushButton, "nothing");
    add(new QPushButton(QStringLiteral("text")), "name_alone");
    auto* const whole = new QPushButton(QStringLiteral("text"));
    whole->setToolTip(QStringLiteral("what it does"));
    add(whole, "whole");
    add(new QLabel(QStringLiteral("text")), "label");
    add(new QLabel, "empty_label");
    add(new QLabel(QStringLiteral("text")), "control_1");
    add(new QGroupBox(QStringLiteral("title")), "group");
    EXPECT_THAT(WithoutAccessibleTexts(window),
                ElementsAre("QPushButton no name: nothing",
                            "QPushButton no description: name_alone", "QLabel no name: empty_label",
                            "QLabel no description: control_1", "QGroupBox no description: group"));
    EXPECT_EQ(AskedForAccessibleTexts(window), 5);
}

}  // namespace
}  // namespace wavo
