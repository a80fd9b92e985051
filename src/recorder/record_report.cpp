#include "recorder/record_report.h"

#include <cinttypes>
#include <cstdio>

#include "platform/folders.h"
#include "recording/json_text.h"
#include "recording/recording_verify.h"

namespace wavo::recorder {

namespace {

constexpr std::chrono::milliseconds kStatusInterval{250};
/// Erases the line that the cursor stands in.
constexpr char kEraseLine[] = "\r\x1B[K";

std::string ToJson(const std::string& path, const recording::VerifyReport& report) {
    std::string json = "{\"file\":";
    recording::AppendJsonText(json, path);
    json += ",\"complete\":" + std::string(report.is_complete ? "true" : "false");
    json += ",\"lines\":" + std::to_string(report.lines);
    json += ",\"chunks\":" + std::to_string(report.chunks);
    json += ",\"bytes\":" + std::to_string(report.bytes) + ",\"cut_off\":";
    recording::AppendJsonText(json, report.cut_off);
    json += ",\"findings\":[";
    for (std::size_t i = 0; i < report.findings.size(); ++i) {
        json += i > 0 ? "," : "";
        recording::AppendJsonText(json, report.findings[i]);
    }
    return json + "]}";
}

}  // namespace

RecordReport::RecordReport(const RecordOptions& options)
    : m_is_quiet(options.quiet),
      m_is_json(options.json),
      m_has_status(!options.quiet && !options.json && platform::StandardErrorIsTerminal()) {}

void RecordReport::ClearStatus() {
    if (m_is_shown) {
        std::fputs(kEraseLine, stderr);
        m_is_shown = false;
    }
}

void RecordReport::Say(const std::string& line) {
    if (m_is_quiet) {
        return;
    }
    ClearStatus();
    std::fprintf(stderr, "wavo_record: %s\n", line.c_str());
    std::fflush(stderr);
}

void RecordReport::ShowStatus(const Recorder& recorder) {
    const Clock::time_point now = Clock::now();
    if (!m_has_status || (m_is_shown && now < m_due)) {
        return;
    }
    m_due = now + kStatusInterval;
    m_is_shown = true;
    std::fprintf(stderr, "%s%s", kEraseLine, recorder.StatusLine().c_str());
    std::fflush(stderr);
}

ExitCode RecordReport::End(const RecordOutcome& outcome) {
    ClearStatus();
    const bool has_failed = outcome.exit_code == ExitCode::kCouldNot;
    if (has_failed) {
        std::fprintf(stderr, "wavo_record: %s\n", outcome.reason.c_str());
    }
    if (m_is_json) {
        std::printf("%s\n", recorder::ToJson(outcome).c_str());
        std::fflush(stdout);
    } else if (!m_is_quiet) {
        std::fprintf(stderr, "wavo_record: %s%" PRIu64 " lines, %" PRIu64 " lost, in %zu files\n",
                     has_failed ? "" : (outcome.reason + ": ").c_str(), outcome.lines, outcome.lost,
                     outcome.files.size());
    }
    return outcome.exit_code;
}

ExitCode Verify(const RecordOptions& options) {
    const auto report = recording::VerifyRecording(options.verify, nullptr);
    if (!report) {
        std::fprintf(stderr, "wavo_record: %s\n", report.Why().text.c_str());
        return ExitCode::kCouldNot;
    }
    if (options.json) {
        std::printf("%s\n", ToJson(options.verify, *report).c_str());
    } else if (!options.quiet) {
        for (const std::string& finding : report->findings) {
            std::printf("%s\n", finding.c_str());
        }
        if (!report->cut_off.empty()) {
            std::printf("%s\n", report->cut_off.c_str());
        }
        std::printf("%" PRIu64 " lines in %" PRIu64 " chunks, %" PRIu64 " bytes: %s\n",
                    report->lines, report->chunks, report->bytes,
                    report->findings.empty() ? "nothing is wrong" : "damaged");
    }
    return report->findings.empty() ? ExitCode::kComplete : ExitCode::kCouldNot;
}

}  // namespace wavo::recorder
