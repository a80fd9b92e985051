// What wavo_record tells on the terminal.
#pragma once

#include <chrono>
#include <string>

#include "recorder/record_options.h"
#include "recorder/recorder.h"

namespace wavo::recorder {

class RecordReport {
 public:
    explicit RecordReport(const RecordOptions& options);

    /// A line on standard error, unless quiet.
    void Say(const std::string& line);

    /// Moves the line that shows how far it is, some times a second, where a person looks at it.
    void ShowStatus(const Recorder& recorder);

    /// Tells what became of the run; returns its exit code.
    ExitCode End(const RecordOutcome& outcome);

 private:
    using Clock = std::chrono::steady_clock;

    void ClearStatus();

    const bool m_is_quiet;
    const bool m_is_json;
    const bool m_has_status;
    bool m_is_shown = false;
    Clock::time_point m_due{};
};

/// Checks the recording that --verify names and tells what is wrong with it.
ExitCode Verify(const RecordOptions& options);

}  // namespace wavo::recorder
