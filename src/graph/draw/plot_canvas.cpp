#include "graph/draw/plot_canvas.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "graph/draw/span_pixels.h"

namespace wavo {

namespace {

/// Blocks higher than this on the average are painted row by row across the plot area, as the
/// memory lies; lower ones each by itself.
constexpr int kHighBlock = 96;

/// Paints parts of one row after another.
class RowPainter {
 public:
    /// `under` shows what lies beneath, its top left pixel at `under_origin` of the picture;
    /// columns and rows count from `plot_origin`.
    RowPainter(QImage& picture, const QImage& under, const QPoint& plot_origin,
               const QPoint& under_origin, QRgb color)
        : m_pixels(reinterpret_cast<QRgb*>(picture.bits())),
          m_stride(picture.bytesPerLine() / static_cast<int>(sizeof(QRgb))),
          m_under(reinterpret_cast<const QRgb*>(under.constBits())),
          m_under_stride(under.bytesPerLine() / static_cast<int>(sizeof(QRgb))),
          m_plot_origin(plot_origin),
          m_under_plot_origin(plot_origin - under_origin),
          m_color(color) {}

    void SetRow(int row) {
        m_row = row;
        m_to = m_pixels + (m_plot_origin.y() + row) * m_stride + m_plot_origin.x();
        m_from =
            m_under + (m_under_plot_origin.y() + row) * m_under_stride + m_under_plot_origin.x();
    }

    /// `spans`: null for what lies beneath alone.
    void Paint(int block, int width, const ColumnSpans* spans) const {
        const int first = block * kBlockColumns;
        if (spans == nullptr) {
            std::copy_n(m_from + first, width, m_to + first);
            return;
        }
        PaintSpanRow(m_to + first, m_from + first, &spans->top[static_cast<std::size_t>(first)],
                     &spans->bottom[static_cast<std::size_t>(first)], width, m_row, m_color);
    }

 private:
    QRgb* m_pixels;
    std::ptrdiff_t m_stride;
    const QRgb* m_under;
    std::ptrdiff_t m_under_stride;
    QPoint m_plot_origin;
    QPoint m_under_plot_origin;
    QRgb m_color;
    int m_row = 0;
    QRgb* m_to = nullptr;
    const QRgb* m_from = nullptr;
};

}  // namespace

void PlotCanvas::Rows::Take(int first, int last) {
    top = std::min(top, first);
    bottom = std::max(bottom, last);
}

void PlotCanvas::Forget() {
    m_drawn.clear();
    m_drawn_rows.clear();
    m_painted = QRect();
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
    m_layers.push_back({&spans, color, {}, 0});
}

void PlotCanvas::Add(Painting painting, std::uint64_t version) {
    m_layers.push_back({nullptr, 0, std::move(painting), version});
}

void PlotCanvas::End() {
    if (m_visible.isEmpty()) {
        Forget();
        return;
    }
    m_drawn_rows.resize(static_cast<std::size_t>(Blocks()));
    if (!HasPaintings() && m_painted.isEmpty()) {
        FindRows();
        PaintBlocks();
    } else if (!LayersAreAsBefore()) {
        FindRows();
        Restore();
        for (std::size_t i = 0; i < m_layers.size(); ++i) {
            if (m_layers[i].spans != nullptr) {
                PaintRows(m_rows[i], m_layers[i].spans, m_layers[i].color, *m_picture, QPoint());
                PaintMore(*m_layers[i].spans, m_layers[i].color);
            } else {
                m_painted |= m_layers[i].painting(*m_picture);
            }
        }
    }
    KeepLayers();
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
        std::int16_t top = ColumnSpans::kNoTop;
        std::int16_t bottom = ColumnSpans::kNoBottom;
        for (int column = first; column < last; ++column) {
            top = std::min(top, spans.top[static_cast<std::size_t>(column)]);
            bottom = std::max(bottom, spans.bottom[static_cast<std::size_t>(column)]);
        }
        rows[static_cast<std::size_t>(block)].Take(top, bottom);
    }
    for (const ColumnSpans::Span& span : spans.more) {
        const auto block = static_cast<std::size_t>(span.column / kBlockColumns);
        if (block < rows.size()) {
            rows[block].Take(span.top, span.bottom);
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

void PlotCanvas::PaintBlocks() {
    const std::vector<std::uint8_t> same = BlocksAsBefore();
    const auto without_same = [&same](std::vector<Rows> rows) {
        for (std::size_t block = 0; block < rows.size(); ++block) {
            if (same[block] != 0) {
                rows[block] = Rows();
            }
        }
        return rows;
    };
    // The first layer is painted in one go with the background where something was before.
    std::vector<Rows> first = m_drawn_rows;
    const ColumnSpans* const first_spans = m_layers.empty() ? nullptr : m_layers[0].spans;
    for (std::size_t block = 0; first_spans != nullptr && block < first.size(); ++block) {
        first[block].Take(m_rows[0][block].top, m_rows[0][block].bottom);
    }
    PaintRows(without_same(std::move(first)), first_spans,
              first_spans == nullptr ? 0 : m_layers[0].color, *m_background, m_origin);
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (i > 0) {
            PaintRows(without_same(m_rows[i]), m_layers[i].spans, m_layers[i].color, *m_picture,
                      QPoint());
        }
        PaintMore(*m_layers[i].spans, m_layers[i].color);
    }
}

void PlotCanvas::PaintRows(const std::vector<Rows>& rows, const ColumnSpans* spans, QRgb color,
                           const QImage& under, const QPoint& under_origin) {
    int top = ColumnSpans::kNoTop;
    int bottom = ColumnSpans::kNoBottom;
    int count = 0;
    for (const Rows& block : rows) {
        top = std::min(top, block.top);
        bottom = std::max(bottom, block.bottom);
        count += block.Count();
    }
    const auto blocks = static_cast<int>(rows.size());
    RowPainter painter(*m_picture, under, m_plot.topLeft(), under_origin, color);
    if (count > kHighBlock * blocks) {
        for (int row = top; row <= bottom; ++row) {
            painter.SetRow(row);
            for (int block = 0; block < blocks; ++block) {
                const Rows& held = rows[static_cast<std::size_t>(block)];
                if (held.top <= row && row <= held.bottom) {
                    painter.Paint(block, BlockWidth(block), spans);
                }
            }
        }
        return;
    }
    for (int block = 0; block < blocks; ++block) {
        const Rows& held = rows[static_cast<std::size_t>(block)];
        for (int row = held.top; row <= held.bottom; ++row) {
            painter.SetRow(row);
            painter.Paint(block, BlockWidth(block), spans);
        }
    }
}

void PlotCanvas::PaintMore(const ColumnSpans& spans, QRgb color) {
    const std::ptrdiff_t stride = m_picture->bytesPerLine() / static_cast<int>(sizeof(QRgb));
    for (const ColumnSpans::Span& span : spans.more) {
        const int x = m_plot.left() + span.column;
        const int top = std::max(m_visible.top(), m_plot.top() + span.top);
        const int bottom = std::min(m_visible.bottom(), m_plot.top() + span.bottom);
        if (x > m_visible.right() || top > bottom) {
            continue;
        }
        QRgb* pixel = reinterpret_cast<QRgb*>(m_picture->scanLine(top)) + x;
        for (int y = top; y <= bottom; ++y, pixel += stride) {
            *pixel = color;
        }
    }
}

void PlotCanvas::Restore() {
    PaintRows(m_drawn_rows, nullptr, 0, *m_background, m_origin);
    const QRect painted = m_painted & m_visible;
    for (int y = painted.top(); y <= painted.bottom(); ++y) {
        const auto* from =
            reinterpret_cast<const QRgb*>(m_background->constScanLine(y - m_origin.y()));
        std::copy_n(from + (painted.left() - m_origin.x()), painted.width(),
                    reinterpret_cast<QRgb*>(m_picture->scanLine(y)) + painted.left());
    }
    m_painted = QRect();
}

void PlotCanvas::KeepLayers() {
    m_drawn.resize(m_layers.size());
    std::fill(m_drawn_rows.begin(), m_drawn_rows.end(), Rows());
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        DrawnLayer& drawn = m_drawn[i];
        drawn.painted = m_layers[i].spans == nullptr;
        drawn.color = m_layers[i].color;
        drawn.version = m_layers[i].version;
        if (drawn.painted) {
            continue;
        }
        drawn.spans = *m_layers[i].spans;
        for (std::size_t block = 0; block < m_drawn_rows.size(); ++block) {
            m_drawn_rows[block].Take(m_rows[i][block].top, m_rows[i][block].bottom);
        }
    }
}

}  // namespace wavo
