#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>

#include "accessible_walk.h"
#include "ui/controls/controls.h"
#include "ui/shell/about_dlg.h"
#include "ui/shell/third_parties.h"
#include "ui/shell/version_data.h"

namespace wavo {
namespace {

const VersionData kVersion{"Product", "2.5", "2.5.0.1", "What it is", "Copyright"};

TEST(AboutText, HasThreeLines) {
    EXPECT_EQ(AboutText(kVersion, ""), "Product 2.5\n2.5.0.1 What it is\nCopyright");
}

TEST(AboutText, NamesAServicePackBehindTheProduct) {
    EXPECT_EQ(AboutText(kVersion, "3"), "Product 2.5 SP 3\n2.5.0.1 What it is\nCopyright");
}

TEST(AboutText, ComesFromTheBuild) {
    EXPECT_EQ(AboutText(OwnVersion(), ""), "Wavo " WAVO_TEST_VERSION "\n" WAVO_TEST_VERSION
                                           ".0 Live signal scope for machine tools\n"
                                           "Copyright (C) 2026 Velk");
}

TEST(ServicePack, IsReadFromTheFileOfTheInstallation) {
    const QTemporaryDir folder;
    const std::string root = folder.path().toStdString();
    EXPECT_EQ(ReadServicePack(root), "");
    QFile file(folder.filePath(QStringLiteral("version_sr.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Version]\r\nServicePack=4\r\n");
    file.close();
    EXPECT_EQ(ReadServicePack(root), "4");
    EXPECT_EQ(ReadServicePack(""), "");
}

TEST(AboutBox, ShowsItsTextWithIconAndButton) {
    CAboutDlg box("first\n<b>second</b>\nthird");
    EXPECT_EQ(box.windowTitle(), "About Wavo");
    EXPECT_EQ(FindControl<QLabel>(box, about::kText)->text(), "first\n<b>second</b>\nthird");
    EXPECT_EQ(FindControl<QLabel>(box, about::kText)->textFormat(), Qt::PlainText);
    EXPECT_EQ(FindControl<QLabel>(box, about::kIcon)->pixmap().deviceIndependentSize(),
              QSizeF(48, 48));
    EXPECT_EQ(FindControl<QPushButton>(box, about::kOk)->text(), "OK");
    box.show();
    EXPECT_EQ(box.focusWidget(), FindControl(box, about::kOk));
    FindControl<QPushButton>(box, about::kOk)->click();
    EXPECT_EQ(box.result(), QDialog::Accepted);
}

TEST(AboutBox, ItsDetailsAreTheLicencesAndNotices) {
    QFile file(QStringLiteral(WAVO_THIRD_PARTY));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString written = QString::fromUtf8(file.readAll());
    EXPECT_EQ(ThirdParties().remove(QLatin1Char('\r')), written);

    CAboutDlg box("text");
    box.show();
    bool was_there = false;
    QTimer::singleShot(0, &box, [&] {
        auto* const dialog = dynamic_cast<ThirdPartiesDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        was_there = true;
        EXPECT_THAT(testing::WithoutAccessibleTexts(*dialog), ::testing::IsEmpty());
        auto& text = *dialog->findChild<QTextBrowser*>();
        EXPECT_EQ(dialog->focusWidget(), &text);
        const QString shown = text.toPlainText();
        for (const char* const part : {"Eigen 3.4", "muParser 2.3", "Another Qt on Windows"}) {
            EXPECT_TRUE(shown.contains(QLatin1String(part))) << part;
        }
        EXPECT_FALSE(shown.contains(QStringLiteral("|---"))) << "tables are tables";
        EXPECT_LE(text.horizontalScrollBar()->maximum(), 1) << "cut off";
        QTest::keyClick(&text, Qt::Key_PageDown);
        EXPECT_GT(text.verticalScrollBar()->value(), 0);
        Q_EMIT text.anchorClicked(QUrl(QStringLiteral("#another-qt-on-windows")));
        EXPECT_EQ(text.textCursor().block().text(), "Another Qt on Windows");
        QTest::keyClick(&text, Qt::Key_Escape);
        EXPECT_FALSE(dialog->isVisible());
    });
    QTest::keyClick(FindControl<QPushButton>(box, about::kDetails), Qt::Key_Space);
    EXPECT_TRUE(was_there);
}

}  // namespace
}  // namespace wavo
