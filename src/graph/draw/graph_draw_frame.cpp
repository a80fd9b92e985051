// Everything of a graph but its curves: background, scale lines, zero lines, border and texts.
// It is kept as an image of its own and drawn again where it has changed.
#include <QPainter>
#include <QString>
#include <algorithm>

#include "graph/draw/frame/frame_painter.h"
#include "graph/draw/graph_draw.h"
#include "graph/draw/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Part of a curve's colour in its zero line.
constexpr double kZeroLinePart = 0.45;

}  // namespace

void GraphDraw::DrawFrame(QImage& picture) {
    if (m_lines.empty()) {
        MERRLOG(draw_texts::kBadLineCount);
    }
    const QRect rectangle = ToDevice(m_rectangle) & QRect(QPoint(0, 0), picture.size());
    const bool anew = !m_frame_valid || rectangle != m_frame_rectangle;
    FrameContent content = FrameNow();
    if (!anew && content == m_drawn_content) {
        return;
    }
    FrameLines lines = LinesNow();
    const bool lines_moved = anew || lines != m_drawn_lines;
    m_drawn_content = std::move(content);
    m_drawn_lines = std::move(lines);
    if (anew) {
        MakeFrame(rectangle);
    }
    DrawFrameTexts();
    if (lines_moved) {
        DrawFrameLines();
        CopyFrame(picture, m_frame_rectangle);
        m_canvas.Forget();
        m_frame_valid = true;
        return;
    }
    CopyFrame(picture, AbovePlot());
    CopyFrame(picture, BelowPlot());
}

QRect GraphDraw::AbovePlot() const {
    QRect above = m_frame_rectangle;
    above.setBottom(std::min(above.bottom(), m_device_plot.top() - 1));
    return above;
}

QRect GraphDraw::BelowPlot() const {
    QRect below = m_frame_rectangle;
    below.setTop(std::max(below.top(), m_device_plot.bottom() + 1));
    return below;
}

void GraphDraw::MakeFrame(const QRect& rectangle) {
    m_frame_rectangle = rectangle;
    if (m_frame.size() != rectangle.size()) {
        m_frame = rectangle.isEmpty() ? QImage() : QImage(rectangle.size(), QImage::Format_RGB32);
    }
    m_frame.fill(m_colors.background);
}

GraphDraw::FrameContent GraphDraw::FrameNow() const {
    return {m_zoom.Window(), m_recorder.State(), IsTimeGraph() ? m_shown_x_scale : m_graph.XScale,
            m_graph.YScales};
}

GraphDraw::FrameLines GraphDraw::LinesNow() const {
    FrameLines lines;
    if (!m_lines.empty()) {
        lines.circles = PlaceCircles(m_graph, m_vertical, m_lines.front()->YLines());
    }
    if (!m_graph.ZeroLines) {
        return lines;
    }
    for (const auto& line : m_lines) {
        const std::optional<std::int32_t> row = ZeroPixel(Coordinate::kY, line->YLines());
        const QColor color = Blend(m_colors.background, line->ShownColor(), kZeroLinePart);
        if (row.has_value() && !lines.zero_rows.emplace(*row, color.rgb()).second) {
            lines.zero_rows[*row] = m_colors.shared_zero_line.rgb();
        }
    }
    if (!IsTimeGraph() && !m_lines.empty()) {
        lines.zero_column = ZeroPixel(Coordinate::kX, m_vertical);
    }
    return lines;
}

void GraphDraw::DrawFrameLines() {
    if (m_layout.plot.isEmpty() || m_frame.isNull()) {
        return;
    }
    QPainter painter(&m_frame);
    painter.translate(-m_frame_rectangle.topLeft());
    painter.fillRect(m_device_plot, m_colors.background);
    PaintScaleLines(painter, m_vertical, m_horizontal, m_colors);
    for (const auto& [row, color] : m_drawn_lines.zero_rows) {
        PaintZeroLine(painter, Coordinate::kY, row, m_device_plot, QColor(color));
    }
    if (m_drawn_lines.zero_column.has_value()) {
        const QColor color =
            Blend(m_colors.background, m_lines.front()->ShownColor(), kZeroLinePart);
        PaintZeroLine(painter, Coordinate::kX, *m_drawn_lines.zero_column, m_device_plot, color);
    }
    if (!m_lines.empty()) {
        PaintCircles(painter, m_device_plot, m_drawn_lines.circles,
                     CircleColor(m_colors, m_lines.front()->ShownColor()), m_device_ratio);
    }
    PaintBorder(painter, m_device_plot, m_colors);
}

void GraphDraw::DrawFrameTexts() {
    FrameTexts texts;
    texts.x_text = QString::fromStdString(XText(m_graph, m_zoom.Window()));
    texts.x_spacing =
        QString::fromStdString(XSpacingText(m_graph, m_drawn_content.x, m_x_scale_lines));
    texts.state = m_recorder.State();
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const std::string marked_name =
            AxisLabel(m_graph.YCoorAxName[i], m_graph.YCoorAxDerivation[i]);
        texts.y.push_back({QString::fromStdString(YText(m_graph, i)),
                           QString::fromStdString(YSpacingText(m_graph, i, m_y_scale_lines)),
                           QString::fromStdString(YTextNamed(m_graph, i, marked_name)),
                           ToQColor(m_graph.YCoorAxColor[i])});
    }
    if (m_layout.plot.isEmpty() || m_frame.isNull()) {
        return;
    }
    QPainter painter(&m_frame);
    painter.translate(-m_frame_rectangle.topLeft());
    painter.fillRect(AbovePlot(), m_colors.background);
    painter.fillRect(BelowPlot(), m_colors.background);
    painter.scale(m_device_ratio, m_device_ratio);
    painter.setFont(m_font);
    PaintTexts(painter, m_layout, m_metrics, texts, m_colors);
}

void GraphDraw::CopyFrame(QImage& picture, const QRect& part) const {
    if (m_frame.isNull()) {
        return;
    }
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const auto* const from =
            reinterpret_cast<const QRgb*>(m_frame.constScanLine(y - m_frame_rectangle.top()));
        std::copy_n(from, m_frame_rectangle.width(),
                    reinterpret_cast<QRgb*>(picture.scanLine(y)) + m_frame_rectangle.left());
    }
}

}  // namespace wavo
