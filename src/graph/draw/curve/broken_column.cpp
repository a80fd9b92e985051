#include "graph/draw/curve/broken_column.h"

namespace wavo {

namespace {

/// All values of a part are one line, whose rows are known.
bool IsUnbroken(const ColumnOutline& part) {
    return !part.missing && part.HasExtremes() && part.IsKnown();
}

bool HasNoValues(const ColumnOutline& part) {
    return part.IsExact() && !part.HasExtremes();
}

}  // namespace

bool BrokenColumn::GoOn(History& history, const PixelEdges& rows) {
    const Asked asked{history, rows};
    if (!FindEnds(asked)) {
        return false;
    }
    if (!m_is_begun) {
        m_is_begun = LookInto(asked, m_lines);
    }
    while (m_is_begun && !m_nodes.empty()) {
        if (m_nodes.back().step == 2 * m_nodes.back().parts.size() - 1) {
            m_nodes.pop_back();
        } else if (!TakeStep(asked)) {
            return false;
        }
    }
    m_is_done = m_is_begun;
    return m_is_done;
}

bool BrokenColumn::FindEnds(const Asked& asked) {
    for (; m_ends_found < 2; ++m_ends_found) {
        const std::int64_t line = m_ends_found == 0 ? m_lines.begin : m_lines.end - 1;
        double value = 0.0;
        if (asked.history.ValuesToDraw(line, {&value, 1}) != HistoryAnswer::kAll) {
            return false;
        }
        (m_ends_found == 0 ? m_first : m_last) = value;
    }
    return true;
}

bool BrokenColumn::TakeStep(const Asked& asked) {
    const std::size_t at = m_nodes.size() - 1;
    const Node& node = m_nodes[at];
    const std::size_t part = node.step / 2;
    const bool is_way = node.step % 2 != 0;
    const ColumnOutline& outline = node.parts[part];
    // The rows that a closer look may add.
    RowStretch open;
    LineRange lines = node.LinesOf(part);
    if (is_way) {
        const ColumnOutline& next = node.parts[part + 1];
        lines = {lines.end - 1, lines.end + 1};
        if (!HasNoValues(outline) && !HasNoValues(next) &&
            !(IsUnbroken(outline) && IsUnbroken(next))) {
            open = RowsOf(asked, outline).Joined(RowsOf(asked, next));
        }
    } else if (lines.Count() > 1 && !IsUnbroken(outline)) {
        open = RowsOf(asked, outline);
    }
    ++m_nodes[at].step;
    if (m_covered.Holds(open) || (is_way ? TakeValues(asked, lines) : LookInto(asked, lines))) {
        return true;
    }
    --m_nodes[at].step;
    return false;
}

bool BrokenColumn::LookInto(const Asked& asked, const LineRange& lines) {
    Node node;
    asked.history.Cut(lines, node.bounds);
    if (node.bounds.size() == 2) {
        return TakeValues(asked, lines);
    }
    node.parts.resize(node.bounds.size() - 1);
    if (asked.history.LookNear(node.bounds, node.parts) != HistoryAnswer::kAll) {
        return false;
    }
    TakeKnown(asked, node);
    m_nodes.push_back(std::move(node));
    return true;
}

void BrokenColumn::TakeKnown(const Asked& asked, const Node& node) {
    RowStretch before;
    for (std::size_t i = 0; i < node.parts.size(); ++i) {
        const RowStretch rows =
            IsUnbroken(node.parts[i]) ? RowsOf(asked, node.parts[i]) : RowStretch();
        if (node.LinesOf(i).Count() > 1) {
            m_covered.Add(rows);
        }
        if (!before.IsEmpty() && !rows.IsEmpty()) {
            m_covered.Add(before.Joined(rows));
        }
        before = rows;
    }
}

bool BrokenColumn::TakeValues(const Asked& asked, const LineRange& lines) {
    std::vector<double> values(static_cast<std::size_t>(lines.Count()));
    if (asked.history.ValuesToDraw(lines.begin, values) != HistoryAnswer::kAll) {
        return false;
    }
    RowStretch run;
    std::size_t count = 0;  // of values in it
    const auto end_run = [&] {
        if (count > 1) {
            m_covered.Add(run);
        }
        run = {};
        count = 0;
    };
    for (const double value : values) {
        if (std::isnan(value)) {
            end_run();
        } else {
            run = run.Joined(asked.Of({value, value}));
            ++count;
        }
    }
    end_run();
    return true;
}

RowStretch BrokenColumn::RowsOf(const Asked& asked, const ColumnOutline& part) const {
    const RowStretch all = asked.Of(m_range);
    if (HasNoValues(part)) {
        return {};
    }
    return part.HasExtremes() ? asked.Of({part.possible_minimum, part.possible_maximum}).Within(all)
                              : all;  // nothing is known from far
}

void BrokenColumn::Emit(std::int32_t column, SpanBuilder& builder, ColumnSpans& spans) const {
    if (!std::isnan(m_first)) {
        builder.Sample(column, m_first);
    }
    builder.Break();
    for (const RowStretch& rows : m_covered.Stretches()) {
        spans.Add(column, rows.top, rows.bottom);
    }
    if (!std::isnan(m_last)) {
        builder.Sample(column, m_last);
    }
}

}  // namespace wavo
