// Message boxes as they are shown.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <functional>

#include "ui/dialogs/message_boxes.h"

namespace wavo {
namespace {

/// Shows a box and looks at it.
void ShowAndLook(const Box& box, const std::function<void(QMessageBox&)>& look) {
    bool looked = false;
    QTimer::singleShot(0, qApp, [&] {
        auto* const window = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(window, nullptr);
        look(*window);
        looked = true;
        window->close();
    });
    ShowBox(nullptr, box);
    EXPECT_TRUE(looked);
}

TEST(MessageBox, IsWideEnoughForItsCaption) {
    for (const char* const caption :
         {"ERROR", "file exist", "Inconvenient back ground color",
          "A caption that is very much longer than the text of its box could ever be"}) {
        ShowAndLook({"short", caption, BoxIcon::kQuestion, BoxButtons::kYesNo},
                    [](const QMessageBox& window) {
                        QFont bold = QApplication::font("QMdiSubWindowTitleBar");
                        bold.setBold(true);
                        // Beside the caption stand an icon and three buttons.
                        const QFontMetrics metrics(bold);
                        EXPECT_GE(window.width(), metrics.horizontalAdvance(window.windowTitle()) +
                                                      4 * (metrics.height() + 8))
                            << window.windowTitle().toStdString();
                    });
    }
}

TEST(MessageBox, ShowsTheIconThatIsAskedFor) {
    const std::pair<BoxIcon, QMessageBox::Icon> icons[] = {
        {BoxIcon::kExclamation, QMessageBox::Warning},
        {BoxIcon::kQuestion, QMessageBox::Question},
        {BoxIcon::kInformation, QMessageBox::Information}};
    for (const auto& [asked, shown] : icons) {
        ShowAndLook({"text", "caption", asked, BoxButtons::kOk},
                    [shown = shown](const QMessageBox& window) {
                        EXPECT_EQ(window.icon(), shown);
                        EXPECT_EQ(window.text(), "text");
                    });
    }
}

}  // namespace
}  // namespace wavo
