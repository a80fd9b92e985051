#include "graph/values/condition_search.h"

#include <algorithm>

namespace wavo {

namespace {

/// Columns of one question, and lines that are looked at one by one.
constexpr std::int64_t kSearchColumns = 64;
constexpr std::int64_t kSearchLines = 256;

std::vector<std::int64_t> SplitEvenly(const LineRange& lines, std::int64_t parts) {
    std::vector<std::int64_t> bounds;
    for (std::int64_t part = 0; part < parts; ++part) {
        bounds.push_back(lines.begin + lines.Count() / parts * part);
    }
    bounds.push_back(lines.end);
    return bounds;
}

}  // namespace

std::optional<std::int64_t> ConditionSearch::Next(std::int64_t from) {
    from = std::max(from, m_lines.begin);
    if (from > m_lines.begin && from < m_lines.end && IsTrueAt(from - 1)) {
        const std::optional<std::int64_t> end =
            Find({from, m_lines.end}, false, Direction::kForward);
        if (!end.has_value()) {
            return std::nullopt;
        }
        from = *end;
    }
    return Find({from, m_lines.end}, true, Direction::kForward);
}

std::optional<std::int64_t> ConditionSearch::Previous(std::int64_t before) {
    before = std::min(before, m_lines.end);
    const std::optional<std::int64_t> last =
        Find({m_lines.begin, before}, true, Direction::kBackward);
    if (!last.has_value()) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> false_before =
        Find({m_lines.begin, *last}, false, Direction::kBackward);
    return m_was_ended ? std::nullopt
                       : std::optional(false_before ? *false_before + 1 : m_lines.begin);
}

bool ConditionSearch::IsTrueAt(std::int64_t line) {
    return TruthOfLines({line, line + 1}).front() != 0;
}

std::optional<std::int64_t> ConditionSearch::Find(const LineRange& lines, bool wanted,
                                                  Direction direction) {
    const bool forward = direction == Direction::kForward;
    LineRange rest = lines;
    while (rest.Count() > 0) {
        LineRange piece = rest;
        if (forward) {
            piece.end = std::min(rest.end, rest.begin + m_piece);
            rest.begin = piece.end;
        } else {
            piece.begin = std::max(rest.begin, rest.end - m_piece);
            rest.end = piece.begin;
        }
        const std::optional<std::int64_t> found = FindInPiece(piece, wanted, direction);
        if (found.has_value() || m_was_ended) {
            return m_was_ended ? std::nullopt : found;
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> ConditionSearch::FindInPiece(const LineRange& lines, bool wanted,
                                                         Direction direction) {
    if (!m_go_on(lines.begin)) {
        m_was_ended = true;
        return std::nullopt;
    }
    if (lines.Count() <= kSearchLines) {
        return FindInValues(lines, wanted, direction);
    }
    const std::vector<std::int64_t> bounds = SplitEvenly(lines, kSearchColumns);
    const std::vector<Truth> truth = TruthOfColumns(bounds);
    const bool forward = direction == Direction::kForward;
    for (std::size_t step = 0; step < truth.size() && !m_was_ended; ++step) {
        const std::size_t i = forward ? step : truth.size() - 1 - step;
        if (truth[i] == (wanted ? Truth::kAlways : Truth::kNever)) {
            return forward ? bounds[i] : bounds[i + 1] - 1;
        }
        if (truth[i] == Truth::kSometimes) {
            const std::optional<std::int64_t> found =
                FindInPiece({bounds[i], bounds[i + 1]}, wanted, direction);
            if (found.has_value()) {
                return found;
            }
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> ConditionSearch::FindInValues(const LineRange& lines, bool wanted,
                                                          Direction direction) {
    const std::vector<std::uint8_t> truth = TruthOfLines(lines);
    const auto value = static_cast<std::uint8_t>(wanted ? 1 : 0);
    if (direction == Direction::kForward) {
        const auto found = std::ranges::find(truth, value);
        return found == truth.end() ? std::nullopt
                                    : std::optional(lines.begin + (found - truth.begin()));
    }
    const auto found = std::find(truth.rbegin(), truth.rend(), value);
    return found == truth.rend() ? std::nullopt
                                 : std::optional(lines.end - 1 - (found - truth.rbegin()));
}

std::vector<std::uint8_t> ConditionSearch::TruthOfLines(const LineRange& lines) {
    std::vector<std::uint8_t> truth(static_cast<std::size_t>(lines.Count()));
    std::vector<double> values(truth.size());
    for (const ConditionTerm& term : m_terms) {
        term.history->Values(lines.begin, values);
        for (std::size_t i = 0; i < values.size(); ++i) {
            truth[i] |= IsBeyond(values[i], term.side, term.limit) ? 1 : 0;
        }
    }
    return truth;
}

std::vector<ConditionSearch::Truth> ConditionSearch::TruthOfColumns(
    std::span<const std::int64_t> bounds) {
    std::vector<Truth> truth(bounds.size() - 1, Truth::kNever);
    ColumnRow row;
    for (const ConditionTerm& term : m_terms) {
        term.history->Columns(bounds, row);
        for (std::size_t i = 0; i < truth.size(); ++i) {
            if (row.minimum[i] > row.maximum[i]) {
                continue;  // no value at all
            }
            const bool is_above = term.side == TriggerSide::kAbove;
            const double nearest = is_above ? row.maximum[i] : row.minimum[i];
            const double farthest = is_above ? row.minimum[i] : row.maximum[i];
            if (row.missing[i] == 0 && IsBeyond(farthest, term.side, term.limit)) {
                truth[i] = Truth::kAlways;
            } else if (truth[i] == Truth::kNever && IsBeyond(nearest, term.side, term.limit)) {
                truth[i] = Truth::kSometimes;
            }
        }
    }
    return truth;
}

}  // namespace wavo
