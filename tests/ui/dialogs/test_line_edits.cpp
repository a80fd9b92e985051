// Every edit of the dialogs holds one line, whatever is put into it.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>

#include "dialog_driver.h"
#include "real_prompts.h"
#include "settings/view_settings.h"
#include "ui/controls/line_edits.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/wavo_properties.h"

namespace wavo {
namespace {

using testing::TextOf;

constexpr char kLines[] = "a\r\nb\nc\rd\u2028e\u2029f\u0085g\vh\fi";
constexpr char kOneLine[] = "a b c d e f g h i";

/// Pastes lines into every edit that is there; returns how many there were.
int ExpectOneLineEach(QWidget& window) {
    QApplication::clipboard()->setText(QString::fromUtf8(kLines));
    int edits = 0;
    for (QLineEdit* const edit : window.findChildren<QLineEdit*>()) {
        SCOPED_TRACE(edit->objectName().toStdString());
        edit->clear();
        edit->paste();
        EXPECT_EQ(edit->text().toStdString(), kOneLine);
        EXPECT_TRUE(edit->hasAcceptableInput());
        edit->setText(QStringLiteral("a\nb"));
        EXPECT_EQ(edit->text(), QStringLiteral("a b"));
        ++edits;
    }
    return edits;
}

TEST(LineEdits, OfEveryDialogHoldOneLine) {
    std::string text = "before";
    CAddText add_text(text);
    EXPECT_EQ(ExpectOneLineEach(add_text), 1);
    PathSaveData path("values.txt", {"X"}, testing::RealPrompts(), nullptr);
    EXPECT_EQ(ExpectOneLineEach(path), 1);
    TriggerEntry trigger;
    CTriggerCondition condition(trigger);
    EXPECT_EQ(ExpectOneLineEach(condition), 1);
    ViewSettings settings = DefaultViewSettings();
    CWavoProperties properties(settings, testing::RealPrompts());
    EXPECT_EQ(ExpectOneLineEach(properties), 6);
}

TEST(LineEdits, APathWithALineEndIsTakenWithABlank) {
    PathSaveData dialog("before.txt", {"X"}, testing::RealPrompts(), nullptr);
    dialog.show();
    auto& edit = testing::Control<QLineEdit>(dialog, static_cast<int>(PathSaveDataId::kPath));
    QApplication::clipboard()->setText(QStringLiteral("/data/my\nvalues.txt"));
    edit.selectAll();
    edit.paste();
    testing::Click(dialog, static_cast<int>(PathSaveDataId::kOk));
    EXPECT_EQ(dialog.Path(), "/data/my values.txt");
    EXPECT_EQ(PathSaveData("/data/my\nvalues.txt", {}, testing::RealPrompts(), nullptr).Path(),
              "/data/my\nvalues.txt")
        << "what was not confirmed stays";
}

TEST(LineEdits, WhoListensNeverMeetsALineEnd) {
    QLineEdit edit;
    KeepOneLine(edit);
    QStringList heard;
    QObject::connect(&edit, &QLineEdit::textEdited, [&](const QString& text) { heard += text; });
    QObject::connect(&edit, &QLineEdit::textChanged, [&](const QString& text) { heard += text; });
    QApplication::clipboard()->setText(QStringLiteral("1\n2"));
    edit.paste();
    ASSERT_FALSE(heard.isEmpty());
    for (const QString& text : heard) {
        EXPECT_EQ(text, QStringLiteral("1 2"));
    }
    EXPECT_EQ(edit.cursorPosition(), 3);
    edit.setCursorPosition(1);
    QApplication::clipboard()->setText(QStringLiteral("x\r\ny"));
    edit.paste();
    EXPECT_EQ(edit.text(), QStringLiteral("1x y 2"));
    EXPECT_EQ(edit.cursorPosition(), 4);
}

/// Does something with the file dialog that opens next, then leaves it.
template <typename Ask>
int EditsOfTheFileDialogOf(const Ask& ask) {
    int edits = 0;
    QMetaObject::invokeMethod(
        qApp,
        [&edits] {
            auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            edits = ExpectOneLineEach(*dialog);
            dialog->reject();
        },
        Qt::QueuedConnection);
    ask();
    return edits;
}

TEST(LineEdits, OfTheFileDialogsHoldOneLineToo) {
    const FileQuestion question{QStringLiteral("Save As"),
                                {},
                                QStringLiteral("ini"),
                                QStringLiteral("All Files (*.*)|*.*||")};
    EXPECT_GE(EditsOfTheFileDialogOf([&] { ChooseSaveFile(nullptr, question); }), 1);
    EXPECT_GE(EditsOfTheFileDialogOf([&] { ChooseOpenFile(nullptr, question); }), 1);
    const FileQuestion without_caption{
        {}, {}, QStringLiteral("txt"), QStringLiteral("All Files (*.*)|*.*||")};
    EXPECT_GE(
        EditsOfTheFileDialogOf([&] { testing::RealPrompts().save_file(nullptr, without_caption); }),
        1);
}

}  // namespace
}  // namespace wavo
