#include "graph/draw/raster/plot_canvas.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <utility>

#include "graph/draw/raster/span_pixels.h"

namespace wavo {

void PlotCanvas::Rows::Take(const Rows& other) {
    top = std::min(top, other.top);
    bottom = std::max(bottom, other.bottom);
    pixels += other.pixels;
}

std::uint64_t PlotCanvas::NewVersion() {
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

void PlotCanvas::Forget() {
    m_drawn.clear();
    m_drawn_rows.clear();
    m_drawn_layer_rows.clear();
    m_equal_rows.clear();
    m_painted.clear();
    m_drawn_alone = false;
}

void PlotCanvas::Begin(QImage& picture, const QImage& background, const QPoint& origin,
                       const QRect& plot) {
    m_picture = &picture;
    m_background = &background;
    m_origin = origin;
    m_plot = plot;
    m_visible = plot & QRect(QPoint(0, 0), picture.size()) & QRect(origin, background.size());
    if (m_visible.left() != plot.left()) {
        m_visible = QRect();  // blocks count from the left
    }
    m_layers.clear();
}

void PlotCanvas::Add(const ColumnSpans& spans, QRgb color) {
    m_layers.push_back({&spans, color, {}, 0, {}});
}

void PlotCanvas::Add(Painting painting, std::uint64_t version, AlonePainting alone) {
    m_layers.push_back({nullptr, 0, std::move(painting), version, std::move(alone)});
}

void PlotCanvas::End() {
    if (m_visible.isEmpty()) {
        Forget();
        return;
    }
    m_drawn_rows.resize(static_cast<std::size_t>(Blocks()));
    m_stride = m_picture->bytesPerLine() / static_cast<int>(sizeof(QRgb));
    // The plot area may begin above the picture: rows count from the first visible one.
    m_first_row = m_visible.top() - m_plot.top();
    m_pixels =
        reinterpret_cast<QRgb*>(m_picture->bits()) + m_visible.top() * m_stride + m_visible.left();
    const QPoint under = m_visible.topLeft() - m_origin;
    m_under_stride = m_background->bytesPerLine() / static_cast<int>(sizeof(QRgb));
    m_under = reinterpret_cast<const QRgb*>(m_background->constBits()) +
              under.y() * m_under_stride + under.x();
    FindEqualRows();
    if (!HasPaintings() && m_painted.empty() && !m_drawn_alone && IsStack()) {
        FindRows();
        PaintBlocks();
    } else if (LayersAreAsBefore()) {
        return;
    } else {
        FindRows();
        if (m_layers.size() == 1 && m_layers[0].alone.paint != nullptr) {
            PaintAlone();
        } else {
            PaintLayers();
        }
    }
    KeepLayers();
}

void PlotCanvas::PaintLayers() {
    Restore();
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (m_layers[i].spans != nullptr) {
            PaintRows(m_rows[i], m_layers[i].spans, m_layers[i].color, false);
            PaintMore(*m_layers[i].spans, m_layers[i].color);
        } else {
            m_layers[i].painting(*m_picture, m_painted);
        }
    }
}

void PlotCanvas::PaintAlone() {
    const AlonePainting& alone = m_layers[0].alone;
    const bool go_on = alone.can_go_on && m_drawn_alone;
    m_drawn_alone = m_drawn_alone && !go_on;  // restored only where it does not go on
    Restore();
    alone.paint(*m_picture, m_visible, Target(), go_on, m_painted);
    m_drawn_alone = true;
}

PixelColumns PlotCanvas::Target() const {
    return {m_pixels,    m_stride,         m_under, m_under_stride, m_equal_rows.data(),
            m_first_row, m_visible.width()};
}

int PlotCanvas::Blocks() const {
    return (m_visible.right() - m_plot.left()) / kBlockColumns + 1;
}

int PlotCanvas::BlockWidth(int block) const {
    return std::min(kBlockColumns, m_visible.right() - m_plot.left() + 1 - block * kBlockColumns);
}

bool PlotCanvas::HasPaintings() const {
    return std::any_of(m_layers.begin(), m_layers.end(),
                       [](const Layer& layer) { return layer.spans == nullptr; });
}

bool PlotCanvas::LayersAreAsBefore() const {
    if (m_layers.size() != m_drawn.size()) {
        return false;
    }
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        const Layer& layer = m_layers[i];
        const DrawnLayer& drawn = m_drawn[i];
        if (layer.color != drawn.color || drawn.painted != (layer.spans == nullptr) ||
            layer.version != drawn.version) {
            return false;
        }
        if (layer.spans != nullptr &&
            (layer.spans->top != drawn.spans.top || layer.spans->bottom != drawn.spans.bottom ||
             layer.spans->more != drawn.spans.more)) {
            return false;
        }
    }
    return true;
}

bool PlotCanvas::BlockIsAsBefore(int block) const {
    const std::size_t first = static_cast<std::size_t>(block) * kBlockColumns;
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        const ColumnSpans& now = *m_layers[i].spans;
        const ColumnSpans& before = m_drawn[i].spans;
        if (now.top.size() <= first) {
            continue;
        }
        const std::size_t bytes =
            std::min<std::size_t>(kBlockColumns, now.top.size() - first) * sizeof(now.top[0]);
        if (std::memcmp(&now.top[first], &before.top[first], bytes) != 0 ||
            std::memcmp(&now.bottom[first], &before.bottom[first], bytes) != 0) {
            return false;
        }
    }
    return true;
}

void PlotCanvas::TakeSpans(const ColumnSpans& spans, std::vector<Rows>& rows) const {
    const int highest = m_visible.top() - m_plot.top();
    const int lowest = m_visible.bottom() - m_plot.top();
    rows.assign(static_cast<std::size_t>(Blocks()), Rows());
    const int blocks = std::min(Blocks(), (spans.Columns() + kBlockColumns - 1) / kBlockColumns);
    for (int block = 0; block < blocks; ++block) {
        const int first = block * kBlockColumns;
        const int last = std::min(first + kBlockColumns, spans.Columns());
        const BlockRows found =
            FindBlockRows(&spans.top[static_cast<std::size_t>(first)],
                          &spans.bottom[static_cast<std::size_t>(first)], last - first);
        rows[static_cast<std::size_t>(block)] = {found.top, found.bottom, found.pixels,
                                                 found.full_top, found.full_bottom};
    }
    for (const ColumnSpans::Span& span : spans.more) {
        const auto block = static_cast<std::size_t>(span.column / kBlockColumns);
        if (block < rows.size()) {
            rows[block].Take({span.top, span.bottom, span.bottom - span.top + 1});
        }
    }
    for (Rows& block : rows) {
        block.top = std::max(block.top, highest);
        block.bottom = std::min(block.bottom, lowest);
    }
}

void PlotCanvas::FindRows() {
    m_rows.resize(m_layers.size());
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (m_layers[i].spans != nullptr) {
            TakeSpans(*m_layers[i].spans, m_rows[i]);
        }
    }
}

const QRgb* PlotCanvas::BackgroundRow(int row) const {
    return m_under + (row - m_first_row) * m_under_stride;
}

QRgb* PlotCanvas::PictureRow(int row) const {
    return m_pixels + (row - m_first_row) * m_stride;
}

void PlotCanvas::FindEqualRows() {
    if (!m_equal_rows.empty()) {
        return;
    }
    const int lowest = m_visible.bottom() - m_plot.top();
    const int highest = m_visible.top() - m_plot.top();
    m_equal_rows.resize(static_cast<std::size_t>(lowest) + 1);
    const auto bytes = static_cast<std::size_t>(m_visible.width()) * sizeof(QRgb);
    int often = highest;  // the row that the last equal ones were equal to
    for (int row = highest; row <= lowest; ++row) {
        const QRgb* const pixels = BackgroundRow(row);
        const int above = std::max(highest, row - 1);
        int equal = row;
        if (std::memcmp(pixels, BackgroundRow(often), bytes) == 0) {
            equal = often;
        } else if (std::memcmp(pixels, BackgroundRow(above), bytes) == 0) {
            equal = m_equal_rows[static_cast<std::size_t>(above)];
            often = equal;
        }
        m_equal_rows[static_cast<std::size_t>(row)] = equal;
    }
}

std::vector<std::uint8_t> PlotCanvas::BlocksAsBefore() const {
    bool same_layers = m_layers.size() == m_drawn.size();
    for (std::size_t i = 0; same_layers && i < m_layers.size(); ++i) {
        const ColumnSpans& now = *m_layers[i].spans;
        const ColumnSpans& before = m_drawn[i].spans;
        same_layers = m_layers[i].color == m_drawn[i].color && now.more.empty() &&
                      before.more.empty() && now.top.size() == before.top.size();
    }
    std::vector<std::uint8_t> same(m_drawn_rows.size(), 0);
    for (std::size_t block = 0; same_layers && block < same.size(); ++block) {
        same[block] = BlockIsAsBefore(static_cast<int>(block)) ? 1 : 0;
    }
    return same;
}

void PlotCanvas::PaintRows(const std::vector<Rows>& rows, const ColumnSpans* spans, QRgb color,
                           bool over_background) {
    Rows all;
    int count = 0;
    for (const Rows& block : rows) {
        all.Take(block);
        const bool keeps = block.keep_full && block.full_top <= block.full_bottom;
        count += block.Count() - (keeps ? block.full_bottom - block.full_top + 1 : 0);
    }
    const auto blocks = static_cast<int>(rows.size());
    if (count > kHighBlock * blocks) {
        for (int row = all.top; row <= all.bottom; ++row) {
            const auto painted = [row](const Rows& held) {
                return held.Has(row) && !held.Keeps(row);
            };
            for (auto end = rows.begin(); end != rows.end();) {
                const auto begin = std::find_if(end, rows.end(), painted);
                end = std::find_if_not(begin, rows.end(), painted);
                PaintRowPart(row, static_cast<int>(begin - rows.begin()),
                             static_cast<int>(end - rows.begin()), spans, color, over_background);
            }
        }
        return;
    }
    for (int block = 0; block < blocks; ++block) {
        const Rows& held = rows[static_cast<std::size_t>(block)];
        if (held.pixels * kSparse < held.Count() * kBlockColumns) {
            PaintColumns(block, spans, color, over_background);
            continue;
        }
        for (int row = held.top; row <= held.bottom; ++row) {
            if (!held.Keeps(row)) {
                PaintRowPart(row, block, block + 1, spans, color, over_background);
            }
        }
    }
}

void PlotCanvas::PaintRowPart(int row, int first_block, int end_block, const ColumnSpans* spans,
                              QRgb color, bool over_background) {
    const int first = first_block * kBlockColumns;
    const int end = std::min(end_block * kBlockColumns, m_visible.right() - m_plot.left() + 1);
    if (end <= first) {
        return;
    }
    QRgb* const to = PictureRow(row) + first;
    const QRgb* const from =
        over_background ? BackgroundRow(m_equal_rows[static_cast<std::size_t>(row)]) + first : to;
    if (spans == nullptr) {
        std::copy(from, from + (end - first), to);
        return;
    }
    PaintSpanRow(to, from, &spans->top[static_cast<std::size_t>(first)],
                 &spans->bottom[static_cast<std::size_t>(first)], end - first, row, color);
}

void PlotCanvas::PaintColumns(int block, const ColumnSpans* spans, QRgb color, bool restore) {
    const int first = block * kBlockColumns;
    const int end = first + BlockWidth(block);
    for (std::size_t i = 0; restore && i < m_drawn.size(); ++i) {
        const ColumnSpans& drawn = m_drawn[i].spans;
        for (int column = first; column < std::min(end, drawn.Columns()); ++column) {
            PaintColumn(column, drawn.top[static_cast<std::size_t>(column)],
                        drawn.bottom[static_cast<std::size_t>(column)], nullptr);
        }
        for (const ColumnSpans::Span& span : drawn.more) {
            if (first <= span.column && span.column < end) {
                PaintColumn(span.column, span.top, span.bottom, nullptr);
            }
        }
    }
    for (int column = first; spans != nullptr && column < end; ++column) {
        PaintColumn(column, spans->top[static_cast<std::size_t>(column)],
                    spans->bottom[static_cast<std::size_t>(column)], &color);
    }
}

void PlotCanvas::PaintColumn(int column, int top, int bottom, const QRgb* color) {
    top = std::max(top, m_visible.top() - m_plot.top());
    bottom = std::min(bottom, m_visible.bottom() - m_plot.top());
    for (int row = top; row <= bottom; ++row) {
        PictureRow(row)[column] =
            color != nullptr ? *color
                             : BackgroundRow(m_equal_rows[static_cast<std::size_t>(row)])[column];
    }
}

void PlotCanvas::PaintMore(const ColumnSpans& spans, QRgb color) {
    for (const ColumnSpans::Span& span : spans.more) {
        if (m_plot.left() + span.column <= m_visible.right()) {
            PaintColumn(span.column, span.top, span.bottom, &color);
        }
    }
}

void PlotCanvas::Restore() {
    PaintRows(m_drawn_rows, nullptr, 0, true);
    if (m_drawn_alone) {
        m_painted.clear();
        AddRectangle(m_painted, m_visible);
        m_drawn_alone = false;
    }
    const int end = m_visible.width();
    for (const PixelRun& run : m_painted) {
        const int first = std::max(run.first - m_visible.left(), 0);
        const int count = std::min(run.end - m_visible.left(), end) - first;
        if (count > 0 && m_visible.top() <= run.row && run.row <= m_visible.bottom()) {
            const int row = run.row - m_plot.top();
            std::copy_n(BackgroundRow(m_equal_rows[static_cast<std::size_t>(row)]) + first, count,
                        PictureRow(row) + first);
        }
    }
    m_painted.clear();
}

void PlotCanvas::KeepLayers() {
    m_drawn.resize(m_layers.size());
    m_rows.resize(m_layers.size());
    std::fill(m_drawn_rows.begin(), m_drawn_rows.end(), Rows());
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        DrawnLayer& drawn = m_drawn[i];
        drawn.painted = m_layers[i].spans == nullptr;
        drawn.color = m_layers[i].color;
        drawn.version = m_layers[i].version;
        if (drawn.painted) {
            drawn.spans.Clear(0);
            m_rows[i].assign(m_drawn_rows.size(), Rows());
            continue;
        }
        drawn.spans = *m_layers[i].spans;
        for (std::size_t block = 0; block < m_drawn_rows.size(); ++block) {
            m_drawn_rows[block].Take(m_rows[i][block]);
        }
    }
    if (m_layers.size() == 1 && m_layers[0].spans != nullptr) {
        m_drawn_rows = m_rows[0];
    }
    m_drawn_layer_rows.swap(m_rows);
}

}  // namespace wavo
