// demo_master: a master without a machine. See demo_master --help.
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "master/demo_options.h"
#include "master/demo_run.h"
#include "master/motions.h"
#include "master/recorded_lines.h"
#include "master/recording.h"
#include "platform/folders.h"
#include "platform/process.h"
#include "recording/recording_fault.h"
#include "support/diagnostics_output.h"

namespace {

using namespace wavo::master;

constexpr char kVersion[] = "demo_master " WAVO_VERSION;

std::unique_ptr<LineSource> OpenRecording(const DemoOptions& options, std::string* error) {
    auto recording = wavo::recording::RecordingReader::Open(options.recording);
    if (!recording) {
        using wavo::recording::RecordingFault;
        const int code = recording.Why().code;
        if (code == static_cast<int>(RecordingFault::kCannotOpen) ||
            code == static_cast<int>(RecordingFault::kNotRecording)) {
            return Recording::Read(options.recording, options.axes, error);
        }
        *error = recording.Why().text;
        return nullptr;
    }
    if (!(*recording)->IsComplete()) {
        std::fprintf(stderr, "demo_master: %s: %s\n", options.recording.c_str(),
                     (*recording)->CutOffText().c_str());
    }
    auto lines =
        RecordedLines::Make(std::move(*recording), options.axes,
                            options.skip_gaps ? GapPlaying::kSkip : GapPlaying::kKeepTime, error);
    if (!lines) {
        *error = options.recording + ": " + *error;
    }
    return lines;
}

std::unique_ptr<LineSource> MakeSource(const DemoOptions& options, std::string* error) {
    if (!options.recording.empty()) {
        return OpenRecording(options, error);
    }
    const double cycle_time = options.cycle_time > 0.0 ? options.cycle_time : kUsualCycleTime;
    return MakeMotion(options.motion, options.axes, cycle_time, options.seed, error);
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kWrongArguments = 2;
    wavo::platform::InstallCrashHook("", kVersion);
    wavo::diagnostics::SetEcho(true);
    wavo::platform::PrepareTerminal();
    const std::vector<std::string> arguments = wavo::platform::CommandLineArguments(argc, argv);
    DemoOptions options;
    std::string error;
    switch (ParseDemoOptions(arguments, &options, &error)) {
        case OptionsOutcome::kHelp:
            std::fputs(DemoHelp().c_str(), stdout);
            return 0;
        case OptionsOutcome::kVersion:
            std::puts(kVersion);
            return 0;
        case OptionsOutcome::kError:
            std::fprintf(stderr, "demo_master: %s\nTry demo_master --help.\n", error.c_str());
            return kWrongArguments;
        case OptionsOutcome::kRun:
            break;
    }
    std::unique_ptr<LineSource> source = MakeSource(options, &error);
    if (!source) {
        std::fprintf(stderr, "demo_master: %s\n", error.c_str());
        return kWrongArguments;
    }
    return DemoRun(std::move(options), std::move(source)).Run();
}
