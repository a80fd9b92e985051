#include "session/line_values.h"

#include <algorithm>

#include "graph/values/missing_value.h"

namespace wavo {

bool BufferValues::Read(std::int64_t first, std::span<double> values) {
    m_history.Values(first, values);
    if (m_value.DerivationOrder() < 1) {
        return true;
    }
    const SampleRing& ring = m_value.Values();
    const auto order = static_cast<std::uint64_t>(m_value.DerivationOrder());
    const std::int64_t end = first + static_cast<std::int64_t>(values.size());
    for (const LineLog::Run& run :
         m_value.Lines().UnderivedRuns(ring.FirstSequence(), ring.Appended(), order, true)) {
        const std::int64_t from = std::max(run.line, first);
        const std::int64_t to = std::min(run.line + static_cast<std::int64_t>(run.count), end);
        if (from < to) {
            std::fill(values.begin() + (from - first), values.begin() + (to - first), kNoValue);
        }
    }
    return true;
}

}  // namespace wavo
