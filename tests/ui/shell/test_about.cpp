#include <gtest/gtest.h>

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>

#include "ui/controls/controls.h"
#include "ui/shell/about_dlg.h"
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
    FindControl<QPushButton>(box, about::kOk)->click();
    EXPECT_EQ(box.result(), QDialog::Accepted);
}

}  // namespace
}  // namespace wavo
