// The list of which some rows can be ticked.
#include "ui/dialogs/choose_several.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Several : public ::testing::Test {
 protected:
    Several() { m_dialog.show(); }
    QListWidget& List() { return *m_dialog.findChild<QListWidget*>(); }
    QPushButton& Button(const QString& text) {
        for (QPushButton* const button : m_dialog.findChildren<QPushButton*>()) {
            if (button->text() == text) {
                return *button;
            }
        }
        ADD_FAILURE() << text.toStdString();
        return *m_dialog.findChild<QPushButton*>();
    }

    SeveralDialog m_dialog{{QStringLiteral("Stop Recording"),
                            QStringLiteral("Which?"),
                            QStringLiteral("&Stop"),
                            {QStringLiteral("night.mcap"), QStringLiteral("day.mcap")}},
                           nullptr};
};

TEST_F(Several, ShowsWhatIsAsked) {
    EXPECT_EQ(m_dialog.windowTitle(), "Stop Recording");
    EXPECT_EQ(m_dialog.findChild<QLabel*>()->text(), "Which?");
    ASSERT_EQ(List().count(), 2);
    EXPECT_EQ(List().item(1)->text(), "day.mcap");
    EXPECT_FALSE(Button(QStringLiteral("&Stop")).isEnabled());
    EXPECT_THAT(m_dialog.Chosen(), IsEmpty());
}

TEST_F(Several, RowsAreTickedByKeysAndByTheMouse) {
    List().setFocus();
    QTest::keyClick(&List(), Qt::Key_Down);
    QTest::keyClick(&List(), Qt::Key_Space);
    EXPECT_THAT(m_dialog.Chosen(), ElementsAre(1));
    EXPECT_TRUE(Button(QStringLiteral("&Stop")).isEnabled());
    QTest::keyClick(&List(), Qt::Key_Space);
    EXPECT_FALSE(Button(QStringLiteral("&Stop")).isEnabled());
    const QRect row = List().visualItemRect(List().item(0));
    QTest::mouseClick(List().viewport(), Qt::LeftButton, {},
                      QPoint(row.left() + 8, row.center().y()));
    EXPECT_THAT(m_dialog.Chosen(), ElementsAre(0));
    QTest::mouseClick(&Button(QStringLiteral("&Stop")), Qt::LeftButton);
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
}

TEST_F(Several, EscapeChoosesNothing) {
    QTest::keyClick(&m_dialog, Qt::Key_Escape);
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
    EXPECT_FALSE(m_dialog.isVisible());
}

}  // namespace
}  // namespace wavo
