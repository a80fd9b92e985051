// main() of the tests that need an application with windows or fonts.
#include <gtest/gtest.h>

#include <QApplication>

#include "expect_errors.h"

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    wavo::testing::InstallReportListener();
    return RUN_ALL_TESTS();
}
