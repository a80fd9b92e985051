// The off-screen picture of all graphs, with the additional text at its bottom. Drawing is one
// step that takes the new values; exposing only copies the picture.
#pragma once

#include <QImage>
#include <QRect>
#include <QSize>

#include "support/color_ref.h"
#include "view/text_band.h"

class QPainter;

namespace wavo {

class GraphBoard;

class GraphPicture {
 public:
    /// Sets the size (device-independent pixels) and the device pixels per such pixel. What was
    /// drawn is gone.
    void Resize(const QSize& size, qreal device_pixel_ratio);

    /// Nothing can be drawn yet: the size is 0.
    [[nodiscard]] bool IsEmpty() const { return m_image.isNull(); }

    /// The graphs are others: the next step draws the whole picture.
    void Invalidate() { m_blank = true; }

    /// The row, device-independent pixels, where the band of `text` begins: graphs end above it.
    /// The height of the picture without a text.
    [[nodiscard]] int EndOfGraphs(const BandText& text);

    /// One drawing step; `text` stands at the bottom afterwards. With `restart` all buffers are
    /// reset first and the graphs begin anew.
    void Draw(GraphBoard& board, ColorRef background, bool restart, const BandText& text = {});

    /// Copies the part `exposed` to the widget that `painter` paints.
    void CopyTo(QPainter& painter, const QRect& exposed) const;

    [[nodiscard]] const QImage& Image() const { return m_image; }

 private:
    void DrawGraphs(GraphBoard& board, ColorRef background, bool restart);

    QImage m_image;
    TextBand m_band;
    bool m_blank = true;  ///< nothing has been drawn on the image yet
};

}  // namespace wavo
