// Which lines are written, and into which file: all of them, or those around the triggers of
// graphs.
//
// Pure: neither a master nor a disk stands behind it.
#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "recorder/line_block.h"
#include "recorder/record_sink.h"
#include "recorder/trigger_watch.h"
#include "recording/recording_event.h"

namespace wavo::recorder {

struct PlanOptions {
    std::vector<WavoGraph> graphs;  ///< with triggers; none: everything is written
    std::optional<double> before;   ///< seconds; nothing: as the graph has it
    std::optional<double> after;
    bool repeat = false;
    double split = 0.0;  ///< seconds per file; 0: one file
    /// Ends with this line, and after so many lines.
    std::uint64_t end_line = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t lines = std::numeric_limits<std::uint64_t>::max();
};

class RecordPlan {
 public:
    /// Most memory that the lines before a trigger may take, bytes.
    static constexpr double kMostHistory = 1073741824.0;

    /// `sink` is not owned and outlives this object.
    RecordPlan(PlanOptions options, const std::vector<std::string>& axis_names, double cycle_time,
               RecordSink& sink);

    /// Takes the next lines; missing ones before them are a gap.
    void Take(LineBlock block);
    /// Takes an event that belongs to the next line.
    void TakeEvent(const recording::Event& event);
    /// Ends the file that is being written.
    void Finish();

    /// Nothing more will be written.
    [[nodiscard]] bool IsDone() const { return m_is_done; }
    [[nodiscard]] bool IsWriting() const { return m_is_writing; }
    /// Lines that were given to the sink, and those of them that it could not take.
    [[nodiscard]] std::uint64_t LinesWritten() const { return m_lines_written; }
    [[nodiscard]] std::uint64_t LinesDropped() const { return m_lines_dropped; }
    /// Triggers of axes that are not there.
    [[nodiscard]] const std::vector<std::string>& UnknownTriggers() const {
        return m_watch.Unknown();
    }
    /// Seconds of history that are kept, when that is less than asked for.
    [[nodiscard]] std::optional<double> ShortenedHistory() const { return m_shortened_history; }

 private:
    [[nodiscard]] std::uint64_t LinesOf(double seconds) const;
    void LimitHistory(double seconds, std::size_t axes);
    void TakeWatched(const LineBlock& block);
    void Fire(const Firing& firing, const LineBlock& block, std::size_t& written);
    void BeginRecording(std::uint64_t first);
    void KeepHistory(const LineBlock& block);
    void WriteHistory(std::uint64_t from);
    /// Writes lines, into as many files as they need.
    void Write(const LineBlock& block, std::uint64_t from, std::uint64_t to, bool is_history);
    void BeginFile(std::uint64_t first);
    void EndFile();

    const PlanOptions m_options;
    const double m_cycle_time;
    RecordSink& m_sink;
    TriggerWatch m_watch;
    const bool m_is_armed;  // by triggers
    std::uint64_t m_history_lines = 0;
    std::optional<double> m_shortened_history;

    bool m_is_done = false;
    bool m_is_writing = false;  // a recording, in one file or several
    bool m_file_is_open = false;
    std::uint64_t m_file_end = 0;       // line that the next file begins with
    std::uint64_t m_recording_end = 0;  // line that ends what a trigger began
    std::uint64_t m_next_line = 0;
    std::uint64_t m_lines_written = 0;
    std::uint64_t m_lines_dropped = 0;
    std::uint64_t m_dropped_now = 0;  // since lines were last taken
    std::deque<LineBlock> m_history;
    std::deque<recording::Event> m_events;  // of the history
};

}  // namespace wavo::recorder
