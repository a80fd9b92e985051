#include <optional>

#include "platform/process.h"
#include "support/diagnostics.h"
#include "ui/dialogs/dialog_prompts.h"
#include "ui/shell/command_line.h"
#include "ui/shell/toolkit_start.h"
#include "ui/shell/wavo_app.h"

namespace {

// Before anything else is built: a crash during the start is recorded too.
[[maybe_unused]] const bool g_crash_logger_ready = (CrashLogDLL::InitCrashLogger(), true);

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = wavo::platform::CommandLineArguments(argc, argv);
    const wavo::CommandLine line = wavo::ReadCommandLine(arguments);
    if (line.last_words && wavo::CWavoApp::Print(*line.last_words)) {
        return line.last_words->exit_code;
    }
    const wavo::Prompts prompts = wavo::DialogPrompts();
    std::optional<wavo::CWavoApp> app;
    {
        const wavo::ToolkitStart start(arguments);
        app.emplace(argc, argv, prompts);
    }
    if (line.last_words) {
        wavo::CWavoApp::ShowInBox(*line.last_words, prompts);
        return line.last_words->exit_code;
    }
    app->InitInstance(line.options);
    return wavo::CWavoApp::exec();
}
