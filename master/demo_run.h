// One run of demo_master: plays a line source to the viewers and reports.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "master/demo_options.h"
#include "master/line_source.h"
#include "master/publisher.h"

namespace wavo::master {

/// How long so many lines take to be played.
std::chrono::duration<double> TimeOfLines(std::uint64_t lines, const DemoOptions& options);

class DemoRun {
 public:
    DemoRun(DemoOptions options, std::unique_ptr<LineSource> source);

    /// Plays until the end or a request to end. Returns the exit status.
    int Run();

 private:
    using Clock = std::chrono::steady_clock;

    bool StartPublishing();
    void Play();
    void StandStill();
    void PlayInTime();
    void PlayAtFullSpeed();
    bool PublishNext();
    void MakeFault();
    void Overrun();
    void Finish();
    void ShowStatus();
    [[nodiscard]] std::vector<AxisLimits> Limits() const;
    [[nodiscard]] Clock::time_point Deadline(std::uint64_t number) const;

    // Constant after construction.
    const DemoOptions m_options;
    const std::unique_ptr<LineSource> m_source;
    const bool m_needs_viewer;
    std::uint64_t m_end;  ///< number of the line that is not played any more

    // State.
    std::unique_ptr<MasterPublisher> m_publisher;
    std::vector<double> m_line;
    std::uint64_t m_next = 0;        ///< number of the next line
    std::uint64_t m_seen_lines = 0;  ///< published while a viewer was connected
    bool m_fault_made = false;
    bool m_abandoned = false;  ///< the last viewer disconnected or vanished
    bool m_standing_still = true;
    std::uint64_t m_timed_from = 0;                 ///< line that m_time_origin belongs to
    Clock::time_point m_time_origin;                ///< set where m_standing_still ends
    std::optional<Clock::time_point> m_status_due;  ///< of the next status; nothing: none was shown
};

}  // namespace wavo::master
