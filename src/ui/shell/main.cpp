#include "support/diagnostics.h"
#include "ui/shell/wavo_app.h"

namespace {

// Before anything else is built: a crash during the start is recorded too.
[[maybe_unused]] const bool g_crash_logger_ready = (CrashLogDLL::InitCrashLogger(), true);

}  // namespace

int main(int argc, char** argv) {
    wavo::CWavoApp app(argc, argv);
    app.InitInstance(app.ParseCommandLine());
    return wavo::CWavoApp::exec();
}
