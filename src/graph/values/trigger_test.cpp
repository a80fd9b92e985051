#include "graph/values/trigger_test.h"

#include <algorithm>
#include <vector>

namespace wavo {

namespace {

/// Columns of one question, and lines that are looked at one by one.
constexpr std::int64_t kColumns = 256;

/// Bounds of columns of equal length, the last one shorter.
std::vector<std::int64_t> BoundsWithin(const LineRange& lines) {
    const std::int64_t length = (lines.Count() + kColumns - 1) / kColumns;
    std::vector<std::int64_t> bounds{lines.begin};
    while (bounds.back() < lines.end) {
        bounds.push_back(bounds.back() + std::min(length, lines.end - bounds.back()));
    }
    return bounds;
}

}  // namespace

std::optional<std::size_t> FirstBeyond(std::span<const double> values, TriggerSide side,
                                       double limit) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (IsBeyond(values[i], side, limit)) {
            return i;
        }
    }
    return std::nullopt;
}

LineSearch FirstLineBeyond(History& history, const LineRange& lines, TriggerSide side,
                           double limit) {
    LineRange rest = lines;
    rest.begin = std::max(rest.begin, history.Lines().begin);
    rest.end = std::min(rest.end, history.Lines().end);
    ColumnRow row;
    while (rest.Count() > kColumns) {
        const std::vector<std::int64_t> bounds = BoundsWithin(rest);
        if (history.Columns(bounds, row) == HistoryAnswer::kNotLoaded) {
            return {HistoryAnswer::kNotLoaded, std::nullopt};
        }
        const std::optional<std::size_t> column =
            FirstBeyond(side == TriggerSide::kAbove ? row.maximum : row.minimum, side, limit);
        if (!column.has_value()) {
            return {};
        }
        rest = {bounds[*column], bounds[*column + 1]};
    }
    std::vector<double> values(static_cast<std::size_t>(rest.Count()));
    if (history.Values(rest.begin, values) == HistoryAnswer::kNotLoaded) {
        return {HistoryAnswer::kNotLoaded, std::nullopt};
    }
    const std::optional<std::size_t> first = FirstBeyond(values, side, limit);
    if (!first.has_value()) {
        return {};
    }
    return {HistoryAnswer::kAll, rest.begin + static_cast<std::int64_t>(*first)};
}

}  // namespace wavo
