// Another run behind the curves of a graph: the same axes, dimmed, on the same scales.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "graph/draw/curve/curve.h"
#include "graph/draw/curve/history_curve.h"
#include "graph/draw/lines_draw_axis.h"
#include "graph/draw/raster/plot_canvas.h"
#include "source/history.h"

namespace wavo {

class GraphPlaces;

struct BackRun {
    std::vector<History*> y;  ///< per y axis; null: nothing of it
    History* x = nullptr;     ///< of a graph over an axis
    std::int64_t lines = 0;   ///< from line 0 on
    /// Over time line i stands where line i + shift of the graph does; nothing is shown without.
    std::optional<std::int64_t> shift;
    std::shared_ptr<const void> keeper;  ///< what the histories are part of

    friend bool operator==(const BackRun&, const BackRun&) = default;
};

class BackCurves {
 public:
    /// Shows another run from now on, or none. True when there is something to draw.
    bool Show(const std::optional<BackRun>& run);

    /// Lists what lies behind `lines`, the curves of a graph, which are there for each y axis;
    /// `places` is the graph's. REQUIRES: there is something to draw.
    void Draw(const std::vector<std::unique_ptr<LinesDrawAxis>>& lines, const GraphPlaces& places,
              PlotCanvas& canvas);

 private:
    struct Behind {
        std::unique_ptr<Curve> curve;
        HistoryCurve* over_time = nullptr;  ///< the same; null over an axis
        std::optional<CurvePlot> plot;      ///< that it was mapped to
    };

    void Make(const LinesDrawAxis& line, std::size_t axis, Behind* behind) const;

    std::optional<BackRun> m_run;
    std::vector<Behind> m_behind;  ///< per y axis
};

}  // namespace wavo
