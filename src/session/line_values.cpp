#include "session/line_values.h"

#include <algorithm>

#include "graph/values/missing_value.h"

namespace wavo {

std::vector<LineLog::Run> BufferValues::Underived() const {
    if (m_value.DerivationOrder() < 1) {
        return {};
    }
    const SampleRing& ring = m_value.Values();
    return m_value.Lines().UnderivedRuns(ring.FirstSequence(), ring.Appended(),
                                         static_cast<std::uint64_t>(m_value.DerivationOrder()),
                                         true);
}

bool BufferValues::Read(std::int64_t first, std::span<double> values) {
    m_history.Values(first, values);
    const std::int64_t end = first + static_cast<std::int64_t>(values.size());
    for (const LineLog::Run& run : Underived()) {
        const std::int64_t from = std::max(run.line, first);
        const std::int64_t to = std::min(run.line + static_cast<std::int64_t>(run.count), end);
        if (from < to) {
            std::fill(values.begin() + (from - first), values.begin() + (to - first), kNoValue);
        }
    }
    return true;
}

std::span<const double> BufferValues::InMemory(std::int64_t first, std::size_t count) const {
    const std::int64_t end = first + static_cast<std::int64_t>(count);
    for (const LineLog::Run& run : Underived()) {
        if (run.line < end && first < run.line + static_cast<std::int64_t>(run.count)) {
            return {};
        }
    }
    const SampleRing& ring = m_value.Values();
    for (const LineLog::Run& run : m_value.Lines().Runs(ring.FirstSequence(), ring.Appended())) {
        if (run.line <= first && end <= run.line + static_cast<std::int64_t>(run.count)) {
            const std::uint64_t sequence =
                run.sequence + static_cast<std::uint64_t>(first - run.line);
            const auto lying = ring.Range(sequence - ring.FirstSequence(), count).first;
            return lying.size() == count ? lying : std::span<const double>();
        }
    }
    return {};
}

}  // namespace wavo
