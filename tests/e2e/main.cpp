// main() of the end-to-end tests: sockets, settings and logs of viewer and masters go to folders of
// their own.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

#include "expect_errors.h"

int main(int argc, char** argv) {
    const QTemporaryDir folder;
    for (const char* name : {"XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        qputenv(name, folder.path().toUtf8());
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    wavo::testing::InstallReportListener();
    return RUN_ALL_TESTS();
}
