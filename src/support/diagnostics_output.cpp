#include "support/diagnostics_output.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <utility>

#include "platform/folders.h"
#include "platform/last_error.h"
#include "support/log_file.h"
#include "support/repeat_folder.h"
#include "support/report_sink.h"

namespace wavo::diagnostics {

namespace {

constexpr std::size_t kDefaultSizeLimit = std::size_t{4} * 1024 * 1024;

struct Output {
    std::string folder;
    std::size_t size_limit = kDefaultSizeLimit;
    bool echo = false;
    Observer observer;
    bool observing = false;
    LogFaultHandler log_fault_handler;
    bool trace_is_lost = false;
    bool error_log_is_lost = false;
    RepeatFolder error_trace_repeats;
    RepeatFolder error_log_repeats;
    bool has_ended = false;  ///< nobody would write a count any more
};

void WriteLastCounts() noexcept;

Output& TheOutput() {
    // Never destroyed: destructors of other statics may still report.
    static Output& output = *new Output;
    [[maybe_unused]] static const bool ends = std::atexit(WriteLastCounts) == 0;
    return output;
}

/// UTC in ISO 8601 with milliseconds.
std::string TimeText(std::chrono::system_clock::time_point time) {
    using namespace std::chrono;
    const auto whole = floor<milliseconds>(time);
    const auto day = floor<days>(whole);
    const year_month_day date(day);
    const hh_mm_ss clock(whole - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()),
                  static_cast<int>(clock.subseconds().count()));
    return text.data();
}

std::string Kind(Service service, unsigned level) {
    switch (service) {
        case Service::kTrace:
            return "trace " + std::to_string(level);
        case Service::kErrorTrace:
            return "error-trace";
        case Service::kErrorLog:
            return "error-log";
    }
    return {};
}

/// Appends with control characters in words: one report stays one line.
void AppendEscaped(std::string_view text, std::string* line) {
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x20 && code != 0x7F) {
            *line += c;
        } else if (c == '\n') {
            *line += "\\n";
        } else if (c == '\r') {
            *line += "\\r";
        } else if (c == '\t') {
            *line += "\\t";
        } else {
            constexpr std::string_view kDigits = "0123456789abcdef";
            *line += {'\\', 'x', kDigits[code >> 4], kDigits[code & 15]};
        }
    }
}

std::string LineOf(const Report& report, unsigned level,
                   std::chrono::system_clock::time_point time) {
    std::string line = TimeText(time) + " " + Kind(report.service, level) + " ";
    AppendEscaped(report.source, &line);
    line += "(" + std::to_string(report.line) + "): ";
    AppendEscaped(report.text, &line);
    line += "\n";
    return line;
}

/// The services whose reports are folded. Traces are not: they tell what happened when.
constexpr std::array kFoldedServices{Service::kErrorTrace, Service::kErrorLog};

/// Null for a service whose reports are not folded.
RepeatFolder* RepeatsOf(Service service) {
    switch (service) {
        case Service::kTrace:
            return nullptr;
        case Service::kErrorTrace:
            return &TheOutput().error_trace_repeats;
        case Service::kErrorLog:
            return &TheOutput().error_log_repeats;
    }
    return nullptr;
}

std::string_view FileName(Service service) {
    return service == Service::kErrorLog ? "wavo_error.log" : "wavo_trace.log";
}

/// For all services that share the log of this one.
void BeginRepeatsAnew(Service log) {
    for (const Service service : kFoldedServices) {
        if (FileName(service) == FileName(log)) {
            RepeatsOf(service)->BeginAnew();
        }
    }
}

std::string LogPath(Service service) {
    return TheOutput().folder + platform::PathSeparator() + std::string(FileName(service));
}

void TellLogFault(Service service) {
    const LogFaultHandler handler = TheOutput().log_fault_handler;  // it may set another one
    if (handler) {
        handler(LogPath(service));
    }
}

void WriteToLog(Service service, const std::string& line) {
    Output& output = TheOutput();
    bool& is_lost = service == Service::kErrorLog ? output.error_log_is_lost : output.trace_is_lost;
    const bool was_lost = is_lost;
    // Before anybody is told: what they report themselves is not told again.
    is_lost = !AppendToLog(LogPath(service), line, output.size_limit);
    if (is_lost != was_lost) {
        BeginRepeatsAnew(service);
    }
    if (is_lost && !was_lost) {
        TellLogFault(service);
    }
}

void WriteLine(const Report& report, unsigned level, std::chrono::system_clock::time_point time) {
    const Output& output = TheOutput();
    const std::string line = LineOf(report, level, time);
    if (!output.folder.empty()) {
        WriteToLog(report.service, line);
    }
    if (output.echo) {
        std::fwrite(line.data(), 1, line.size(), stderr);
    }
}

void WriteLines(Service service, const std::vector<RepeatFolder::Line>& lines) {
    for (const RepeatFolder::Line& line : lines) {
        WriteLine({service, line.source, line.line, line.text}, 0, line.time);
    }
}

void Write(const Report& report, unsigned level, std::chrono::system_clock::time_point time) {
    Output& output = TheOutput();
    if (output.folder.empty() && !output.echo) {
        return;
    }
    RepeatFolder* const repeats = output.has_ended ? nullptr : RepeatsOf(report.service);
    if (repeats == nullptr) {
        WriteLine(report, level, time);
        return;
    }
    WriteLines(report.service, repeats->Add(report.source, report.line, report.text, time));
}

void WriteAllCounts() noexcept {
    const platform::LastErrorKeeper keep;
    try {
        for (const Service service : kFoldedServices) {
            WriteLines(service, RepeatsOf(service)->FlushAll());
        }
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): reports never fail
    }
}

/// The end of the process.
void WriteLastCounts() noexcept {
    WriteAllCounts();
    TheOutput().has_ended = true;
}

void Observe(const Report& report) {
    Output& output = TheOutput();
    // What an observer reports itself is written, but not observed again.
    if (!output.observer || output.observing) {
        return;
    }
    output.observing = true;
    const Observer observer = output.observer;  // it may set another one
    try {
        observer(report);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): reports never fail
    }
    output.observing = false;
}

}  // namespace

void SetLogFolder(const std::string& folder) {
    WriteAllCounts();
    Output& output = TheOutput();
    for (const Service service : kFoldedServices) {
        RepeatsOf(service)->BeginAnew();
    }
    output.folder = folder;
    output.trace_is_lost = false;
    output.error_log_is_lost = false;
}

void SetLogSizeLimit(std::size_t bytes) {
    TheOutput().size_limit = bytes;
}

void SetEcho(bool on) {
    TheOutput().echo = on;
}

void FlushRepeats() noexcept {
    for (const Service service : kFoldedServices) {
        RepeatFolder& repeats = *RepeatsOf(service);
        if (!repeats.HasCounts()) {
            continue;
        }
        const platform::LastErrorKeeper keep;
        try {
            WriteLines(service, repeats.Flush(RepeatFolder::Clock::now()));
        } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): reports never fail
        }
    }
}

void SetObserver(Observer observer) {
    TheOutput().observer = std::move(observer);
}

void SetLogFaultHandler(LogFaultHandler handler) {
    Output& output = TheOutput();
    output.log_fault_handler = std::move(handler);
    if (output.trace_is_lost) {
        TellLogFault(Service::kTrace);
    }
    if (output.error_log_is_lost) {
        TellLogFault(Service::kErrorLog);
    }
}

std::string LostErrorLog() {
    return TheOutput().error_log_is_lost ? LogPath(Service::kErrorLog) : std::string();
}

void Emit(const Report& report, unsigned level,
          std::chrono::system_clock::time_point time) noexcept {
    const platform::LastErrorKeeper keep;
    try {
        Write(report, level, time);
        Observe(report);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): reports never fail
    }
}

}  // namespace wavo::diagnostics
