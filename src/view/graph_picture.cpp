#include "view/graph_picture.h"

#include <QPainter>
#include <cmath>

#include "graph/draw/display_settings.h"
#include "support/diagnostics.h"
#include "view/graph_board.h"
#include "view/report_texts.h"

namespace wavo {

void GraphPicture::Resize(const QSize& size, qreal device_pixel_ratio) {
    const QSize pixels = (QSizeF(size) * device_pixel_ratio).toSize();
    m_image = pixels.isEmpty() ? QImage() : QImage(pixels, QImage::Format_RGB32);
    m_image.setDevicePixelRatio(device_pixel_ratio);
    m_band.Forget();
    m_blank = true;
}

int GraphPicture::EndOfGraphs(const BandText& text) {
    const double ratio = m_image.devicePixelRatio();
    const QRect band = m_band.Band(m_image, text);
    const int end = band.isEmpty() ? m_image.height() : band.top();
    return static_cast<int>(std::floor(end / ratio));
}

void GraphPicture::Draw(GraphBoard& board, ColorRef background, bool restart, const BandText& text,
                        PixelWriting pixels) {
    m_background = background;
    m_text = text;
    m_is_behind = pixels == PixelWriting::kLater;
    if (m_is_behind) {
        DrawGraphs(board, restart, pixels);
        return;
    }
    m_band.TakeOff(m_image);
    FillBlank(board);
    DrawGraphs(board, restart, pixels);
    m_band.PutOn(m_image, text);
}

bool GraphPicture::CatchUp(GraphBoard& board) {
    if (!m_is_behind) {
        return false;
    }
    m_is_behind = false;
    m_band.TakeOff(m_image);
    FillBlank(board);
    board.PaintAll(m_image);
    m_band.PutOn(m_image, m_text);
    return true;
}

void GraphPicture::FillBlank(const GraphBoard& board) {
    if (m_blank) {
        m_image.fill(ToQColor(m_background));
        for (const auto& drawer : board.Drawers()) {
            drawer->Invalidate();
        }
        m_blank = false;
    }
}

void GraphPicture::DrawGraphs(GraphBoard& board, bool restart, PixelWriting pixels) {
    if (board.Drawers().empty()) {
        return;
    }
    MTRACE(4, view_texts::kDrawingGraphs);
    board.DrawAll(m_image, restart, pixels);
    MTRACE(4, view_texts::kGraphsDrawn);
}

void GraphPicture::CopyTo(QPainter& painter, const QRect& exposed) const {
    const qreal ratio = m_image.devicePixelRatio();
    painter.drawImage(QRectF(exposed), m_image,
                      QRectF(exposed.x() * ratio, exposed.y() * ratio, exposed.width() * ratio,
                             exposed.height() * ratio));
}

}  // namespace wavo
