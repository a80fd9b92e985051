// The smallest and largest finite value of some lines, where there are infinite ones among them.
//
// What a history tells of a stretch with infinite values says nothing of its finite ones: such a
// stretch is cut into parts until its values are read. That takes as many steps as there are
// infinite values; the search goes on where it was when the history has let it read no further.
#pragma once

#include <optional>
#include <vector>

#include "graph/values/min_max_pyramid.h"
#include "source/history.h"

namespace wavo {

class FiniteSearch {
 public:
    /// `history` is not owned and outlives this object.
    explicit FiniteSearch(History& history) : m_history(history) {}

    /// Searches in these lines; goes on while they and what the history told of them are the same.
    /// False when the history has spent what a drawing may read.
    bool GoOn(const LineRange& lines);
    /// What was found so far.
    [[nodiscard]] const MinMax& Found() const { return m_found; }

 private:
    bool TakePiece(const LineRange& piece);
    bool TakeOutlined(const std::vector<std::int64_t>& bounds);
    void TakeAnswered(const std::vector<std::int64_t>& bounds);
    bool LookClosely(const LineRange& lines, ColumnOutline& part);
    void TakeValues(const LineRange& lines);

    History& m_history;
    std::optional<LineRange> m_lines;  ///< none before the first search
    HistoryMoment m_since;             ///< when it began
    std::vector<LineRange> m_rest;
    MinMax m_found;
};

}  // namespace wavo
