#include "graph/draw/raster/plot_canvas.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "graph/draw/raster/span_pixels.h"

namespace wavo {

void PlotCanvas::Rows::Take(const Rows& other) {
    top = std::min(top, other.top);
    bottom = std::max(bottom, other.bottom);
    pixels += other.pixels;
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

bool PlotCanvas::IsOneCurveAsBefore() const {
    return m_layers.size() == 1 && m_drawn.size() == 1 && m_layers[0].color == m_drawn[0].color;
}

bool PlotCanvas::IsStack() const {
    // Further spans of a column are painted after the others, but below the next layer.
    return std::all_of(m_layers.begin(), m_layers.end(), [this](const Layer& layer) {
        return layer.spans->more.empty() || &layer == &m_layers.back();
    });
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
