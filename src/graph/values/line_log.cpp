#include "graph/values/line_log.h"

#include <algorithm>

namespace wavo {

void LineLog::Expect(std::uint64_t sequence, std::int64_t line) {
    m_told = true;
    if (LineFrom(m_begins.back(), sequence) == line) {
        return;
    }
    if (sequence == 0) {
        m_begins.back().line = line;
        m_first_line = line;
        return;
    }
    Begin next{sequence, line, false};
    if (m_begins.back().sequence == sequence && m_begins.size() > 1) {
        next.derivation = m_begins.back().derivation;
        m_begins.pop_back();
    }
    const std::int64_t back_by = LineFrom(m_begins.back(), sequence) - line;
    if (back_by > 0) {
        for (Begin& begin : m_begins) {
            begin.line -= back_by;
        }
        m_first_line -= back_by;
    }
    if (back_by < 0 || next.derivation) {
        m_begins.push_back(next);
    }
}

void LineLog::BeginDerivation(std::uint64_t sequence) {
    if (m_begins.back().sequence == sequence) {
        m_begins.back().derivation = true;
    } else {
        m_begins.push_back({sequence, LineFrom(m_begins.back(), sequence), true});
    }
}

void LineLog::ForgetBefore(std::uint64_t sequence) {
    const auto kept = std::find_if(m_begins.begin() + 1, m_begins.end(),
                                   [&](const Begin& begin) { return begin.sequence > sequence; });
    m_begins.erase(m_begins.begin(), kept - 1);
}

std::int64_t LineLog::LineOf(std::uint64_t sequence) const {
    const auto after = std::find_if(m_begins.begin() + 1, m_begins.end(),
                                    [&](const Begin& begin) { return begin.sequence > sequence; });
    return LineFrom(*(after - 1), sequence);
}

std::vector<LineLog::Run> LineLog::Runs(std::uint64_t sequence, std::uint64_t end) const {
    std::vector<Run> runs;
    while (sequence < end) {
        const auto after =
            std::find_if(m_begins.begin() + 1, m_begins.end(),
                         [&](const Begin& begin) { return begin.sequence > sequence; });
        const std::uint64_t run_end =
            after == m_begins.end() ? end : std::min(end, after->sequence);
        const std::int64_t line = LineFrom(*(after - 1), sequence);
        Run* const last = runs.empty() ? nullptr : &runs.back();
        if (last != nullptr && last->line + static_cast<std::int64_t>(last->count) == line) {
            last->count += run_end - sequence;
        } else {
            runs.push_back({sequence, line, run_end - sequence});
        }
        sequence = run_end;
    }
    return runs;
}

std::vector<LineLog::Run> LineLog::UnderivedRuns(std::uint64_t sequence, std::uint64_t end,
                                                 std::uint64_t order, bool with_first) const {
    std::vector<Run> runs;
    for (auto begin = m_begins.begin(); begin != m_begins.end(); ++begin) {
        if (!begin->derivation || (begin->sequence == 0 && !with_first)) {
            continue;
        }
        const auto next = std::find_if(begin + 1, m_begins.end(),
                                       [](const Begin& later) { return later.derivation; });
        const std::uint64_t next_sequence = next == m_begins.end() ? end : next->sequence;
        const std::uint64_t from = std::max(begin->sequence, sequence);
        const std::uint64_t to = std::min({begin->sequence + order, next_sequence, end});
        if (from < to) {
            const std::vector<Run> parts = Runs(from, to);
            runs.insert(runs.end(), parts.begin(), parts.end());
        }
    }
    return runs;
}

}  // namespace wavo
