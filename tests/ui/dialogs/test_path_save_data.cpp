#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "real_prompts.h"
#include "temporary_folder.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/path_save_data.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PathOfValues : public ::testing::Test {
 protected:
    PathOfValues() {
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box);
            return m_box_answer;
        };
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            m_questions.push_back(question);
            return m_chosen;
        };
    }

    template <typename Widget>
    [[nodiscard]] Widget& Control(PathSaveDataId id) const {
        return *FindControl<Widget>(m_dialog, static_cast<int>(id));
    }
    [[nodiscard]] std::string Text() const {
        return Control<QLineEdit>(PathSaveDataId::kPath).text().toStdString();
    }
    void Click(PathSaveDataId id) {
        m_dialog.show();
        QTest::mouseClick(&Control<QPushButton>(id), Qt::LeftButton);
    }
    [[nodiscard]] std::string ExistingFile() const {
        std::ofstream(m_folder.File("there.txt")) << "values";
        return m_folder.File("there.txt");
    }

    const testing::TemporaryFolder m_folder;
    std::optional<QString> m_chosen;
    Prompts m_prompts;
    BoxAnswer m_box_answer = BoxAnswer::kOk;
    std::vector<FileQuestion> m_questions;
    std::vector<Box> m_boxes;
    PathSaveData m_dialog{"/data/values.txt", {"X", "Y", "spindle"}, m_prompts, nullptr};
};

TEST_F(PathOfValues, ShowsThePathAndTheAxes) {
    EXPECT_EQ(m_dialog.windowTitle(), QStringLiteral("Save Values"));
    EXPECT_EQ(Control<QLabel>(PathSaveDataId::kAxes).text(), QStringLiteral("X,Y,spindle"));
    EXPECT_EQ(Text(), "/data/values.txt");
    std::vector<std::string> labels;
    for (const QLabel* const label : m_dialog.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr) {
            labels.push_back(label->text().toStdString());
        }
    }
    EXPECT_THAT(labels, ElementsAre("axis:", "path for data file is:"));
}

TEST_F(PathOfValues, EveryControlOfTheTableIsThereOnceWithItsTexts) {
    std::set<int> ids;
    for (const ControlRow& control : PathSaveDataControls()) {
        EXPECT_TRUE(ids.insert(control.id).second);
        const QString name = ControlName(control.id);
        ASSERT_EQ(m_dialog.findChildren<QWidget*>(name).size(), 1) << name.toStdString();
        const auto* const widget = m_dialog.findChild<QWidget*>(name);
        EXPECT_EQ(widget->toolTip(), QString::fromLatin1(control.tool_tip));
        if (const auto* const button = qobject_cast<const QPushButton*>(widget)) {
            EXPECT_EQ(button->text(), QString::fromLatin1(control.text));
        }
    }
    EXPECT_THAT(ids, ElementsAre(1, 2, 1027, 1035, 1065));
}

TEST_F(PathOfValues, TheTabKeyGoesInReadingOrder) {
    m_dialog.show();
    std::vector<std::string> order;
    for (QWidget* widget = &Control<QLineEdit>(PathSaveDataId::kPath); order.size() < 4;
         widget = widget->nextInFocusChain()) {
        if ((widget->focusPolicy() & Qt::TabFocus) != 0) {
            order.push_back(widget->objectName().toStdString());
        }
    }
    EXPECT_THAT(order, ElementsAre("control_1035", "control_1027", "control_1", "control_2"));
}

TEST_F(PathOfValues, NothingIsCutOffAtTheSizeThatItOpensWith) {
    m_dialog.show();
    for (const QPushButton* const button : m_dialog.findChildren<QPushButton*>()) {
        EXPECT_GE(button->width(), button->fontMetrics().horizontalAdvance(button->text()));
        EXPECT_TRUE(m_dialog.rect().contains(button->geometry()));
    }
    const auto& axes = Control<QLabel>(PathSaveDataId::kAxes);
    EXPECT_GE(axes.width(), axes.fontMetrics().horizontalAdvance(axes.text()));
}

TEST_F(PathOfValues, OkTakesWhatTheEditHolds) {
    for (const char* const text : {"relative name", "", "/no/such folder/ä.csv"}) {
        Control<QLineEdit>(PathSaveDataId::kPath).setText(QString::fromUtf8(text));
        Click(PathSaveDataId::kOk);
        EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
        EXPECT_EQ(m_dialog.Path(), text);
    }
}

TEST_F(PathOfValues, OkAsksNothingAboutATypedFileThatIsThere) {
    const std::string path = ExistingFile();
    Control<QLineEdit>(PathSaveDataId::kPath).setText(QString::fromStdString(path));
    Click(PathSaveDataId::kOk);
    EXPECT_EQ(m_dialog.Path(), path);
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(PathOfValues, TheReturnKeyIsOk) {
    m_dialog.show();
    QTest::keyClick(&Control<QLineEdit>(PathSaveDataId::kPath), Qt::Key_Return);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
    EXPECT_THAT(m_questions, IsEmpty());
}

TEST_F(PathOfValues, CancelAndEscapeKeepThePath) {
    Control<QLineEdit>(PathSaveDataId::kPath).setText(QStringLiteral("other"));
    Click(PathSaveDataId::kCancel);
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
    EXPECT_EQ(m_dialog.Path(), "/data/values.txt");
    m_dialog.show();
    QTest::keyClick(&m_dialog, Qt::Key_Escape);
    EXPECT_FALSE(m_dialog.isVisible());
    EXPECT_EQ(m_dialog.Path(), "/data/values.txt");
}

TEST_F(PathOfValues, TheButtonAsksForAFileToSaveBeginningWithTheEdit) {
    Control<QLineEdit>(PathSaveDataId::kPath).setText(QStringLiteral("/data/typed.txt"));
    m_chosen = QString::fromStdString(m_folder.File("new.txt"));
    Click(PathSaveDataId::kBrowse);
    EXPECT_THAT(m_questions,
                ElementsAre(FileQuestion{
                    QString(), QStringLiteral("/data/typed.txt"), QStringLiteral("txt"),
                    QStringLiteral("Data Files (*.txt)|*.txt|All Files (*.*)|*.*||")}));
    EXPECT_EQ(Text(), m_folder.File("new.txt"));
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_TRUE(m_dialog.isVisible());
}

TEST_F(PathOfValues, LeavingTheFileDialogKeepsTheEdit) {
    Click(PathSaveDataId::kBrowse);
    EXPECT_EQ(m_questions.size(), 1U);
    EXPECT_EQ(Text(), "/data/values.txt");
}

TEST_F(PathOfValues, AChosenFileThatIsThereIsAskedAbout) {
    m_chosen = QString::fromStdString(ExistingFile());
    Click(PathSaveDataId::kBrowse);
    EXPECT_THAT(m_boxes,
                ElementsAre(Box{"file " + m_chosen->toStdString() + " already exist, override ?",
                                "file exist", BoxIcon::kExclamation, BoxButtons::kOkCancel}));
    EXPECT_EQ(Text(), m_chosen->toStdString());
}

TEST_F(PathOfValues, DecliningToReplaceKeepsTheEdit) {
    m_chosen = QString::fromStdString(ExistingFile());
    m_box_answer = BoxAnswer::kCancel;
    Click(PathSaveDataId::kBrowse);
    EXPECT_EQ(m_boxes.size(), 1U);
    EXPECT_EQ(Text(), "/data/values.txt");
}

}  // namespace
}  // namespace wavo
