#include "support/diagnostics.h"
#include "ui/shell/wavo_app.h"

int main(int argc, char** argv) {
    wavo::CWavoApp app(argc, argv);
    app.InitInstance(app.ParseCommandLine());
    return wavo::CWavoApp::exec();
}
