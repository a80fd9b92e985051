#include "view/recording_marks.h"

#include <algorithm>
#include <cmath>

#include "session/open_recording.h"

namespace wavo {

int ColumnOfLine(const LineRange& lines, int columns, std::int64_t line) {
    const double steps = std::max(1.0, static_cast<double>(lines.Count() - 1));
    const double part = static_cast<double>(line - lines.begin) / steps;
    return static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * (columns - 1)));
}

void RecordingMarks::Renew(OpenRecording& recording, const LineRange& lines, int columns) {
    recording::RecordingReader& reader = recording.Reader();
    const std::vector<recording::Event>& events = reader.Events();
    const Of of{recording.Number(), reader.Versions().lines,
                events.size(),      lines.begin,
                lines.end,          columns};
    if (std::exchange(m_of, of) == of) {
        return;
    }
    const auto column_of = [&](std::uint64_t line) {
        return ColumnOfLine(lines, columns, static_cast<std::int64_t>(line));
    };
    m_events.clear();
    for (const recording::Event& event : events) {  // in the order of their lines
        if (const int column = column_of(event.line);
            m_events.empty() || m_events.back() != column) {
            m_events.push_back(column);
        }
    }
    m_gaps.clear();
    for (const recording::LineSpan& gap : reader.Gaps()) {
        const Columns at{column_of(gap.first), column_of(gap.end)};
        if (!m_gaps.empty() && at.first <= m_gaps.back().second + 1) {
            m_gaps.back().second = std::max(m_gaps.back().second, at.second);
        } else {
            m_gaps.push_back(at);
        }
    }
}

}  // namespace wavo
