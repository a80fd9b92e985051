// One run of wavo_record: from the master's lines to recordings on the disk.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "recorder/disk_writer.h"
#include "recorder/master_link.h"
#include "recorder/notice/notice_board.h"
#include "recorder/record_options.h"
#include "recorder/record_plan.h"

namespace wavo::recorder {

enum class ExitCode : int {
    kComplete = 0,
    kCouldNot = 1,
    kWrongArguments = 2,
    kWithLosses = 3,
};

/// What became of a run.
struct RecordOutcome {
    ExitCode exit_code = ExitCode::kComplete;
    std::string reason;  ///< why it ended, in words
    std::vector<std::string> files;
    std::vector<std::string> removed;
    std::uint64_t lines = 0;  ///< on the device
    std::uint64_t lost = 0;   ///< lines that the master could not store, or the disk not take
    std::uint64_t gaps = 0;   ///< interruptions of any kind
    std::uint64_t bytes = 0;
    double seconds = 0.0;  ///< from the first line on
};

/// The outcome as a JSON object, without a line end.
std::string ToJson(const RecordOutcome& outcome);

class Recorder final : private LinkListener {
 public:
    /// What is said while it runs, a line at a time without its end.
    using Say = std::function<void(const std::string&)>;

    Recorder(RecordOptions options, std::string program, Say say);
    ~Recorder() override;

    /// Reads the graphs and makes the window. False when it could not; Outcome tells why.
    bool Start();

    /// Waits for what comes, at most `timeout`. False when the run has ended.
    bool Serve(std::chrono::milliseconds timeout);

    /// Ends the run: what was taken is written and the files are finished. `reason` in words.
    void Finish(const std::string& reason);

    [[nodiscard]] RecordOutcome Outcome() const;

    /// How it stands, for those who watch it.
    [[nodiscard]] Notice State() const;

    /// "00:01:23  332000 lines, 0 lost, 181.2 MB, 68.1 GB free".
    [[nodiscard]] std::string StatusLine() const;

    /// The recorder's window: a message to quit ends the run.
    [[nodiscard]] platform::WindowHandle window() const { return m_link.window(); }

 private:
    using Clock = std::chrono::steady_clock;

    void LinkBegan(const SourceDescription& lines, AxisLimitsSource& limits) override;
    void LinesCame(std::vector<double> values, std::size_t lines) override;
    void Interrupted(Interruption why) override;
    void ToldToQuit() override;

    bool ReadGraphs();
    /// `lines` came just now, the first ones.
    void BeginPlan(AxisLimitsSource& limits, std::size_t lines);
    [[nodiscard]] PlanOptions MakePlanOptions(double cycle_time) const;
    void EndPlan();
    /// The number of the first of `lines` that came just now, by the clock behind an interruption.
    std::uint64_t PlaceOf(std::size_t lines, Clock::time_point now);
    void TakeEventsBefore(std::uint64_t line);
    bool OpenWindow();
    void TellNews();
    /// Tells those who watch: at most once a second, or `now`.
    void ShowNotice(bool now);
    void CheckTimes();
    [[nodiscard]] double SecondsSinceFirst() const;
    void Fail(const std::string& reason);

    const RecordOptions m_options;
    const std::string m_program;
    const Say m_say;
    std::vector<WavoGraph> m_graphs;
    std::optional<recording::GraphFile> m_graph_file;
    MasterLink m_link;
    std::unique_ptr<NoticeBoard> m_board;
    std::optional<Clock::time_point> m_shown;  // on the board
    std::unique_ptr<DiskWriter> m_disk;
    std::unique_ptr<RecordPlan> m_plan;
    SourceDescription m_lines;  // of the master whose lines come
    AxisLimitsSource* m_limits = nullptr;
    bool m_plan_is_due = false;  // with the next lines
    std::optional<Clock::time_point> m_started;
    std::optional<Clock::time_point> m_first_lines;  // when they came
    Clock::time_point m_last_lines;
    std::uint64_t m_next_line = 0;
    std::uint64_t m_lines_before = 0;  // written by plans that ended
    struct Gap {
        Interruption why{};
        bool is_lost = false;  // lines that the master had
    };
    std::vector<Gap> m_gaps;  // before the next lines
    RecordOutcome m_outcome;
    std::size_t m_files_told = 0;
    std::size_t m_removed_told = 0;
    bool m_is_told_to_quit = false;
    bool m_has_failed = false;
    bool m_has_ended = false;
};

}  // namespace wavo::recorder
