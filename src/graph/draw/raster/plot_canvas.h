// The plot area of a graph within the picture: curves over a background that stays.
//
// A drawing lists its curves; at its end the canvas brings the picture from what the drawing before
// left to what the new one shows, and touches only pixels that may differ. Columns are handled in
// blocks, each with the range of rows that its curves cover.
//
// Invariants:
// 1. After End the plot area shows the background and over it the curves in the order in which
//    they were listed.
// 2. Pixels outside the plot area and outside the picture are never touched.
// 3. All lengths are device pixels.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/pixel_runs.h"
#include "graph/draw/raster/span_pixels.h"

namespace wavo {

class PlotCanvas {
 public:
    /// Draws into the image and adds the pixels that it may have touched.
    using Painting = std::function<void(QImage&, PixelRuns&)>;

    /// Draws over nothing but the background. `area` is the part of the plot area that is visible,
    /// `target` begins at its top left. `go_on`: the picture shows what the last call has drawn,
    /// but for what that added to `touched`.
    struct AlonePainting {
        bool can_go_on = false;
        std::function<void(QImage& picture, const QRect& area, const PixelColumns& target,
                           bool go_on, PixelRuns& touched)>
            paint;  ///< may be null
    };

    /// Forgets what was drawn: the picture now shows the background in the plot area.
    void Forget();

    /// Begins a drawing. `background` is the picture of the graph without curves, its top left
    /// pixel at `origin` of the picture; it covers the plot area. Both stay until End. Nothing is
    /// drawn when the plot area begins left of the picture. REQUIRES: background, origin and plot
    /// area are those of the last drawing, unless Forget was called since.
    void Begin(QImage& picture, const QImage& background, const QPoint& origin, const QRect& plot);

    /// Lists a curve in an opaque colour. `spans` stays unchanged until End. REQUIRES: it has the
    /// columns of the plot area, and rows within it.
    void Add(const ColumnSpans& spans, QRgb color);

    /// A version that nothing was listed with, of whatever curve.
    [[nodiscard]] static std::uint64_t NewVersion();

    /// Lists a curve that draws itself, clipped to the plot area. `version`, from NewVersion,
    /// changes with what it draws. `alone` draws the same where it is the only layer.
    void Add(Painting painting, std::uint64_t version, AlonePainting alone);
    void Add(Painting painting, std::uint64_t version) {
        Add(std::move(painting), version, AlonePainting());
    }

    void End();

 private:
    /// Blocks higher than this on the average are painted row by row across the plot area, as the
    /// memory lies; lower ones each by itself.
    static constexpr int kHighBlock = 96;

    /// A block is painted column by column when the pixels to be painted are less than one in so
    /// many of its area: single pixels cost that much more than those of a row.
    static constexpr int kSparse = 16;

    struct Layer {
        const ColumnSpans* spans = nullptr;  // null: painting
        QRgb color = 0;
        Painting painting;
        std::uint64_t version = 0;
        AlonePainting alone;
    };

    /// What a layer looked like in the drawing before.
    struct DrawnLayer {
        bool painted = false;
        QRgb color = 0;
        std::uint64_t version = 0;
        ColumnSpans spans;
    };

    /// Rows of a block that are covered somewhere; none when top > bottom.
    struct Rows {
        int top = ColumnSpans::kNoTop;
        int bottom = ColumnSpans::kNoBottom;
        int pixels = 0;  ///< that are covered
        // Rows in between that every column covers, none when full_top > full_bottom.
        int full_top = ColumnSpans::kNoTop;
        int full_bottom = ColumnSpans::kNoBottom;
        bool keep_full = false;  ///< they need not be painted

        void Take(const Rows& other);
        [[nodiscard]] int Count() const { return bottom < top ? 0 : bottom - top + 1; }
        [[nodiscard]] bool Has(int row) const { return top <= row && row <= bottom; }
        /// A row that need not be painted.
        [[nodiscard]] bool Keeps(int row) const {
            return keep_full && full_top <= row && row <= full_bottom;
        }
    };

    [[nodiscard]] bool HasPaintings() const;
    [[nodiscard]] bool LayersAreAsBefore() const;
    [[nodiscard]] bool BlockIsAsBefore(int block) const;
    [[nodiscard]] std::vector<std::uint8_t> BlocksAsBefore() const;
    /// One curve, and the same one as before.
    [[nodiscard]] bool IsOneCurveAsBefore() const;
    /// All layers can be painted in one go, each pixel once.
    [[nodiscard]] bool IsStack() const;
    void FindRows();
    void TakeSpans(const ColumnSpans& spans, std::vector<Rows>& rows) const;
    void FindEqualRows();
    void PaintBlocks();
    void PaintLayers();
    void PaintAlone();
    /// The visible part of the plot area.
    [[nodiscard]] PixelColumns Target() const;
    /// Rows of a block that the layers cover now or have covered before, apart from each other and
    /// from the top down.
    void FindStretches(int block);
    void AddStretch(const Rows& rows);
    void PaintStretch(int block, const Rows& stretch);
    /// Paints rows of some blocks with all layers.
    void PaintStretchRows(int first_block, int end_block, int first_row, int last_row);
    /// High blocks, row by row across the plot area.
    void PaintHighBlocks(const std::vector<Rows>& rows);
    /// Paints a curve (none when null) in the rows given per block, over the background or over
    /// what the picture shows there.
    void PaintRows(const std::vector<Rows>& rows, const ColumnSpans* spans, QRgb color,
                   bool over_background);
    /// Paints a part of a row, blocks from `first_block` to before `end_block`.
    void PaintRowPart(int row, int first_block, int end_block, const ColumnSpans* spans, QRgb color,
                      bool over_background);
    /// Paints one block column by column: first the background where the curves were, then a curve
    /// (none when null).
    void PaintColumns(int block, const ColumnSpans* spans, QRgb color, bool restore);
    /// The same within some rows: the background where the curves were, then all layers.
    void PaintStretchColumns(int block, const Rows& stretch);
    void PaintColumn(int column, int top, int bottom, const QRgb* color);
    void PaintMore(const ColumnSpans& spans, QRgb color);
    [[nodiscard]] const QRgb* BackgroundRow(int row) const;
    [[nodiscard]] QRgb* PictureRow(int row) const;
    /// Brings the background back where the last drawing was.
    void Restore();
    void KeepLayers();
    [[nodiscard]] int Blocks() const;
    [[nodiscard]] int BlockWidth(int block) const;

    QImage* m_picture = nullptr;
    const QImage* m_background = nullptr;
    QPoint m_origin;
    QRect m_plot;     // as the spans count
    QRect m_visible;  // the part of it within the picture
    std::vector<Layer> m_layers;

    /// Per row of the plot area, the first row with the same background: most rows look alike, and
    /// one of them stays in the nearest cache.
    std::vector<int> m_equal_rows;
    int m_first_row = 0;       // of the plot area that is visible
    QRgb* m_pixels = nullptr;  // of the picture, at the visible part's top left
    std::ptrdiff_t m_stride = 0;
    const QRgb* m_under = nullptr;  // the background at the visible part's top left
    std::ptrdiff_t m_under_stride = 0;

    std::vector<DrawnLayer> m_drawn;
    bool m_drawn_alone = false;      // by an AlonePainting
    std::vector<Rows> m_drawn_rows;  // per block, of all layers of the last drawing
    std::vector<std::vector<Rows>> m_drawn_layer_rows;  // the same per layer
    std::vector<std::vector<Rows>> m_rows;              // per layer and block, of this drawing
    std::vector<Rows> m_stretches;                      // of the block that is painted
    std::vector<StackedSpans> m_stack;                  // of the layers that are painted together
    PixelRuns m_painted;                                // by paintings of the last drawing
};

}  // namespace wavo
