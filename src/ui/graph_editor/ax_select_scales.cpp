// The handlers of scales, modes and circles.
#include <algorithm>
#include <cmath>

#include "support/diagnostics.h"
#include "support/number_text.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/graph_editor/graph_edits.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

using enum EditorControl;

namespace {

constexpr double kDefaultYMaximum = 10.0;
/// Fade-out times that differ by less are the same, seconds.
constexpr double kFadeOutTolerance = 0.001;

double ReadBound(const std::string& text) {
    return std::clamp(ReadDouble(text), -kLargestBound, kLargestBound);
}

}  // namespace

PlotSize CAxSelect::PlotSizeOf(const WavoGraph& graph) const {
    return m_plot_sizes ? m_plot_sizes(graph.GraphNumber) : PlotSize();
}

void CAxSelect::ReadXScale(WavoGraph& graph) const {
    ScaleDefinition& scale = graph.XScale;
    if (IsChecked(kXTime)) {
        scale.ScaleType = ScaleTypeCode::kTime;
        if (m_zooms.count(graph.GraphNumber) == 0) {  // else the edit shows the zoom's span
            scale.TimeRange = ReadDouble(Text(kTimeRange));
        }
        if (!(scale.TimeRange > kMinTimeRange)) {
            scale.TimeRange = kDefaultTimeRange;
        }
        return;
    }
    scale.ScaleType = ScaleTypeCode::kAxis;
    scale.ScaleAx = ScaleAxCode::kAutomatic;
    if (IsChecked(kXAutomatic) || !IsChecked(kXManual)) {
        return;
    }
    const double minimum = ReadDouble(Text(kXMinimum));
    const double maximum = ReadDouble(Text(kXMaximum));
    if (maximum >= minimum) {
        scale.ScaleAx = ScaleAxCode::kManual;
        scale.Minimum = minimum;
        scale.Maximum = maximum;
    }
}

void CAxSelect::ApplyTimeToAllGraphs(double time) {
    for (WavoGraph graph : std::vector(m_graphs->Graphs())) {
        graph.XScale.ScaleType = ScaleTypeCode::kTime;
        graph.XScale.TimeRange = time;
        m_graphs->Put(std::move(graph), GraphList::Telling::kSilent);
    }
}

void CAxSelect::TakeTime() {
    Change([this](WavoGraph& graph) {
        ReadXScale(graph);
        if (AllGraphs()) {
            ApplyTimeToAllGraphs(graph.XScale.TimeRange);
        }
        return true;
    });
}

void CAxSelect::OnXTime() {
    const WavoGraph* const graph = Selected();
    if (graph != nullptr && graph->XCoorType == CoorType::kAxis) {
        SetChecked(kXAutomatic, true);
        return;
    }
    TakeTime();
}

void CAxSelect::OnTimeRange() {
    const WavoGraph* const graph = Selected();
    if (graph != nullptr && graph->XCoorType == CoorType::kTime) {
        TakeTime();
    }
}

void CAxSelect::OnAllGraphs() {
    if (AllGraphs()) {
        OnTimeRange();
    }
}

void CAxSelect::OnXAutomatic() {
    Change([this](WavoGraph& graph) {
        if (graph.XCoorType != CoorType::kAxis || graph.XScale.ScaleType != ScaleTypeCode::kAxis) {
            SetChecked(kXTime, true);
            return false;
        }
        ReadXScale(graph);
        return true;
    });
}

void CAxSelect::OnXManual() {
    const bool changed = Change([this](WavoGraph& graph) {
        if (graph.XCoorType != CoorType::kAxis) {
            SetChecked(kXTime, true);
            return false;
        }
        ReadXScale(graph);
        if (graph.XScale.ScaleAx == ScaleAxCode::kAutomatic) {
            SetChecked(kXAutomatic, true);
        }
        return true;
    });
    if (changed) {
        ShowWithChosenAxis();
    }
}

void CAxSelect::OnXBound(EditorControl id) {
    const std::string text = Text(id);
    bool goes_up = false;
    Change(
        [&](WavoGraph& graph) {
            ScaleDefinition& scale = graph.XScale;
            if (scale.ScaleType != ScaleTypeCode::kAxis || scale.ScaleAx != ScaleAxCode::kManual ||
                text.empty()) {
                return false;
            }
            (id == kXMinimum ? scale.Minimum : scale.Maximum) = ReadBound(text);
            // Round circles find a maximum for every minimum.
            goes_up = scale.Maximum > scale.Minimum || (id == kXMinimum && graph.AutoCircle);
            if (goes_up) {
                KeepCirclesRound(graph, 0, PlotSizeOf(graph));
            }
            return true;
        },
        false);
    if (goes_up) {
        ShowWithChosenAxis();
        Announce(SelectedNumber());
    }
}

void CAxSelect::OnYBound(EditorControl id) {
    const std::string text = Text(id);
    bool goes_up = false;
    bool moved_x = false;
    Change(
        [&](WavoGraph& graph) {
            const std::optional<std::size_t> axis = ChosenAxis(graph);
            if (!axis.has_value() || *axis >= graph.YScales.size() || text.empty()) {
                return false;
            }
            ScaleDefinition& scale = graph.YScales[*axis];
            if (scale.ScaleType != ScaleTypeCode::kAxis || scale.ScaleAx != ScaleAxCode::kManual) {
                return false;
            }
            (id == kYMinimum ? scale.Minimum : scale.Maximum) = ReadBound(text);
            goes_up = scale.Maximum > scale.Minimum;
            moved_x = goes_up && graph.XCoorType == CoorType::kAxis && graph.AutoCircle;
            if (moved_x) {
                KeepCirclesRound(graph, *axis, PlotSizeOf(graph));
            }
            return true;
        },
        false);
    if (moved_x) {
        ShowWithChosenAxis();
    }
    if (goes_up) {
        Announce(SelectedNumber());
    }
}

void CAxSelect::OnYAutomatic() {
    Change([this](WavoGraph& graph) {
        const std::optional<std::size_t> axis = ChosenAxis(graph);
        if (!axis.has_value() || *axis >= graph.YScales.size() ||
            graph.YScales[*axis].ScaleType != ScaleTypeCode::kAxis) {
            MERRLOG(editor_texts::kBadYScaleType);
            ShowAgain();
            return false;
        }
        graph.YScales[*axis].ScaleAx = ScaleAxCode::kAutomatic;
        return true;
    });
}

void CAxSelect::OnYManual() {
    const bool changed = Change([this](WavoGraph& graph) {
        const std::optional<std::size_t> axis = ChosenAxis(graph);
        const std::string minimum_text = Text(kYMinimum);
        const std::string maximum_text = Text(kYMaximum);
        const bool both_empty = minimum_text.empty() && maximum_text.empty();
        const double minimum = both_empty ? 0.0 : ReadDouble(minimum_text);
        const double maximum = both_empty ? kDefaultYMaximum : ReadDouble(maximum_text);
        if (!axis.has_value() || *axis >= graph.YScales.size()) {
            ShowAgain();
            return false;
        }
        if (!(minimum < maximum)) {
            SetChecked(kYAutomatic, true);
            return false;
        }
        ScaleDefinition& scale = graph.YScales[*axis];
        scale.ScaleAx = ScaleAxCode::kManual;
        scale.Minimum = minimum;
        scale.Maximum = maximum;
        return true;
    });
    if (changed) {
        ShowWithChosenAxis();
    }
}

void CAxSelect::SetMode(GraphMode mode) {
    Change([mode](WavoGraph& graph) {
        if (graph.Mode == mode) {
            return false;
        }
        if (mode == GraphMode::kClassic) {
            MTRACE(1, editor_texts::kModeClassic);
        } else {
            MTRACE(1, editor_texts::kModeContinuity);
        }
        graph.Mode = mode;
        return true;
    });
    if (Selected() != nullptr) {
        SelectGraph();
    }
}

void CAxSelect::SetModeAx(AxisDrawMode mode) {
    Change([mode](WavoGraph& graph) {
        if (graph.ModeAx == mode) {
            return false;
        }
        if (mode == AxisDrawMode::kLines) {
            MTRACE(1, editor_texts::kModeLines);
        } else {
            MTRACE(1, editor_texts::kModePoints);
        }
        graph.ModeAx = mode;
        return true;
    });
}

void CAxSelect::OnAutoCircle() {
    Change([this](WavoGraph& graph) {
        graph.AutoCircle = IsChecked(kAutoCircle);
        if (graph.AutoCircle) {
            graph.XScale.ScaleAx = ScaleAxCode::kManual;
            const std::optional<std::size_t> axis = ChosenAxis(graph);
            if (axis.has_value() && *axis < graph.YScales.size()) {
                graph.YScales[*axis].ScaleAx = ScaleAxCode::kManual;
            }
        }
        return true;
    });
    ShowWithChosenAxis();
}

void CAxSelect::OnZeroLines() {
    Change([this](WavoGraph& graph) {
        graph.ZeroLines = IsChecked(kZeroLines);
        return true;
    });
    ShowWithChosenAxis();
}

void CAxSelect::OnCircle(EditorControl id) {
    const std::string text = Text(id);
    Change([&](WavoGraph& graph) {
        if (graph.XScale.ScaleType != ScaleTypeCode::kAxis || graph.YScales.size() != 1) {
            return false;
        }
        const bool inner = id == kInnerCircle;
        double& dx = inner ? graph.InnerGuidingCircleDX : graph.OuterGuidingCircleDX;
        double& dy = inner ? graph.InnerGuidingCircleDY : graph.OuterGuidingCircleDY;
        dx = text.empty() ? kNoRadius : ReadDouble(text);
        if (text.empty()) {
            dy = kNoRadius;
        }
        return true;
    });
}

void CAxSelect::OnFadeOutTime() {
    const std::string text = Text(kFadeOutTime);
    if (text.empty()) {
        return;
    }
    const double time = ReadDouble(text);
    Change([time](WavoGraph& graph) {
        if (!(time > 0.0) || !(std::abs(time - graph.FadeOutTime) > kFadeOutTolerance)) {
            return false;
        }
        graph.FadeOutTime = time;
        return true;
    });
}

}  // namespace wavo
