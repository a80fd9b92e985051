#include <gtest/gtest.h>

#include "dialog_driver.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/add_text_controls.h"

namespace wavo {
namespace {

using namespace testing;

TEST(AddText, HasTheControlsOfItsTable) {
    std::string text;
    CAddText dialog(text);
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Additional"));
    ExpectControlsOfTable(dialog, add_text::Controls());
}

TEST(AddText, ShowsTheTextAndTakesTheOneThatIsTyped) {
    std::string text = "before ü & <b>";
    CAddText dialog(text);
    dialog.show();
    EXPECT_EQ(TextOf(dialog, add_text::kText), "before ü & <b>");
    Type(dialog, add_text::kText, QStringLiteral("after ß, 2"));
    EXPECT_EQ(text, "before ü & <b>");
    Click(dialog, add_text::kOk);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(text, "after ß, 2");
}

TEST(AddText, TypingReplacesTheTextThatIsThere) {
    std::string text = "before";
    CAddText dialog(text);
    dialog.show();
    QTest::keyClicks(&Control<QLineEdit>(dialog, add_text::kText), QStringLiteral("after"));
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(text, "after");
}

TEST(AddText, MayBeEmptied) {
    std::string text = "before";
    CAddText dialog(text);
    dialog.show();
    Type(dialog, add_text::kText, QString());
    Click(dialog, add_text::kOk);
    EXPECT_EQ(text, "");
}

TEST(AddText, IsALineWhateverIsPasted) {
    std::string text;
    CAddText dialog(text);
    dialog.show();
    Control<QLineEdit>(dialog, add_text::kText).insert(QStringLiteral("one\r\ntwo\nthree"));
    Click(dialog, add_text::kOk);
    EXPECT_EQ(text, "one two three");
}

TEST(AddText, CancelAndEscapeLeaveTheText) {
    for (const bool escape : {false, true}) {
        std::string text = "before";
        CAddText dialog(text);
        dialog.show();
        Type(dialog, add_text::kText, QStringLiteral("after"));
        if (escape) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
        } else {
            Click(dialog, add_text::kCancel);
        }
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
        EXPECT_EQ(text, "before");
    }
}

}  // namespace
}  // namespace wavo
