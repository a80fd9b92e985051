#include "recorder/record_plan.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace wavo::recorder {

using recording::Event;

RecordPlan::RecordPlan(PlanOptions options, const std::vector<std::string>& axis_names,
                       double cycle_time, RecordSink& sink)
    : m_options(std::move(options)),
      m_cycle_time(cycle_time),
      m_sink(sink),
      m_watch(m_options.graphs, axis_names, cycle_time),
      m_is_armed(!m_options.graphs.empty()) {
    LimitHistory(m_options.before.value_or(m_watch.LongestStopRange()), axis_names.size());
}

std::uint64_t RecordPlan::LinesOf(double seconds) const {
    // Times are told in decimal fractions: 0.3 s of 0.1 s each are three lines.
    return static_cast<std::uint64_t>(std::ceil(seconds / m_cycle_time * (1.0 - 1e-12)));
}

void RecordPlan::LimitHistory(double seconds, std::size_t axes) {
    const double line = static_cast<double>(std::max<std::size_t>(axes, 1) * sizeof(double));
    const double most = kMostHistory / line * m_cycle_time;
    if (seconds > most) {
        m_shortened_history = most;
    }
    m_history_lines = LinesOf(std::min(seconds, most));
}

void RecordPlan::TakeEvent(const Event& event) {
    if (m_file_is_open) {
        m_sink.TakeEvent(event);
    } else if (m_is_armed) {
        m_events.push_back(event);
    }
}

void RecordPlan::Take(LineBlock block) {
    if (m_is_done || block.lines == 0) {
        return;
    }
    if (block.first != m_next_line) {
        m_watch.BeginAnew();
    }
    m_next_line = block.End();
    const bool is_end = block.End() >= m_options.end_line;
    if (block.first < m_options.end_line) {
        if (is_end) {
            block = block.Part(block.first, m_options.end_line);
        }
        if (m_is_armed) {
            TakeWatched(block);
        } else {
            m_is_writing = true;
            Write(block, block.first, block.End(), false);
        }
    }
    if (is_end) {
        Finish();
    }
}

void RecordPlan::TakeWatched(const LineBlock& block) {
    m_watch.Take(block);
    std::size_t written = 0;  // lines of the block, or passed over
    for (std::size_t i = 0; i < block.lines && !m_is_done; ++i) {
        const std::uint64_t line = block.first + i;
        if (m_is_writing && line >= m_recording_end) {
            Write(block, block.first + written, std::min(line, m_recording_end), false);
            EndFile();
            m_is_writing = false;
            m_is_done = !m_options.repeat;
            if (m_is_done) {
                return;
            }
            m_watch.Arm();
        }
        for (const Firing& firing : m_watch.Fire(i)) {
            Fire(firing, block, written);
        }
    }
    if (m_is_writing && !m_is_done) {
        Write(block, block.first + written, block.End(), false);
    }
    KeepHistory(block);
}

void RecordPlan::Fire(const Firing& firing, const LineBlock& block, std::size_t& written) {
    const std::uint64_t behind =
        LinesOf(m_options.after.value_or(firing.is_stop ? 0.0 : firing.time_range));
    const std::uint64_t end = firing.line + behind + (firing.is_stop ? 1 : 0);
    if (!m_is_writing) {
        const std::uint64_t before =
            std::min(m_history_lines,
                     LinesOf(m_options.before.value_or(firing.is_stop ? firing.time_range : 0.0)));
        const std::uint64_t from = firing.line - std::min(before, firing.line);
        m_is_writing = true;
        m_recording_end = end;
        WriteHistory(from);
        written = static_cast<std::size_t>(std::max(from, block.first) - block.first);
    }
    m_recording_end = std::max(m_recording_end, end);
    // What is before the event in the file comes before it here.
    Write(block, block.first + written, firing.line, false);
    written = static_cast<std::size_t>(firing.line - block.first);
    if (!m_file_is_open && !m_is_done) {
        BeginFile(firing.line);
    }
    TakeEvent({recording::kEventTrigger, firing.line, 0, firing.text});
}

void RecordPlan::KeepHistory(const LineBlock& block) {
    if (m_history_lines == 0) {
        m_events.clear();
        return;
    }
    m_history.push_back(block);
    const std::uint64_t first = block.End() - std::min(m_history_lines, block.End());
    while (!m_history.empty() && m_history.front().End() <= first) {
        m_history.pop_front();
    }
    while (!m_events.empty() && m_events.front().line < first) {
        m_events.pop_front();
    }
}

void RecordPlan::WriteHistory(std::uint64_t from) {
    for (const LineBlock& block : m_history) {
        Write(block, std::max(from, block.first), block.End(), true);
    }
    for (const Event& event : m_events) {
        if (m_file_is_open && event.line >= from) {
            m_sink.TakeEvent(event);
        }
    }
    m_events.clear();
}

void RecordPlan::Write(const LineBlock& block, std::uint64_t from, std::uint64_t to,
                       bool is_history) {
    while (from < to && !m_is_done) {
        if (m_file_is_open && from >= m_file_end) {
            EndFile();
        }
        if (!m_file_is_open) {
            BeginFile(from);
        }
        const std::uint64_t end = std::min(
            {to, m_file_end, from + std::min(m_options.lines - m_lines_written, to - from)});
        if (m_sink.TakeLines(block.Part(from, end), is_history)) {
            if (m_dropped_now > 0) {
                m_sink.TakeEvent({recording::kEventDiskSlow, from, std::exchange(m_dropped_now, 0),
                                  "the disk was too slow"});
            }
        } else {
            m_lines_dropped += end - from;
            m_dropped_now += end - from;
        }
        m_lines_written += end - from;
        from = end;
        if (m_lines_written >= m_options.lines) {
            Finish();
        }
    }
}

void RecordPlan::BeginFile(std::uint64_t first) {
    m_sink.BeginFile();
    m_file_is_open = true;
    m_file_end = m_options.split > 0.0
                     ? first + std::max<std::uint64_t>(LinesOf(m_options.split), 1)
                     : std::numeric_limits<std::uint64_t>::max();
}

void RecordPlan::EndFile() {
    if (m_file_is_open) {
        m_sink.EndFile();
        m_file_is_open = false;
    }
}

void RecordPlan::Finish() {
    EndFile();
    m_is_writing = false;
    m_is_done = true;
}

}  // namespace wavo::recorder
