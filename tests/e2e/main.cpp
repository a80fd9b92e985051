// main() of the end-to-end tests: sockets, settings and logs of viewer and masters go to folders of
// their own.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "expect_errors.h"
#include "platform/process.h"
#include "system_facts.h"
#include "ui/dialogs/dialog_prompts.h"
#include "ui/shell/wavo_app.h"

int main(int argc, char** argv) {
    // Where a debugger is waited for (Wine), a crash would look like a test that hangs.
    wavo::platform::InstallCrashHook("", "test_e2e");
    const QTemporaryDir folder;
    for (const char* name :
         {"XDG_RUNTIME_DIR", wavo::testing::kDataHome, "XDG_STATE_HOME", "XDG_CONFIG_HOME"}) {
        qputenv(name, folder.path().toUtf8());
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", wavo::testing::kEndToEndPlatform);
    }
    qputenv("LC_ALL", "C.UTF-8");  // a locale that the toolkit takes over, present everywhere
    const wavo::CWavoApp app(argc, argv, wavo::DialogPrompts());
    ::testing::InitGoogleTest(&argc, argv);
    wavo::testing::InstallReportListener();
    return RUN_ALL_TESTS();
}
