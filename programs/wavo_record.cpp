// wavo_record: the recorder without a window. See wavo_record --help.
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/folders.h"
#include "platform/process.h"
#include "recorder/record_options.h"
#include "recorder/record_report.h"
#include "recorder/recorder.h"
#include "support/diagnostics_output.h"

namespace {

using namespace wavo::recorder;

constexpr char kVersion[] = "wavo_record " WAVO_VERSION;
constexpr std::chrono::milliseconds kLongestWait{50};

int Record(RecordOptions options) {
    RecordReport report(options);
    Recorder recorder(std::move(options), kVersion,
                      [&report](const std::string& line) { report.Say(line); });
    wavo::platform::WatchTerminationRequests();
    if (recorder.Start()) {
        while (recorder.Serve(kLongestWait)) {
            if (wavo::platform::TerminationRequested()) {
                recorder.Finish("ended on request");
            }
            report.ShowStatus(recorder);
        }
    }
    return static_cast<int>(report.End(recorder.Outcome()));
}

}  // namespace

int main(int argc, char** argv) {
    wavo::platform::InstallCrashHook("", kVersion);
    wavo::diagnostics::SetEcho(true);
    wavo::platform::PrepareTerminal();
    const std::vector<std::string> arguments = wavo::platform::CommandLineArguments(argc, argv);
    RecordOptions options;
    std::string error;
    switch (ParseRecordOptions(arguments, &options, &error)) {
        case OptionsOutcome::kHelp:
            std::fputs(RecordHelp().c_str(), stdout);
            return 0;
        case OptionsOutcome::kVersion:
            std::puts(kVersion);
            return 0;
        case OptionsOutcome::kError:
            std::fprintf(stderr, "wavo_record: %s\nTry wavo_record --help.\n", error.c_str());
            return static_cast<int>(ExitCode::kWrongArguments);
        case OptionsOutcome::kVerify:
            return static_cast<int>(Verify(options));
        case OptionsOutcome::kRun:
            break;
    }
    return Record(std::move(options));
}
