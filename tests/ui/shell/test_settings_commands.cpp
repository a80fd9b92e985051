// The commands "Properties" and "Add. Text" in the window, from the menu to the picture and the
// settings file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QPainter>
#include <QTemporaryDir>
#include <QTimer>
#include <set>

#include "dialog_driver.h"
#include "expect_errors.h"
#include "fake_shared_memory.h"
#include "graph/model/graph_ini_data.h"
#include "real_prompts.h"
#include "settings/view_settings_file.h"
#include "support/diagnostics.h"
#include "system_facts.h"
#include "ui/bars/commands.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/add_text_controls.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/dialogs/wavo_properties_controls.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using namespace testing;
namespace wp = wavo_properties;

class SettingsCommands : public ::testing::Test {
 protected:
    SettingsCommands() {
        ResetFakeSharedMemory();
        for (const char* const name : {"XDG_RUNTIME_DIR", testing::kDataHome, "XDG_STATE_HOME"}) {
            qputenv(name, m_folder.path().toUtf8());
        }
        m_frame = std::make_unique<CMainFrame>(m_prompts);
        m_frame->resize(1000, 700);
        m_frame->show();
        View().OnInitialUpdate(GraphFile());
        QApplication::processEvents();
    }
    ~SettingsCommands() override {
        m_frame.reset();
        _MTrace_SetLevel("default", 1);
    }

    /// A file with one graph and the text "first".
    std::string GraphFile() {
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        MIniData store;
        std::string path = m_folder.filePath(QStringLiteral("graphs.ini")).toStdString();
        EXPECT_TRUE(store.Open(path));
        EXPECT_TRUE(GetGraphAsIniData(store, {graph}, "first"));
        EXPECT_TRUE(store.Save());
        EXPECT_TRUE(WriteProperties(path, DefaultViewSettings()));
        return path;
    }

    /// Triggers a command and does something to its dialog.
    template <typename Dialog, typename Action>
    void Run(CommandId command, const Action& action) {
        bool was_there = false;
        QTimer::singleShot(0, m_frame.get(), [&] {
            auto* const dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
            was_there = dialog != nullptr;
            if (was_there) {
                action(*dialog);
            }
        });
        m_frame->Action(command)->trigger();
        EXPECT_TRUE(was_there);
    }

    CWavoView& View() { return m_frame->View(); }
    [[nodiscard]] std::string SettingsText() const {
        QFile file(m_folder.filePath(QStringLiteral("Velk/wavo.ini")));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    std::unique_ptr<CMainFrame> m_frame;
};

TEST_F(SettingsCommands, CanAlwaysBeUsed) {
    EXPECT_EQ(static_cast<int>(CommandId::kProperties), 32781);
    EXPECT_EQ(static_cast<int>(CommandId::kAdditionalText), 32786);
    for (const CommandId id : {CommandId::kProperties, CommandId::kAdditionalText}) {
        EXPECT_TRUE(m_frame->Action(id)->isEnabled());
    }
}

TEST_F(SettingsCommands, PropertiesAreShownAtOnceAndWrittenToTheFile) {
    m_prompts.color = [](QWidget*, const QColor&) { return QColor(0x10, 0x20, 0x30); };
    Run<CWavoProperties>(CommandId::kProperties, [&](CWavoProperties& dialog) {
        EXPECT_EQ(TextOf(dialog, wp::kScaleLinesX), "5");
        Click(dialog, wp::kBackground);
        Type(dialog, wp::kScaleLinesX, QStringLiteral("8"));
        Type(dialog, wp::kSeparator, QStringLiteral("0x09"));
        Click(dialog, wp::kShowGraphEditor);
        EXPECT_EQ(View().Work().Settings().Current(), DefaultViewSettings());
        Click(dialog, wp::kOk);
    });
    ViewSettings expected = DefaultViewSettings();
    expected.background = 0x302010;
    expected.scale_lines_x = 8;
    expected.export_settings.separator = '\t';
    expected.show_graph_editor = false;
    EXPECT_EQ(View().Work().Settings().Current(), expected);
    EXPECT_EQ(View().Screen().Picture().pixelColor(0, 0), QColor(0x10, 0x20, 0x30));
    for (const char* const line : {"red=16\r\n", "green=32\r\n", "blue=48\r\n", "x=8\r\n",
                                   "Separator=0x09\r\n", "ShowDialog=0\r\n"}) {
        EXPECT_THAT(SettingsText(), ::testing::HasSubstr(line));
    }
}

TEST_F(SettingsCommands, EveryLookIsRedrawnAtOnce) {
    const struct {
        int id;
        const char* typed;
    } rows[] = {{wp::kScaleLinesX, "8"}, {wp::kScaleLinesY, "6"}};
    for (const auto& row : rows) {
        const QImage before = View().Screen().Picture().copy();
        Run<CWavoProperties>(CommandId::kProperties, [&](CWavoProperties& dialog) {
            Type(dialog, row.id, QString::fromLatin1(row.typed));
            Click(dialog, wp::kOk);
        });
        EXPECT_NE(View().Screen().Picture(), before) << row.id;
    }
    m_prompts.font = [](QWidget*, const QFont&) {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(27);
        return font;
    };
    const QImage before = View().Screen().Picture().copy();
    Run<CWavoProperties>(CommandId::kProperties, [](CWavoProperties& dialog) {
        Click(dialog, wp::kSelectFont);
        Click(dialog, wp::kOk);
    });
    EXPECT_NE(View().Screen().Picture(), before);
    EXPECT_THAT(SettingsText(), ::testing::HasSubstr("height=-27\r\nname=DejaVu Sans\r\n"));
}

TEST_F(SettingsCommands, CancelledPropertiesChangeNothing) {
    const std::string before = SettingsText();
    const QImage picture = View().Screen().Picture().copy();
    Run<CWavoProperties>(CommandId::kProperties, [&](CWavoProperties& dialog) {
        Type(dialog, wp::kScaleLinesX, QStringLiteral("8"));
        Click(dialog, wp::kCancel);
    });
    EXPECT_EQ(View().Work().Settings().Current(), DefaultViewSettings());
    EXPECT_EQ(SettingsText(), before);
    EXPECT_EQ(View().Screen().Picture(), picture);
}

TEST_F(SettingsCommands, PropertiesThatCannotBeWrittenAreUsedAllTheSame) {
    const QString file = m_folder.filePath(QStringLiteral("Velk/wavo.ini"));
    const std::string shown = QDir::toNativeSeparators(file).toStdString();
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QDir().mkpath(file + QStringLiteral("/folder")));
    const ExpectErrorLog expected({"CWavoView::WriteProperties: failed to open '" + shown + "'",
                                   "CWavoView::WriteProperties: failed to svae '" + shown + "'"});
    Run<CWavoProperties>(CommandId::kProperties, [&](CWavoProperties& dialog) {
        Type(dialog, wp::kScaleLinesX, QStringLiteral("8"));
        Click(dialog, wp::kOk);
    });
    EXPECT_EQ(View().Work().Settings().Current().scale_lines_x, 8);
    EXPECT_EQ(m_frame->PaneText(StatusPane::kMessage).toStdString(),
              "Cannot write " + shown + ", see the error log");
}

TEST_F(SettingsCommands, TheTextOfTheGraphsIsShownInTheInverseOfTheBackground) {
    EXPECT_EQ(View().Work().Files().AdditionalText(), "first");
    Run<CAddText>(CommandId::kAdditionalText, [&](CAddText& dialog) {
        EXPECT_EQ(TextOf(dialog, add_text::kText), "first");
        Type(dialog, add_text::kText, QString());
        Click(dialog, add_text::kOk);
    });
    EXPECT_EQ(View().Work().Files().AdditionalText(), "");
    const QImage without = View().Screen().Picture().copy();
    Run<CAddText>(CommandId::kAdditionalText, [&](CAddText& dialog) {
        Type(dialog, add_text::kText, QStringLiteral("second"));
        EXPECT_EQ(View().Work().Files().AdditionalText(), "");
        Click(dialog, add_text::kOk);
    });
    EXPECT_EQ(View().Work().Files().AdditionalText(), "second");
    // In a band of its own, below the graphs.
    const BandText text{"second", View().Work().Settings().Current().font, 0xFFFFFF};
    QImage expected = View().Screen().Picture().copy();
    QPainter(&expected).fillRect(TextBand().Band(expected, text), Qt::black);
    TextBand().PutOn(expected, text);
    EXPECT_EQ(View().Screen().Picture(), expected);
    EXPECT_NE(expected, without);
}

TEST_F(SettingsCommands, CtrlASelectsAllInTheEditsOfDialogs) {
    m_frame->Action(CommandId::kStop)->trigger();
    ASSERT_TRUE(m_frame->Action(CommandId::kStart)->isEnabled());
    int edits = 0;
    const auto select_all = [&](QDialog& dialog) {
        for (QLineEdit* const edit : dialog.findChildren<QLineEdit*>()) {
            SCOPED_TRACE(edit->objectName().toStdString());
            edit->setText(QStringLiteral("text"));
            edit->setFocus();
            edit->deselect();
            // As the platform hands it over: first to the window.
            QTest::keyClick(dialog.windowHandle(), Qt::Key_A, Qt::ControlModifier);
            EXPECT_EQ(edit->selectedText(), QStringLiteral("text"));
            ++edits;
        }
        dialog.reject();
    };
    Run<CWavoProperties>(CommandId::kProperties, select_all);
    Run<CAddText>(CommandId::kAdditionalText, select_all);
    EXPECT_EQ(edits, 7);
    QTimer::singleShot(0, m_frame.get(), [&] {
        select_all(dynamic_cast<CTriggerCondition&>(*QApplication::activeModalWidget()));
    });
    FindControl<QPushButton>(View().Editor(), static_cast<int>(EditorControl::kTrigger))->click();
    EXPECT_EQ(edits, 8);
    PathSaveData values("values.txt", {"X"}, m_prompts, m_frame.get());
    values.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&values));
    select_all(values);
    EXPECT_EQ(edits, 9);
    EXPECT_TRUE(m_frame->Action(CommandId::kStart)->isEnabled()) << "it was not meant";
}

TEST_F(SettingsCommands, TheLettersOfMenusAndOfTheEditorsGroupsAreAllDifferent) {
    std::vector<QString> titles;
    for (const QAction* const menu : m_frame->findChild<QMenuBar*>()->actions()) {
        titles.push_back(menu->text());
    }
    const std::size_t menus = titles.size();
    for (const QGroupBox* const group : View().Editor().findChildren<QGroupBox*>()) {
        titles.push_back(group->title());
    }
    EXPECT_GE(menus, 5U);
    EXPECT_EQ(titles.size(), menus + 7);
    std::set<QKeySequence> letters;
    for (const QString& title : titles) {
        const QKeySequence letter = QKeySequence::mnemonic(title);
        EXPECT_FALSE(letter.isEmpty()) << title.toStdString();
        EXPECT_TRUE(letters.insert(letter).second) << title.toStdString();
    }
}

TEST_F(SettingsCommands, ACancelledTextStays) {
    const QImage picture = View().Screen().Picture().copy();
    Run<CAddText>(CommandId::kAdditionalText, [&](CAddText& dialog) {
        Type(dialog, add_text::kText, QStringLiteral("second"));
        Click(dialog, add_text::kCancel);
    });
    EXPECT_EQ(View().Work().Files().AdditionalText(), "first");
    EXPECT_EQ(View().Screen().Picture(), picture);
}

TEST_F(SettingsCommands, PropertiesSetTheTraceLevelOfTheSettings) {
    _MTrace_SetLevel("default", 4);
    Run<CWavoProperties>(CommandId::kProperties,
                         [](CWavoProperties& dialog) { Click(dialog, wp::kOk); });
    EXPECT_EQ(_MTrace_TestLevel("default", 2), 0);
    EXPECT_NE(_MTrace_TestLevel("default", 1), 0);
}

}  // namespace
}  // namespace wavo
