#include "graph/draw/back_curves.h"

#include <algorithm>
#include <limits>

#include "graph/draw/curve/curve_over_axis.h"
#include "graph/draw/graph_places.h"
#include "graph/draw/shown_history.h"

namespace wavo {

namespace {

bool AreSame(const CurvePlot& a, const CurvePlot& b) {
    return a.area == b.area && a.device_ratio == b.device_ratio && a.x.Lines() == b.x.Lines() &&
           a.y.Lines() == b.y.Lines();
}

}  // namespace

bool BackCurves::Show(const std::optional<BackRun>& run) {
    if (run != m_run) {
        const bool is_moved =
            run && m_run && run->y == m_run->y && run->x == m_run->x && run->lines == m_run->lines;
        if (!is_moved) {
            m_behind.clear();
        }
        m_run = run;
    }
    return m_run.has_value();
}

void BackCurves::Make(const LinesDrawAxis& line, std::size_t axis, Behind* behind) const {
    History& history = *m_run->y[axis];
    behind->plot = line.Plot();
    if (line.OverTime() != nullptr) {
        auto curve = std::make_unique<HistoryCurve>(history, HistoryCurve::Place());
        behind->over_time = curve.get();
        behind->curve = std::move(curve);
        return;
    }
    const std::int64_t first = std::max<std::int64_t>(0, m_run->lines - ShownHistory::kMostPoints);
    std::vector<double> x(static_cast<std::size_t>(m_run->lines - first));
    std::vector<double> y(x.size());
    m_run->x->Values(first, x);
    history.Values(first, y);
    auto curve = std::make_unique<CurveOverAxis>(std::max<std::size_t>(1, x.size()));
    curve->Add({x, y}, *behind->plot);
    behind->curve = std::move(curve);
}

void BackCurves::Draw(const std::vector<std::unique_ptr<LinesDrawAxis>>& lines,
                      const GraphPlaces& places, PlotCanvas& canvas) {
    m_behind.resize(lines.size());
    const std::optional<double> first_time =
        m_run->shift ? places.TimeOfLine(*m_run->shift) : std::nullopt;
    for (std::size_t i = 0; i < lines.size() && i < m_run->y.size(); ++i) {
        const LinesDrawAxis& line = *lines[i];
        const bool is_over_time = line.OverTime() != nullptr;
        if (m_run->y[i] == nullptr || (is_over_time ? !first_time : m_run->x == nullptr)) {
            continue;
        }
        Behind& behind = m_behind[i];
        if (behind.curve == nullptr) {
            Make(line, i, &behind);
        } else if (!AreSame(*behind.plot, line.Plot())) {
            behind.plot = line.Plot();
            behind.curve->Remap(
                *behind.plot,
                {.x_changed = true, .y_changed = true, .force_x = true, .force_y = true});
        }
        if (is_over_time) {
            behind.over_time->SetPlace({0, *first_time, line.Step(), m_run->lines - 1});
        }
        behind.curve->Draw(*behind.plot, line.BackStyle(), canvas);
    }
}

}  // namespace wavo
