// Drawings of nothing but spans: all layers of a block in one go, each pixel once.
#include <algorithm>

#include "graph/draw/raster/plot_canvas.h"
#include "graph/draw/raster/span_pixels.h"

namespace wavo {

bool PlotCanvas::IsOneCurveAsBefore() const {
    return m_layers.size() == 1 && m_drawn.size() == 1 && m_layers[0].color == m_drawn[0].color;
}

bool PlotCanvas::IsStack() const {
    // Further spans of a column are painted after the others, but below the next layer.
    return std::all_of(m_layers.begin(), m_layers.end(), [this](const Layer& layer) {
        return layer.spans->more.empty() || &layer == &m_layers.back();
    });
}

void PlotCanvas::PaintBlocks() {
    const std::vector<std::uint8_t> same = BlocksAsBefore();
    const bool one_curve = IsOneCurveAsBefore();
    // All that is painted of each block, from its first to its last row.
    std::vector<Rows> all(m_drawn_rows);
    int count = 0;
    std::int64_t pixels = 0;
    for (std::size_t block = 0; block < all.size(); ++block) {
        Rows& rows = all[block];
        if (same[block] != 0) {
            rows = Rows();
            continue;
        }
        for (std::size_t i = 0; i < m_layers.size(); ++i) {
            rows.Take(m_rows[i][block]);
        }
        if (one_curve) {
            // What one curve covers in every column of a block, before and now, stays as it is.
            const Rows& now = m_rows[0][block];
            rows.full_top = std::max(rows.full_top, now.full_top);
            rows.full_bottom = std::min(rows.full_bottom, now.full_bottom);
            rows.keep_full = rows.full_top <= rows.full_bottom;
        }
        const int kept = rows.keep_full ? rows.full_bottom - rows.full_top + 1 : 0;
        // What lies between the rows of now and before is not painted.
        const Rows& now = m_layers.empty() ? Rows() : m_rows[0][block];
        const Rows& before = m_drawn_rows[block];
        const bool apart = now.top > before.bottom + 1 || before.top > now.bottom + 1;
        count += apart && m_layers.size() == 1 ? now.Count() + before.Count() : rows.Count() - kept;
        pixels += rows.pixels;
    }
    const bool dense = m_layers.size() <= 1 || pixels * 2 > std::int64_t{count} * kBlockColumns;
    if (count > kHighBlock * Blocks() && dense) {
        PaintHighBlocks(all);
    } else {
        for (int block = 0; block < Blocks(); ++block) {
            const Rows& rows = all[static_cast<std::size_t>(block)];
            if (rows.Count() == 0) {
                continue;
            }
            if (rows.keep_full) {
                PaintStretch(block, rows);
                continue;
            }
            FindStretches(block);
            for (const Rows& stretch : m_stretches) {
                PaintStretch(block, stretch);
            }
        }
    }
    if (!m_layers.empty()) {
        PaintMore(*m_layers.back().spans, m_layers.back().color);
    }
}

void PlotCanvas::FindStretches(int block) {
    m_stretches.clear();
    const auto at = static_cast<std::size_t>(block);
    for (std::size_t i = 0; i < std::max(m_rows.size(), m_drawn_layer_rows.size()); ++i) {
        Rows rows = i < m_rows.size() ? m_rows[i][at] : Rows();
        if (i < m_drawn_layer_rows.size()) {
            const Rows& drawn = m_drawn_layer_rows[i][at];
            if (rows.top <= drawn.bottom + 1 && drawn.top <= rows.bottom + 1) {
                rows.Take(drawn);
            } else {
                AddStretch(drawn);
            }
        }
        AddStretch(rows);
    }
}

void PlotCanvas::AddStretch(const Rows& rows) {
    if (rows.Count() == 0) {
        return;
    }
    // Those that it touches become one with it; the others stay in order.
    std::size_t first = m_stretches.size();
    while (first > 0 && m_stretches[first - 1].bottom + 1 >= rows.top) {
        --first;
    }
    Rows whole{rows.top, rows.bottom, rows.pixels};
    std::size_t end = first;
    for (; end < m_stretches.size() && m_stretches[end].top <= whole.bottom + 1; ++end) {
        whole.Take(m_stretches[end]);
    }
    const auto begin = m_stretches.begin() + static_cast<std::ptrdiff_t>(first);
    if (first == end) {
        m_stretches.insert(begin, whole);
    } else {
        *begin = whole;
        m_stretches.erase(begin + 1, m_stretches.begin() + static_cast<std::ptrdiff_t>(end));
    }
}

void PlotCanvas::PaintStretch(int block, const Rows& stretch) {
    if (stretch.pixels * kSparse < stretch.Count() * kBlockColumns) {
        PaintStretchColumns(block, stretch);
    } else if (stretch.keep_full) {
        PaintStretchRows(block, block + 1, stretch.top,
                         std::min(stretch.full_top - 1, stretch.bottom));
        PaintStretchRows(block, block + 1, std::max(stretch.full_bottom + 1, stretch.top),
                         stretch.bottom);
    } else {
        PaintStretchRows(block, block + 1, stretch.top, stretch.bottom);
    }
}

void PlotCanvas::PaintHighBlocks(const std::vector<Rows>& rows) {
    Rows all;
    for (const Rows& block : rows) {
        all.Take(block);
    }
    for (int row = all.top; row <= all.bottom; ++row) {
        const auto painted = [row](const Rows& held) { return held.Has(row) && !held.Keeps(row); };
        for (auto end = rows.begin(); end != rows.end();) {
            const auto begin = std::find_if(end, rows.end(), painted);
            end = std::find_if_not(begin, rows.end(), painted);
            PaintStretchRows(static_cast<int>(begin - rows.begin()),
                             static_cast<int>(end - rows.begin()), row, row);
        }
    }
}

void PlotCanvas::PaintStretchRows(int first_block, int end_block, int first_row, int last_row) {
    const int first = first_block * kBlockColumns;
    const int end = std::min(end_block * kBlockColumns, m_visible.right() - m_plot.left() + 1);
    if (end <= first || last_row < first_row) {
        return;
    }
    m_stack.clear();
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        const ColumnSpans& spans = *m_layers[i].spans;
        StackedSpans stacked{&spans.top[static_cast<std::size_t>(first)],
                             &spans.bottom[static_cast<std::size_t>(first)], m_layers[i].color,
                             first_row, last_row};
        if (end_block == first_block + 1) {
            const Rows& rows = m_rows[i][static_cast<std::size_t>(first_block)];
            if (rows.bottom < first_row || rows.top > last_row) {
                continue;
            }
            stacked.first_row = rows.top;
            stacked.last_row = rows.bottom;
        }
        m_stack.push_back(stacked);
    }
    PaintStack({m_pixels + first, m_stride, m_under + first, m_under_stride, m_equal_rows.data(),
                m_first_row, end - first},
               first_row, last_row, m_stack);
}

void PlotCanvas::PaintStretchColumns(int block, const Rows& stretch) {
    const int first = block * kBlockColumns;
    const int end = first + BlockWidth(block);
    const auto paint = [&](int column, int top, int bottom, const QRgb* color) {
        PaintColumn(column, std::max(top, stretch.top), std::min(bottom, stretch.bottom), color);
    };
    const auto reaches = [&](const std::vector<Rows>& rows) {
        const Rows& held = rows[static_cast<std::size_t>(block)];
        return held.top <= stretch.bottom && stretch.top <= held.bottom;
    };
    for (std::size_t i = 0; i < m_drawn.size(); ++i) {
        if (!reaches(m_drawn_layer_rows[i])) {
            continue;
        }
        const ColumnSpans& drawn = m_drawn[i].spans;
        for (int column = first; column < std::min(end, drawn.Columns()); ++column) {
            paint(column, drawn.top[static_cast<std::size_t>(column)],
                  drawn.bottom[static_cast<std::size_t>(column)], nullptr);
        }
        for (const ColumnSpans::Span& span : drawn.more) {
            if (first <= span.column && span.column < end) {
                paint(span.column, span.top, span.bottom, nullptr);
            }
        }
    }
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (reaches(m_rows[i])) {
            const ColumnSpans& spans = *m_layers[i].spans;
            for (int column = first; column < end; ++column) {
                paint(column, spans.top[static_cast<std::size_t>(column)],
                      spans.bottom[static_cast<std::size_t>(column)], &m_layers[i].color);
            }
        }
    }
}

}  // namespace wavo
