// The off-screen picture of all graphs, with the additional text at its bottom. Drawing is one
// step that takes the new values; exposing only copies the picture.
#pragma once

#include <QImage>
#include <QRect>
#include <QSize>

#include "graph/draw/graph_draw.h"
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
    /// reset first and the graphs begin anew. With PixelWriting::kLater the picture stays as it is
    /// until CatchUp or the next step.
    void Draw(GraphBoard& board, ColorRef background, bool restart, const BandText& text = {},
              PixelWriting pixels = PixelWriting::kNow);

    /// Brings the picture to what the last step shows. True when that took drawing. REQUIRES: the
    /// graphs are those of the last step.
    bool CatchUp(GraphBoard& board);

    /// Copies the part `exposed` to the widget that `painter` paints.
    void CopyTo(QPainter& painter, const QRect& exposed) const;

    [[nodiscard]] const QImage& Image() const { return m_image; }

 private:
    void DrawGraphs(GraphBoard& board, bool restart, PixelWriting pixels);
    void FillBlank(const GraphBoard& board);

    QImage m_image;
    TextBand m_band;
    bool m_blank = true;        ///< nothing has been drawn on the image yet
    bool m_is_behind = false;   ///< steps have left the pixels as they were
    ColorRef m_background = 0;  ///< of the last step
    BandText m_text;            ///< of the last step
};

}  // namespace wavo
