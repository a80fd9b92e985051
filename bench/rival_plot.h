// A scene in QCustomPlot 2.1, by the fastest way that its raster painting has:
//
// - One plot for all graphs, all layers in one paint buffer, replotted without being shown: what
//   is measured ends when the buffer is painted, before it is laid over the background.
// - Adaptive sampling, no antialiasing, cosmetic pens, cached labels, fixed margins, solid grid
//   lines, few ticks. Without the plot's hint "fast polylines": cosmetic curves are drawn up to
//   three times as fast in one call as segment by segment.
// - Samples go to the data containers in blocks that are known to be sorted, and old ones leave by
//   removeBefore. A classic curve is two graphs: the sweep, and what is left of the one before it.
// - An automatic scale is kept from the extremes of the new samples; the plot searches nothing.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "bench/plot_scene.h"

class QImage;

namespace wavo::bench {

class RivalPlot {
 public:
    explicit RivalPlot(const Scene& scene);
    ~RivalPlot();
    RivalPlot(const RivalPlot&) = delete;
    RivalPlot& operator=(const RivalPlot&) = delete;

    /// Samples that are held before the plot is shown: `count` of each stream.
    void Hold(const std::vector<const double*>& samples, std::size_t count);

    /// Draws for the first time.
    void Start();

    /// `count` new samples of each stream, `stride` apart.
    void Add(const std::vector<const double*>& samples, std::size_t count, std::size_t stride);

    /// Replots.
    void Draw();

    /// Shows from one part of the time range to another, 0 to 1.
    void Zoom(double from, double to);

    /// The picture of the plot, painted anew.
    [[nodiscard]] QImage Image();

 private:
    class Plot;
    std::unique_ptr<Plot> m_plot;
};

/// What the benchmarks call the rival.
inline constexpr char kRivalName[] = "QCustomPlot replot";

}  // namespace wavo::bench
