// wavo_pipe: a master for everything that can print numbers. See wavo_pipe --help.
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "master/pipe/pipe_options.h"
#include "master/pipe/pipe_run.h"
#include "platform/folders.h"
#include "platform/process.h"
#include "support/diagnostics_output.h"

int main(int argc, char** argv) {
    using namespace wavo::master;
    constexpr char kVersion[] = "wavo_pipe " WAVO_VERSION;
    constexpr int kWrongArguments = 2;
    wavo::platform::InstallCrashHook("", kVersion);
    wavo::diagnostics::SetEcho(true);
    wavo::platform::PrepareTerminal();
    const std::vector<std::string> arguments = wavo::platform::CommandLineArguments(argc, argv);
    PipeOptions options;
    std::string error;
    switch (ParsePipeOptions(arguments, &options, &error)) {
        case OptionsOutcome::kHelp:
            std::fputs(PipeHelp().c_str(), stdout);
            return 0;
        case OptionsOutcome::kVersion:
            std::puts(kVersion);
            return 0;
        case OptionsOutcome::kError:
            std::fprintf(stderr, "wavo_pipe: %s\nTry wavo_pipe --help.\n", error.c_str());
            return kWrongArguments;
        case OptionsOutcome::kRun:
            break;
    }
    return PipeRun(std::move(options)).Run();
}
