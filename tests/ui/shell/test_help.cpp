// Context help: F1 opens the manual where it tells of what has the keyboard, and everything that
// can have it has a place there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QUrl>
#include <string>
#include <vector>

#include "real_prompts.h"
#include "system_facts.h"
#include "ui/bars/commands.h"
#include "ui/bars/menu_table.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/panes/axis_pane.h"
#include "ui/panes/circle_pane.h"
#include "ui/panes/measurements_pane.h"
#include "ui/panes/spectrum_pane.h"
#include "ui/shell/context_help.h"
#include "ui/shell/help_topics.h"
#include "ui/shell/main_frame.h"
#include "view/view_access.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

QString TextOfFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The anchor that the manual makes of a heading.
QString AnchorOf(const QString& heading) {
    static const QRegularExpression left_out(QStringLiteral("[^\\w\\- ]"));
    return heading.toLower().remove(left_out).replace(u' ', u'-');
}

bool IsInTheManual(const QString& topic) {
    const QString text =
        TextOfFile(QStringLiteral(WAVO_MANUAL_SOURCES "/%1.md").arg(topic.section(u'#', 0, 0)));
    const QString anchor = topic.section(u'#', 1);
    static const QRegularExpression heading(QStringLiteral("^#+ (.*)$"),
                                            QRegularExpression::MultilineOption);
    bool found = anchor.isEmpty() && !text.isEmpty();
    for (auto each = heading.globalMatch(text); each.hasNext();) {
        found = AnchorOf(each.next().captured(1)) == anchor || found;
    }
    return found;
}

TEST(HelpTopics, EveryCommandHasOne) {
    for (const Command& command : Commands()) {
        EXPECT_TRUE(IsInTheManual(HelpTopic(command.id)))
            << command.object_name << ": " << HelpTopic(command.id).toStdString();
    }
    EXPECT_FALSE(IsInTheManual(QStringLiteral("window#no-such-heading")));
    EXPECT_FALSE(IsInTheManual(QStringLiteral("no-such-chapter")));
}

TEST(HelpTopics, EveryDialogPaneAndGraphHasOne) {
    static const QRegularExpression shown(
        QStringLiteral("class (\\w+)( final)? : public (TableDialog|QDialog|QWidget)\\b"));
    // What stands in a pane has that one's topic, and what has none is the window's own.
    const QStringList parts{QStringLiteral("TableDialog"), QStringLiteral("PaneTitle"),
                            QStringLiteral("PageView"), QStringLiteral("SpectrumPlot")};
    const QString table = TextOfFile(QStringLiteral(WAVO_SOURCES "/ui/shell/help_topics.cpp"));
    int asked = 0;
    QDirIterator headers(QStringLiteral(WAVO_SOURCES), {QStringLiteral("*.h")}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (headers.hasNext()) {
        const QString text = TextOfFile(headers.next());
        for (auto each = shown.globalMatch(text); each.hasNext();) {
            const QString name = each.next().captured(1);
            if (!parts.contains(name)) {
                ++asked;
                EXPECT_TRUE(table.contains(QStringLiteral("Is<%1>").arg(name)))
                    << name.toStdString();
            }
        }
    }
    EXPECT_GE(asked, 18);
}

TEST(HelpTopics, EachIsInTheManual) {
    static const QRegularExpression row(QStringLiteral("^    \\{.*\"(.+)\"\\},$"),
                                        QRegularExpression::MultilineOption);
    int rows = 0;
    for (auto each =
             row.globalMatch(TextOfFile(QStringLiteral(WAVO_SOURCES "/ui/shell/help_topics.cpp")));
         each.hasNext(); ++rows) {
        const QString topic = each.next().captured(1);
        EXPECT_TRUE(IsInTheManual(topic)) << topic.toStdString();
    }
    EXPECT_GT(rows, 70);
}

class Help : public ::testing::Test {
 protected:
    Help() {
        qputenv(testing::kDataHome, m_folder.path().toUtf8());
        m_prompts.open_page = [this](QWidget*, const QUrl& page) {
            m_opened.push_back(
                QDir(m_folder.path()).relativeFilePath(page.toLocalFile()).toStdString());
            return m_has_browser;
        };
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box);
            return BoxAnswer::kOk;
        };
        m_frame = std::make_unique<CMainFrame>(m_prompts);
        m_frame->resize(1366, 768);
        m_frame->show();
        m_frame->View().OnInitialUpdate();
        Find().SetFolder(m_folder.path());
        QApplication::processEvents();
    }
    ~Help() override {
        m_frame.reset();
        qunsetenv(testing::kDataHome);
    }
    ContextHelp& Find() { return m_frame->Help(); }
    std::string PressedIn(QWidget& widget) {
        m_opened.clear();
        QTest::keyClick(&widget, Qt::Key_F1);
        return m_opened.size() == 1 ? m_opened.front() : std::to_string(m_opened.size()) + " pages";
    }
    static void ShowOver(QDialog& dialog) {
        dialog.setModal(true);
        dialog.show();
        QApplication::setActiveWindow(&dialog);
    }
    std::string PressedAt(QWidget& widget) {
        QApplication::setActiveWindow(widget.window());
        widget.setFocus();
        return PressedIn(widget);
    }

    const QTemporaryDir m_folder;
    Prompts m_prompts = testing::RealPrompts();
    bool m_has_browser = true;
    std::vector<std::string> m_opened;
    std::vector<Box> m_boxes;
    std::unique_ptr<CMainFrame> m_frame;
};

TEST_F(Help, OpensWhatTellsOfWhatHasTheKeyboard) {
    EXPECT_EQ(PressedAt(m_frame->View()), "go/window.reading-a-graph.html");
    auto* const edit = m_frame->View().Editor().findChild<QLineEdit*>();
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(PressedAt(*edit), "go/graphs.the-graph-editor.html");
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(Help, OpensWhatTellsOfThePaneThatHasTheKeyboard) {
    const auto in_pane = [this](CommandId id, QWidget& pane) {
        m_frame->Action(id)->trigger();
        QApplication::processEvents();
        for (auto* const child : pane.findChildren<QWidget*>()) {
            if (child->isVisible() && child->focusPolicy() != Qt::NoFocus) {
                return PressedAt(*child);
            }
        }
        return std::string("nothing takes the keyboard");
    };
    EXPECT_EQ(in_pane(CommandId::kMeasurements, m_frame->Measure().Pane()), "go/measuring.html");
    EXPECT_EQ(in_pane(CommandId::kSpectrum, m_frame->Measure().Spectrum().Pane()),
              "go/spectrum.html");
    EXPECT_EQ(in_pane(CommandId::kCircleTest, m_frame->Circle().Pane()),
              "go/machine-tests.the-circle-test-at-the-machine.html");
    EXPECT_EQ(in_pane(CommandId::kAxisTest, m_frame->Axis().Pane()),
              "go/machine-tests.the-axis-test-at-the-machine.html");
}

TEST_F(Help, OpensWhatTellsOfADialogOverTheWindow) {
    TriggerEntry trigger;
    CTriggerCondition condition(trigger, m_frame.get());
    ShowOver(condition);
    EXPECT_EQ(PressedIn(*condition.findChild<QLineEdit*>()), "go/graphs.trigger-condition.html");
    EXPECT_EQ(PressedIn(condition), "go/graphs.trigger-condition.html");
    condition.close();
    QMessageBox box(m_frame.get());
    ShowOver(box);
    EXPECT_EQ(PressedIn(box), "go/messages.boxes.html");
    box.close();
    QFileDialog files(m_frame.get());
    ShowOver(files);
    EXPECT_EQ(PressedIn(files), "go/reference.files.html");
}

TEST_F(Help, OpensWhatTellsOfTheCommandUnderTheMark) {
    QMenu menu(m_frame.get());
    menu.addAction(m_frame->Action(CommandId::kProperties));
    menu.addAction(QStringLiteral("something else"));
    menu.popup(m_frame->mapToGlobal(QPoint(10, 10)));
    menu.setActiveAction(menu.actions()[0]);
    EXPECT_EQ(PressedIn(menu), "go/graphs.properties.html");
    menu.setActiveAction(menu.actions()[1]);
    EXPECT_EQ(PressedIn(menu), "go/window.commands.html");
    menu.close();
    const auto* const start = m_frame->Action(CommandId::kStart);
    for (auto* const button : m_frame->findChildren<QToolButton*>()) {
        if (button->defaultAction() == start) {
            EXPECT_EQ(HelpTopic(*button), "window#commands");
        }
    }
    QAction recent;
    recent.setObjectName(QStringLiteral("recent_recording_3"));
    EXPECT_EQ(HelpTopic(recent), "recordings");
    recent.setObjectName(QStringLiteral("of_nobody"));
    EXPECT_EQ(HelpTopic(recent), "");
}

TEST_F(Help, IsTheKeyAloneAndEachPressOnePage) {
    TriggerEntry trigger;
    CTriggerCondition condition(trigger, m_frame.get());
    ShowOver(condition);
    QTest::keyClick(&condition, Qt::Key_F1, Qt::ControlModifier);
    QTest::keyClick(&condition, Qt::Key_F2);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(&condition, &held);
    EXPECT_THAT(m_opened, IsEmpty());
}

TEST_F(Help, SaysThatThereIsNoManual) {
    Find().SetFolder(QString());
    EXPECT_EQ(PressedAt(m_frame->View()), "0 pages");
    EXPECT_THAT(m_boxes,
                ElementsAre(Box{"The manual is not installed.\nIt comes with the packages of Wavo; "
                                "where Wavo was built, ./package --docs makes it.",
                                "Manual", BoxIcon::kInformation, BoxButtons::kOk}));
}

TEST_F(Help, SaysThatNothingShowsIt) {
    m_has_browser = false;
    (void)PressedAt(m_frame->View());
    ASSERT_EQ(m_boxes.size(), 1U);
    EXPECT_EQ(m_boxes[0].text,
              "No program was found that shows the manual:\n" +
                  QDir::toNativeSeparators(m_folder.path() + "/go/window.reading-a-graph.html")
                      .toStdString());
    EXPECT_EQ(m_boxes[0].icon, BoxIcon::kExclamation);
}

TEST_F(Help, StandsInNoMenu) {
    for (const MenuRow& row : MenuBarRows()) {
        EXPECT_FALSE(row.kind == MenuRowKind::kItem && row.id == CommandId::kManual);
    }
}

}  // namespace
}  // namespace wavo
