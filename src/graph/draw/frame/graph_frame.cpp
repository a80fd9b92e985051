#include "graph/draw/frame/graph_frame.h"

#include <QFontMetrics>
#include <QPainter>
#include <QString>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "graph/draw/frame/texts.h"

namespace wavo {

namespace {

/// A plot area with a lower or narrower side, logical pixels, is small.
constexpr int kSmallPlot = 40;

/// Part of a curve's colour in its zero line.
constexpr double kZeroLinePart = 0.45;

int DeviceCoordinate(int logical, double ratio) {
    return ToPixel(std::round(static_cast<double>(logical) * ratio));
}

}  // namespace

GraphFrame::GraphFrame(const WavoGraph& graph, const Looks& looks, const QRect& rectangle)
    : m_graph(graph), m_looks(looks), m_colors(looks.background), m_rectangle(rectangle) {
    Layout();
}

void GraphFrame::SetRectangle(const QRect& rectangle) {
    m_rectangle = rectangle;
    Layout();
}

bool GraphFrame::FitToDevice(double ratio) {
    if (ratio == m_device_ratio || !(ratio > 0.0)) {
        return false;
    }
    m_device_ratio = ratio;
    Layout();
    return true;
}

void GraphFrame::SetLineStyles(bool shown) {
    if (shown != m_looks.line_styles) {
        m_looks.line_styles = shown;
        Invalidate();
    }
}

void GraphFrame::Layout() {
    const QFontMetrics font_metrics(m_looks.font);
    m_metrics.line_height = font_metrics.height() + 4;
    m_metrics.gap = 2 * font_metrics.averageCharWidth();
    m_metrics.minimum_slot = 5 * font_metrics.averageCharWidth();
    m_metrics.slot_width = SlotWidth(font_metrics);
    m_layout = LayoutFrame(m_rectangle, m_metrics, static_cast<int>(m_graph.YCoorAxName.size()));
    const QRect available = m_layout.plot;
    m_layout.plot = RoundPlot(available, m_graph);
    m_device_plot = ToDevice(m_layout.plot);
    if (std::min(m_layout.plot.width(), m_layout.plot.height()) < kSmallPlot) {
        // So small, the rounding from one kind of pixels to the other is seen.
        m_device_plot = RoundPlot(ToDevice(available), m_graph);
        m_layout.plot = ToLogical(m_device_plot);
    }
    m_vertical = VerticalScaleLines(m_device_plot, m_looks.x_scale_lines);
    m_horizontal = HorizontalScaleLines(m_device_plot, m_looks.y_scale_lines);
    Invalidate();
}

int GraphFrame::SlotWidth(const QFontMetrics& font_metrics) const {
    // Room for the longest name and for numbers as they are seen most; not for the numbers of the
    // moment, which would move the picture.
    int name_width = 0;
    for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
        const std::string name = AxisLabel(m_graph.YCoorAxName[i], m_graph.YCoorAxDerivation[i]);
        name_width =
            std::max(name_width, font_metrics.horizontalAdvance(QString::fromStdString(name)));
    }
    const QString numbers = QStringLiteral("Y: =(-100.000 ... 100.000):   dy=100.000");
    return 2 * std::min(name_width, m_rectangle.width()) + font_metrics.horizontalAdvance(numbers) +
           2 * m_metrics.gap;
}

QRect GraphFrame::ToDevice(const QRect& logical) const {
    const int left = DeviceCoordinate(logical.left(), m_device_ratio);
    const int top = DeviceCoordinate(logical.top(), m_device_ratio);
    const int right = DeviceCoordinate(logical.right() + 1, m_device_ratio) - 1;
    const int bottom = DeviceCoordinate(logical.bottom() + 1, m_device_ratio) - 1;
    return {QPoint(left, top), QPoint(right, bottom)};
}

QRect GraphFrame::ToLogical(const QRect& device) const {
    const double ratio = m_device_ratio;
    const QPoint top_left(ToPixel(std::floor(device.left() / ratio)),
                          ToPixel(std::floor(device.top() / ratio)));
    const QPoint bottom_right(ToPixel(std::floor(device.right() / ratio)),
                              ToPixel(std::floor(device.bottom() / ratio)));
    return {top_left, bottom_right};
}

double GraphFrame::XValueAt(int x) const {
    return ValueAtColumn(m_vertical, DeviceCoordinate(x, m_device_ratio));
}

std::optional<int> GraphFrame::PixelOfX(double value) const {
    if (m_vertical.empty() ||
        !(value >= m_vertical.front().value && value <= m_vertical.back().value)) {
        return std::nullopt;
    }
    const std::int32_t pixel = AxisMapping(Coordinate::kX, m_vertical).MapForced(value);
    return std::clamp(ToPixel(std::floor(pixel / m_device_ratio)), m_layout.plot.left(),
                      std::max(m_layout.plot.left(), m_layout.plot.right()));
}

bool GraphFrame::Draw(QImage& picture, const Content& content) {
    const QRect rectangle = ToDevice(m_rectangle) & QRect(QPoint(0, 0), picture.size());
    const bool anew = !m_is_valid || rectangle != m_image_rectangle;
    Said said{content.window, content.state, content.x_scale, m_graph.YScales};
    if (!anew && said == m_said) {
        return false;
    }
    MovingLines lines = LinesOf(content);
    const bool lines_moved = anew || lines != m_lines;
    const bool x_changed =
        said.window != m_said.window || said.state != m_said.state || said.x != m_said.x;
    const bool y_changed = said.y != m_said.y;
    const TextLines changed{anew || x_changed || (m_layout.low && y_changed), anew || y_changed};
    m_said = std::move(said);
    m_lines = std::move(lines);
    if (anew) {
        MakeImage(rectangle);
    }
    PaintTexts(content, changed);
    if (lines_moved) {
        PaintLines(content);
        CopyTo(picture, m_image_rectangle);
        m_is_valid = true;
        return true;
    }
    if (changed.above) {
        CopyTo(picture, AbovePlot());
    }
    if (changed.below) {
        CopyTo(picture, BelowPlot());
    }
    return false;
}

QRect GraphFrame::AbovePlot() const {
    QRect above = m_image_rectangle;
    above.setBottom(std::min(above.bottom(), m_device_plot.top() - 1));
    return above;
}

QRect GraphFrame::BelowPlot() const {
    QRect below = m_image_rectangle;
    below.setTop(std::max(below.top(), m_device_plot.bottom() + 1));
    return below;
}

void GraphFrame::MakeImage(const QRect& rectangle) {
    m_image_rectangle = rectangle;
    if (m_image.size() != rectangle.size()) {
        m_image = rectangle.isEmpty() ? QImage() : QImage(rectangle.size(), QImage::Format_RGB32);
    }
    m_image.fill(m_colors.background);
}

GraphFrame::MovingLines GraphFrame::LinesOf(const Content& content) const {
    MovingLines lines;
    if (!content.curves.empty()) {
        lines.circles = PlaceCircles(m_graph, m_vertical, content.curves.front().y_lines);
    }
    if (!m_graph.ZeroLines) {
        return lines;
    }
    for (const Curve& curve : content.curves) {
        const std::optional<std::int32_t> row = ZeroPixel(Coordinate::kY, curve.y_lines);
        const QColor color = Blend(m_colors.background, curve.shown, kZeroLinePart);
        if (row.has_value() && !lines.zero_rows.emplace(*row, color.rgb()).second) {
            lines.zero_rows[*row] = m_colors.shared_zero_line.rgb();
        }
    }
    if (m_graph.XCoorType == CoorType::kAxis && !content.curves.empty()) {
        lines.zero_column = ZeroPixel(Coordinate::kX, m_vertical);
    }
    return lines;
}

void GraphFrame::PaintLines(const Content& content) {
    if (m_layout.plot.isEmpty() || m_image.isNull()) {
        return;
    }
    QPainter painter(&m_image);
    painter.translate(-m_image_rectangle.topLeft());
    painter.fillRect(m_device_plot, m_colors.background);
    PaintScaleLines(painter, m_vertical, m_horizontal, m_colors);
    for (const auto& [row, color] : m_lines.zero_rows) {
        PaintZeroLine(painter, Coordinate::kY, row, m_device_plot, QColor(color));
    }
    if (m_lines.zero_column.has_value()) {
        const QColor color =
            Blend(m_colors.background, content.curves.front().shown, kZeroLinePart);
        PaintZeroLine(painter, Coordinate::kX, *m_lines.zero_column, m_device_plot, color);
    }
    if (!content.curves.empty()) {
        PaintCircles(painter, m_device_plot, m_lines.circles,
                     CircleColor(m_colors, content.curves.front().shown), m_device_ratio);
    }
    PaintBorder(painter, m_device_plot, m_colors);
}

void GraphFrame::PaintTexts(const Content& content, const TextLines& lines) {
    FrameTexts texts;
    const auto unit_of = [this](const std::string& name, std::int32_t derivation) {
        const auto found = m_looks.units.find(name);
        return found == m_looks.units.end() ? std::string()
                                            : DerivedUnit(found->second, derivation);
    };
    texts.x_text = XAxisText(m_graph, content.window);
    if (m_graph.XCoorType == CoorType::kAxis) {
        texts.x_text.unit = unit_of(m_graph.XCoorAxName, 0);
    }
    texts.x_spacing =
        QString::fromStdString(XSpacingText(m_graph, content.x_scale, m_looks.x_scale_lines));
    texts.state = content.state;
    for (std::size_t i = 0; i < content.curves.size(); ++i) {
        const std::string& name = m_graph.YCoorAxName[i];
        const std::string marked_name = AxisLabel(name, m_graph.YCoorAxDerivation[i]);
        texts.y.push_back({YAxisText(m_graph, i, name),
                           QString::fromStdString(YSpacingText(m_graph, i, m_looks.y_scale_lines)),
                           YAxisText(m_graph, i, marked_name), content.curves[i].chosen});
        texts.y.back().text.unit = texts.y.back().alone.unit =
            unit_of(name, m_graph.YCoorAxDerivation[i]);
        if (m_looks.line_styles) {
            texts.y.back().dashes = DashPattern(i, 1.0);
        }
    }
    if (m_layout.plot.isEmpty() || m_image.isNull()) {
        return;
    }
    QPainter painter(&m_image);
    painter.translate(-m_image_rectangle.topLeft());
    if (lines.above) {
        painter.fillRect(AbovePlot(), m_colors.background);
    }
    if (lines.below) {
        painter.fillRect(BelowPlot(), m_colors.background);
    }
    painter.scale(m_device_ratio, m_device_ratio);
    painter.setFont(m_looks.font);
    wavo::PaintTexts(painter, m_layout, m_metrics, texts, m_colors, lines);
}

void GraphFrame::CopyTo(QImage& picture, const QRect& part) const {
    if (m_image.isNull()) {
        return;
    }
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const auto* const from =
            reinterpret_cast<const QRgb*>(m_image.constScanLine(y - m_image_rectangle.top()));
        std::copy_n(from, m_image_rectangle.width(),
                    reinterpret_cast<QRgb*>(picture.scanLine(y)) + m_image_rectangle.left());
    }
}

}  // namespace wavo
