#include "session/tapped_lines.h"

#include <algorithm>
#include <limits>

namespace wavo {

namespace {

constexpr std::size_t kNoColumn = std::numeric_limits<std::size_t>::max();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
/// What is dropped at the front goes when so much is in use.
constexpr auto kRoom = static_cast<std::size_t>(2 * TappedLines::kMost);

}  // namespace

TappedLines::TappedLines(std::vector<std::string> columns)
    : m_columns(std::move(columns)),
      m_places(m_columns.size(), kNoColumn),
      m_values(m_columns.size()) {
    for (std::vector<double>& column : m_values) {
        column.reserve(kRoom);
    }
}

LineRange TappedLines::Lines() const {
    return {m_first, m_first + static_cast<std::int64_t>(Count())};
}

void TappedLines::Read(std::size_t column, std::int64_t first, std::span<double> values) const {
    const LineRange lines = Lines();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::int64_t line = first + static_cast<std::int64_t>(i);
        values[i] = line >= lines.begin && line < lines.end
                        ? m_values[column][m_dropped + static_cast<std::size_t>(line - m_first)]
                        : kNone;
    }
}

void TappedLines::KeepFrom(std::int64_t line) {
    const LineRange lines = Lines();
    const std::int64_t from = std::clamp(line, lines.begin, lines.end);
    m_dropped += static_cast<std::size_t>(from - m_first);
    m_first = from;
}

void TappedLines::TakeAxes(const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const auto found = std::ranges::find(names, m_columns[i]);
        m_places[i] =
            found == names.end() ? kNoColumn : static_cast<std::size_t>(found - names.begin());
    }
}

/// For `count` more lines, at most kMost.
void TappedLines::MakeRoom(std::size_t count) {
    const LineRange lines = Lines();
    KeepFrom(lines.end + static_cast<std::int64_t>(count) - kMost);
    if (m_values.front().size() + count <= kRoom) {
        return;
    }
    for (std::vector<double>& column : m_values) {
        column.erase(column.begin(), column.begin() + static_cast<std::ptrdiff_t>(m_dropped));
    }
    m_dropped = 0;
}

void TappedLines::TakeLines(std::int64_t first, const ValueBatch& batch) {
    const auto count = static_cast<std::int64_t>(batch.count);
    const std::int64_t missing = first - Lines().end;
    if (Count() == 0 || missing < 0 || missing + count > kMost) {
        BeginAnew();
        m_first = first;
    } else if (missing > 0) {
        MakeRoom(static_cast<std::size_t>(missing));
        for (std::vector<double>& column : m_values) {
            column.resize(column.size() + static_cast<std::size_t>(missing), kNone);
        }
    }
    const std::int64_t skipped = std::max<std::int64_t>(0, count - kMost);
    m_first += Count() == 0 ? skipped : 0;
    MakeRoom(static_cast<std::size_t>(count - skipped));
    for (std::size_t c = 0; c < m_values.size(); ++c) {
        for (auto i = static_cast<std::size_t>(skipped); i < batch.count; ++i) {
            m_values[c].push_back(
                m_places[c] < batch.axes ? batch.lines[i * batch.axes + m_places[c]] : kNone);
        }
    }
}

void TappedLines::BeginAnew() {
    for (std::vector<double>& column : m_values) {
        column.clear();
    }
    m_dropped = 0;
}

}  // namespace wavo
