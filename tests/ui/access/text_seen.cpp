#include "text_seen.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>
#include <algorithm>
#include <map>

#include "seen_contrast.h"

namespace wavo::testing {

namespace {

/// Keeps where texts are drawn, and nothing else.
class TextEngine : public QPaintEngine {
 public:
    TextEngine() : QPaintEngine(QPaintEngine::AllFeatures) {}

    bool begin(QPaintDevice* /*device*/) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState& state) override {
        if ((state.state() & QPaintEngine::DirtyTransform) != 0) {
            m_transform = state.transform();
        }
    }
    void drawPixmap(const QRectF& /*to*/, const QPixmap& /*pixmap*/,
                    const QRectF& /*from*/) override {}
    void drawPath(const QPainterPath& /*path*/) override {}
    void drawPolygon(const QPointF* /*points*/, int /*count*/, PolygonDrawMode /*mode*/) override {}
    void drawTextItem(const QPointF& base, const QTextItem& item) override {
        if (item.text().trimmed().isEmpty()) {
            return;
        }
        const QRectF place(base.x(), base.y() - item.ascent(), item.width(),
                           item.ascent() + item.descent());
        texts.push_back({item.text(), m_transform.mapRect(place).toAlignedRect()});
    }
    [[nodiscard]] Type type() const override { return QPaintEngine::User; }

    std::vector<PaintedText> texts;

 private:
    QTransform m_transform;
};

class TextDevice : public QPaintDevice {
 public:
    explicit TextDevice(const QWidget& like) : m_like(like) {}
    [[nodiscard]] QPaintEngine* paintEngine() const override { return &m_engine; }
    [[nodiscard]] std::vector<PaintedText>& Texts() { return m_engine.texts; }

 protected:
    [[nodiscard]] int metric(PaintDeviceMetric metric) const override {
        switch (metric) {
            case PdmWidth:
                return m_like.width();
            case PdmHeight:
                return m_like.height();
            case PdmDpiX:
            case PdmPhysicalDpiX:
                return m_like.logicalDpiX();
            case PdmDpiY:
            case PdmPhysicalDpiY:
                return m_like.logicalDpiY();
            case PdmDevicePixelRatio:
                return 1;
            case PdmDevicePixelRatioScaled:
                return static_cast<int>(devicePixelRatioFScale());
            case PdmDepth:
                return 32;
            default:
                return 0;
        }
    }

 private:
    const QWidget& m_like;
    mutable TextEngine m_engine;
};

}  // namespace

std::vector<PaintedText> TextsOf(QWidget& widget) {
    TextDevice device(widget);
    widget.render(&device, QPoint(), QRegion(), QWidget::RenderFlags());
    return device.Texts();
}

double SeenContrastIn(const QImage& picture, const QRect& part) {
    const double ratio = picture.devicePixelRatio();
    const QRect pixels =
        QRect(QPoint(static_cast<int>(part.left() * ratio), static_cast<int>(part.top() * ratio)),
              part.size() * ratio) &
        picture.rect();
    std::map<QRgb, int> counts;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x) {
            ++counts[picture.pixel(x, y)];
        }
    }
    if (counts.empty()) {
        return 1.0;
    }
    const QColor ground(
        std::max_element(counts.begin(), counts.end(), [](const auto& a, const auto& b) {
            return a.second < b.second;
        })->first);
    double most = 1.0;
    for (const auto& [color, count] : counts) {
        most = std::max(most, SeenContrast(QColor(color), ground));
    }
    return most;
}

}  // namespace wavo::testing
