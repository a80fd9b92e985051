// wavo_linuxcnc: a master for the values of a LinuxCNC controller. See wavo_linuxcnc --help.
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "master/linuxcnc/linuxcnc_options.h"
#include "master/linuxcnc/linuxcnc_run.h"
#include "master/linuxcnc/setup_command.h"
#include "platform/process.h"
#include "support/diagnostics_output.h"

int main(int argc, char** argv) {
    using namespace wavo::master;
    constexpr char kVersion[] = "wavo_linuxcnc " WAVO_VERSION;
    constexpr int kWrongArguments = 2;
    wavo::platform::InstallCrashHook("", kVersion);
    wavo::diagnostics::SetEcho(true);
    const std::vector<std::string> arguments = wavo::platform::CommandLineArguments(argc, argv);
    LinuxcncOptions options;
    std::string error;
    switch (ParseLinuxcncOptions(arguments, &options, &error)) {
        case OptionsOutcome::kHelp:
            std::fputs(LinuxcncHelp().c_str(), stdout);
            return 0;
        case OptionsOutcome::kVersion:
            std::puts(kVersion);
            return 0;
        case OptionsOutcome::kError:
            std::fprintf(stderr, "wavo_linuxcnc: %s\nTry wavo_linuxcnc --help.\n", error.c_str());
            return kWrongArguments;
        case OptionsOutcome::kRun:
            break;
    }
    return options.setup.empty() ? LinuxcncRun(std::move(options)).Run() : SetUp(options);
}
