// Where the events and gaps of a recording stand in a row of columns, each column once: painting
// them costs as much as there are columns, however many they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

#include "source/history.h"

namespace wavo {

class OpenRecording;

/// The column, of so many, that a line of a range stands in. Lines beside it stand at its ends.
[[nodiscard]] int ColumnOfLine(const LineRange& lines, int columns, std::int64_t line);

class RecordingMarks {
 public:
    /// First and last column of a gap.
    using Columns = std::pair<int, int>;

    /// Finds them anew if there are others, or other columns.
    void Renew(OpenRecording& recording, const LineRange& lines, int columns);

    /// Ascending.
    [[nodiscard]] const std::vector<int>& Events() const { return m_events; }
    /// Ascending; they do not touch.
    [[nodiscard]] const std::vector<Columns>& Gaps() const { return m_gaps; }

 private:
    /// Number and version of the recording, its events, lines and columns.
    using Of =
        std::tuple<std::uint64_t, std::uint64_t, std::size_t, std::int64_t, std::int64_t, int>;

    Of m_of{};
    std::vector<int> m_events;
    std::vector<Columns> m_gaps;
};

}  // namespace wavo
