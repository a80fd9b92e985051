// Where in the past of some streams a condition becomes true: one of them passes its limit while
// none of them did in the line before.
//
// Extremes are asked first and values only where they leave a doubt: the cost does not grow with
// the number of lines, where histories have levels of them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "graph/values/trigger_test.h"
#include "source/history.h"

namespace wavo {

/// True in the lines whose value is beyond the limit; not in those without a value.
struct ConditionTerm {
    History* history = nullptr;  ///< not owned
    TriggerSide side{};
    double limit = 0.0;
};

class ConditionSearch {
 public:
    /// Called between two questions with the line that was come to; false ends the search.
    using GoOn = std::function<bool(std::int64_t line)>;

    /// Looks through `lines`, and at no more than `piece` of them in one question. The condition is
    /// that of any term. REQUIRES: histories outlive the search; there is a term; piece > 0.
    ConditionSearch(std::vector<ConditionTerm> terms, const LineRange& lines, std::int64_t piece,
                    GoOn go_on)
        : m_terms(std::move(terms)), m_lines(lines), m_piece(piece), m_go_on(std::move(go_on)) {}

    /// The first line from `from` on where the condition becomes true; the very first line counts
    /// when it is true there. Nothing when there is none, or the search was ended.
    std::optional<std::int64_t> Next(std::int64_t from);
    /// The last line before `before` where it becomes true.
    std::optional<std::int64_t> Previous(std::int64_t before);

    [[nodiscard]] bool WasEnded() const { return m_was_ended; }

 private:
    enum class Truth { kNever, kSometimes, kAlways };
    enum class Direction { kForward, kBackward };

    [[nodiscard]] bool IsTrueAt(std::int64_t line);
    /// The first line, or the last one when looking backward, where the condition is `wanted`.
    std::optional<std::int64_t> Find(const LineRange& lines, bool wanted, Direction direction);
    std::optional<std::int64_t> FindInPiece(const LineRange& lines, bool wanted,
                                            Direction direction);
    std::optional<std::int64_t> FindInValues(const LineRange& lines, bool wanted,
                                             Direction direction);
    [[nodiscard]] std::vector<std::uint8_t> TruthOfLines(const LineRange& lines);
    [[nodiscard]] std::vector<Truth> TruthOfColumns(std::span<const std::int64_t> bounds);

    const std::vector<ConditionTerm> m_terms;
    const LineRange m_lines;
    const std::int64_t m_piece;
    const GoOn m_go_on;
    bool m_was_ended = false;
};

}  // namespace wavo
