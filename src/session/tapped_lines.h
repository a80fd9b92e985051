// Some columns of the lines as they come, whatever graphs show: kept for as long as a test needs
// them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "session/line_tap.h"
#include "source/history.h"

namespace wavo {

class TappedLines final : public LineTap {
 public:
    /// So many lines are kept; of more the oldest ones go.
    static constexpr std::int64_t kMost = std::int64_t{1} << 19;

    /// Names of the columns, one at least.
    explicit TappedLines(std::vector<std::string> columns);

    [[nodiscard]] const std::vector<std::string>& Columns() const { return m_columns; }
    [[nodiscard]] LineRange Lines() const;
    /// Values of successive lines of a column, NaN for those that are not there. REQUIRES: the
    /// column is one of them.
    void Read(std::size_t column, std::int64_t first, std::span<double> values) const;
    /// Lines before this one are not needed any more.
    void KeepFrom(std::int64_t line);

    // LineTap
    void TakeAxes(const std::vector<std::string>& names) override;
    void TakeLines(std::int64_t first, const ValueBatch& batch) override;
    void BeginAnew() override;

 private:
    [[nodiscard]] std::size_t Count() const { return m_values.front().size() - m_dropped; }
    void MakeRoom(std::size_t count);

    std::vector<std::string> m_columns;
    std::vector<std::size_t> m_places;          ///< of the columns in a line
    std::vector<std::vector<double>> m_values;  ///< per column; never beyond what is reserved
    std::size_t m_dropped = 0;                  ///< values at the front that are not needed
    std::int64_t m_first = 0;                   ///< line of the first that is
};

}  // namespace wavo
