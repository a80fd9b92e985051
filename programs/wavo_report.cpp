// wavo_report: figures of a machine as PDF and JSON, without a window. See wavo_report --help.
#include <QGuiApplication>
#include <QLoggingCategory>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/folders.h"
#include "platform/process.h"
#include "programs/report_options.h"
#include "programs/report_run.h"
#include "support/diagnostics_output.h"

namespace {

using namespace wavo::programs;

constexpr char kReportVersion[] = "wavo_report " WAVO_VERSION;

}  // namespace

int main(int argc, char** argv) {
    wavo::platform::InstallCrashHook("", kReportVersion);
    wavo::diagnostics::SetEcho(true);
    wavo::platform::PrepareTerminal();
    ReportOptions options;
    std::string error;
    switch (
        ParseReportOptions(wavo::platform::CommandLineArguments(argc, argv), &options, &error)) {
        case ReportOutcome::kHelp:
            std::fputs(ReportHelp().c_str(), stdout);
            return 0;
        case ReportOutcome::kVersion:
            std::puts(kReportVersion);
            return 0;
        case ReportOutcome::kError:
            std::fprintf(stderr, "wavo_report: %s\nTry wavo_report --help.\n", error.c_str());
            return kWrongUse;
        case ReportOutcome::kRun:
            break;
    }
    // Pages are painted; nothing is shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // What the toolkit finds wanting in a desktop that is not there.
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    int qt_argc = 1;
    const QGuiApplication application(qt_argc, argv);
    std::string output;
    const int code = RunReport(options, kReportVersion, &output, &error);
    std::fputs(output.c_str(), stdout);
    if (!error.empty()) {
        std::fprintf(stderr, "wavo_report: %s\n", error.c_str());
    }
    return code;
}
