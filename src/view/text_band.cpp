#include "view/text_band.h"

#include <QFontMetrics>
#include <QPainter>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "graph/draw/display_settings.h"

namespace wavo {

QRect TextBand::Band(const QImage& picture, const BandText& text) {
    if (text.text.empty() || picture.isNull()) {
        return {};
    }
    SetFont(text.font);
    const double height = QFontMetrics(m_font).height() * picture.devicePixelRatio();
    const QRect band(0, picture.height() - static_cast<int>(std::ceil(height)), picture.width(),
                     static_cast<int>(std::ceil(height)));
    return band & picture.rect();
}

void TextBand::PutOn(QImage& picture, const BandText& text) {
    const QRect band = Band(picture, text);
    if (band.isEmpty()) {
        return;
    }
    m_band = band;
    m_under = picture.copy(band);

    const double ratio = picture.devicePixelRatio();
    const QRectF area(band.x() / ratio, band.y() / ratio, band.width() / ratio,
                      band.height() / ratio);
    QPainter painter(&picture);
    painter.setClipRect(area);
    painter.setFont(m_font);
    painter.setPen(ToQColor(text.color));
    const QString shown = QFontMetrics(m_font).elidedText(
        QString::fromStdString(text.text), Qt::ElideRight, static_cast<int>(area.width()));
    painter.drawText(area, Qt::AlignCenter | Qt::TextSingleLine, shown);
}

void TextBand::TakeOff(QImage& picture) {
    if (!m_under.isNull()) {
        for (int row = 0; row < m_under.height(); ++row) {
            std::memcpy(picture.scanLine(m_band.top() + row), m_under.constScanLine(row),
                        static_cast<std::size_t>(m_under.width()) * sizeof(QRgb));
        }
        m_under = QImage();
    }
}

void TextBand::SetFont(const FontDescription& description) {
    if (!m_font_made || description != m_description) {
        m_description = description;
        m_font = MakeFont(description);
        m_font_made = true;
    }
}

}  // namespace wavo
