#include <gtest/gtest.h>

#include <QGuiApplication>

#include "expect_errors.h"

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    wavo::testing::InstallReportListener();
    return RUN_ALL_TESTS();
}
