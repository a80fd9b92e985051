// The envelope of a whole history as a picture of its own, on a scale of its own.
#pragma once

#include <QImage>
#include <QSize>
#include <cstdint>
#include <memory>

#include "graph/draw/curve/curve.h"
#include "graph/draw/curve/history_curve.h"
#include "graph/draw/raster/plot_canvas.h"
#include "source/history.h"
#include "support/color_ref.h"

namespace wavo {

class Envelope {
 public:
    /// What is drawn.
    struct Wanted {
        History* history = nullptr;  ///< not owned
        LineRange lines;             ///< at least 2
        double cycle_time = 0.0;     ///< seconds per line
        QSize size;                  ///< device pixels
        ColorRef color = 0;
        ColorRef background = 0;

        friend bool operator==(const Wanted&, const Wanted&) = default;
    };

    /// Draws it, as far as the history lets it; again, and closer, with each call until it is
    /// exact.
    void Draw(const Wanted& wanted);
    /// Forgets the history.
    void Clear();

    /// Null before the first drawing.
    [[nodiscard]] const QImage& Picture() const { return m_picture; }
    [[nodiscard]] bool IsExact() const { return m_curve == nullptr || m_curve->IsComplete(); }

 private:
    void Begin();

    Wanted m_wanted;
    std::uint64_t m_version = 0;  // of the history
    std::unique_ptr<HistoryCurve> m_curve;
    std::unique_ptr<CurvePlot> m_plot;
    PlotCanvas m_canvas;
    QImage m_background;
    QImage m_picture;
};

}  // namespace wavo
