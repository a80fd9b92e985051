#include "ui/graph_editor/scales_page.h"

#include <QWidget>
#include <utility>
#include <vector>

#include "support/diagnostics.h"
#include "support/number_text.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

using enum EditorControl;

namespace {

constexpr double kDefaultYMaximum = 10.0;

bool IsBlank(const std::string& text) {
    return text.find_first_not_of(" \t") == std::string::npos;
}

bool IsMinimum(EditorControl id) {
    return id == kXMinimum || id == kYMinimum;
}

}  // namespace

struct ScalesPage::ScaleFields {
    EditorControl automatic;
    EditorControl manual;
    EditorControl minimum;
    EditorControl maximum;
};

ScalesPage::ScalesPage(EditorFields& fields, GraphEditing& editing) : EditorPage(fields, editing) {
    OnClick(kXTime, [this] { OnXTime(); });
    OnClick(kXAutomatic, [this] { OnXAutomatic(); });
    OnClick(kXManual, [this] { OnXManual(); });
    OnClick(kAllGraphs, [this] {
        if (AllGraphs()) {
            OnTimeRange();
        }
    });
    OnClick(kYAutomatic, [this] { OnYAutomatic(); });
    OnClick(kYManual, [this] { OnYManual(); });
    ConnectTexts();
}

void ScalesPage::ConnectTexts() {
    OnText(kTimeRange, [this] { OnTimeRange(); });
    OnLeft(kTimeRange, [this](const WavoGraph& graph) {
        if (!IsZoomed(graph)) {
            ShowTakenNumber(kTimeRange, graph.XScale.TimeRange, 3);
        }
    });
    for (const EditorControl id : {kXMinimum, kXMaximum}) {
        OnText(id, [this, id] { OnXBound(id); });
        OnLeft(id, [this, id](const WavoGraph& graph) {
            ShowTakenBound(id, graph.XScale,
                           graph.XCoorType == CoorType::kAxis && !IsManual(graph.XScale));
        });
    }
    for (const EditorControl id : {kYMinimum, kYMaximum}) {
        OnText(id, [this, id] { OnYBound(id); });
        OnLeft(id, [this, id](const WavoGraph& graph) {
            const std::optional<std::size_t> axis = m_editing.ChosenAxis(graph);
            if (axis.has_value() && *axis < graph.YScales.size()) {
                ShowTakenBound(id, graph.YScales[*axis], !IsManual(graph.YScales[*axis]));
            }
        });
    }
}

// `waits`: a click on `manual` is going to take what stands in the edit.
void ScalesPage::ShowTakenBound(EditorControl id, const ScaleDefinition& scale, bool waits) {
    if (!waits) {
        const double bound = IsMinimum(id) ? scale.Minimum : scale.Maximum;
        ShowTakenNumber(id, HasBounds(scale) ? std::optional(bound) : std::nullopt, 6);
    } else if (const std::string text = m_fields.Text(id); !IsBlank(text)) {
        ShowTakenNumber(id, ReadDouble(text), 6);
    }
}

bool ScalesPage::IsZoomed(const WavoGraph& graph) const {
    return m_editing.Known().zooms.contains(graph.GraphNumber);
}

void ScalesPage::SetCycleTime(double cycle_time) {
    m_fields.Control(kTimeRange)
        .setToolTip(QString::fromUtf8(FindEditorRow(kTimeRange).tip) +
                    QStringLiteral("\nThe master sends a value every %1 s.").arg(cycle_time));
}

void ScalesPage::SetZooms(std::map<std::uint32_t, double> spans) {
    std::map<std::uint32_t, double>& zooms = m_editing.Known().zooms;
    const std::uint32_t shown = m_editing.ShownNumber();
    const bool shows_another_span = spans.contains(shown) || zooms.contains(shown);
    zooms = std::move(spans);
    const WavoGraph* const graph = m_editing.Find(shown);
    if (shows_another_span && graph != nullptr) {
        ShowTimeRange(*graph);
    }
    EnableTimeRange();
}

void ScalesPage::Show(const WavoGraph& graph, std::size_t axis) {
    ShowTimeRange(graph);
    m_fields.SetChecked(kXTime, graph.XScale.ScaleType == ScaleTypeCode::kTime);
    DisplayScaleAx(graph.XScale, {kXAutomatic, kXManual, kXMinimum, kXMaximum});
    if (axis < graph.YScales.size()) {
        DisplayScaleAx(graph.YScales[axis], {kYAutomatic, kYManual, kYMinimum, kYMaximum});
    } else {
        m_fields.SetChecked(kYAutomatic, false);
        m_fields.SetChecked(kYManual, false);
        m_fields.SetText(kYMinimum, {});
        m_fields.SetText(kYMaximum, {});
    }
    EnableControls(graph);
}

void ScalesPage::ShowTimeRange(const WavoGraph& graph) {
    const double span =
        IsZoomed(graph) ? m_editing.Known().zooms.at(graph.GraphNumber) : graph.XScale.TimeRange;
    m_fields.SetNumber(kTimeRange, span, 3);
}

void ScalesPage::DisplayScaleAx(const ScaleDefinition& scale, const ScaleFields& fields) {
    const bool is_axis = scale.ScaleType == ScaleTypeCode::kAxis;
    if (!is_axis && scale.ScaleType != ScaleTypeCode::kTime) {
        MERRLOG(editor_texts::kBadScaleType);
    }
    m_fields.SetChecked(fields.automatic, is_axis && scale.ScaleAx == ScaleAxCode::kAutomatic);
    m_fields.SetChecked(fields.manual, IsManual(scale));
    const bool given = HasBounds(scale);
    m_fields.SetNumber(fields.minimum, given ? std::optional(scale.Minimum) : std::nullopt, 6);
    m_fields.SetNumber(fields.maximum, given ? std::optional(scale.Maximum) : std::nullopt, 6);
}

void ScalesPage::EnableControls(const WavoGraph& graph) {
    const bool x_is_axis = graph.XCoorType == CoorType::kAxis;
    const bool free_scales = !(x_is_axis && graph.AutoCircle);
    m_fields.SetEnabled(kXManual, x_is_axis);
    m_fields.SetEnabled(kXTime, !x_is_axis);
    m_fields.SetEnabled(kXAutomatic, x_is_axis && free_scales);
    m_fields.SetEnabled(kYAutomatic, free_scales);
    EnableTimeRange();
}

void ScalesPage::EnableTimeRange() {
    const bool enabled = m_editing.Known().zooms.empty() && m_fields.IsChecked(kXIsTime);
    m_fields.SetEnabled(kTimeRange, enabled);
    m_fields.SetEnabled(kAllGraphs, enabled);
}

XScaleChoice ScalesPage::ReadXScale(const WavoGraph& graph) const {
    XScaleChoice choice;
    choice.is_time = m_fields.IsChecked(kXTime);
    if (!IsZoomed(graph)) {  // else the edit shows the zoom's span
        choice.time_range = ReadDouble(m_fields.Text(kTimeRange));
    }
    choice.is_manual = m_fields.IsChecked(kXManual);
    choice.minimum = ReadDouble(m_fields.Text(kXMinimum));
    choice.maximum = ReadDouble(m_fields.Text(kXMaximum));
    return choice;
}

void ScalesPage::ApplyTimeToAllGraphs(double time) {
    GraphList& graphs = *m_editing.Document();
    for (WavoGraph graph : std::vector(graphs.Graphs())) {
        graph.XScale.ScaleType = ScaleTypeCode::kTime;
        graph.XScale.TimeRange = time;
        graphs.Put(std::move(graph), GraphList::Telling::kSilent);
    }
}

void ScalesPage::TakeTime() {
    m_editing.Change([this](WavoGraph& graph) {
        SetXScale(graph, ReadXScale(graph));
        if (AllGraphs()) {
            ApplyTimeToAllGraphs(graph.XScale.TimeRange);
        }
        return true;
    });
}

void ScalesPage::OnXTime() {
    const WavoGraph* const graph = m_editing.Selected();
    if (graph != nullptr && graph->XCoorType == CoorType::kAxis) {
        m_fields.SetChecked(kXAutomatic, true);
        return;
    }
    TakeTime();
}

void ScalesPage::OnTimeRange() {
    const WavoGraph* const graph = m_editing.Selected();
    if (graph != nullptr && graph->XCoorType == CoorType::kTime) {
        TakeTime();
    }
}

void ScalesPage::OnXAutomatic() {
    m_editing.Change([this](WavoGraph& graph) {
        if (graph.XCoorType != CoorType::kAxis || graph.XScale.ScaleType != ScaleTypeCode::kAxis) {
            m_fields.SetChecked(kXTime, true);
            return false;
        }
        SetXScale(graph, ReadXScale(graph));
        return true;
    });
}

void ScalesPage::OnXManual() {
    const bool changed = m_editing.Change([this](WavoGraph& graph) {
        if (graph.XCoorType != CoorType::kAxis) {
            m_fields.SetChecked(kXTime, true);
            return false;
        }
        SetXScale(graph, ReadXScale(graph));
        if (graph.XScale.ScaleAx == ScaleAxCode::kAutomatic) {
            m_fields.SetChecked(kXAutomatic, true);
        }
        return true;
    });
    if (changed) {
        m_editing.ShowWithChosenAxis();
    }
}

void ScalesPage::OnXBound(EditorControl id) {
    const std::string text = m_fields.Text(id);
    BoundChange bound;
    m_editing.Change(
        [&](WavoGraph& graph) {
            if (!text.empty()) {
                bound =
                    SetXBound(graph, IsMinimum(id), ReadDouble(text), m_editing.PlotSizeOf(graph));
            }
            return bound.is_taken;
        },
        false);
    if (bound.goes_up) {
        m_editing.ShowWithChosenAxis();
        m_editing.Announce(m_editing.SelectedNumber());
    }
}

void ScalesPage::OnYBound(EditorControl id) {
    const std::string text = m_fields.Text(id);
    BoundChange bound;
    m_editing.Change(
        [&](WavoGraph& graph) {
            const std::optional<std::size_t> axis = m_editing.ChosenAxis(graph);
            if (axis.has_value() && !text.empty()) {
                bound = SetYBound(graph, *axis, IsMinimum(id), ReadDouble(text),
                                  m_editing.PlotSizeOf(graph));
            }
            return bound.is_taken;
        },
        false);
    if (bound.moved_x) {
        m_editing.ShowWithChosenAxis();
    }
    if (bound.goes_up) {
        m_editing.Announce(m_editing.SelectedNumber());
    }
}

void ScalesPage::OnYAutomatic() {
    m_editing.Change([this](WavoGraph& graph) {
        const std::optional<std::size_t> axis = m_editing.ChosenAxis(graph);
        if (!axis.has_value() || *axis >= graph.YScales.size() ||
            graph.YScales[*axis].ScaleType != ScaleTypeCode::kAxis) {
            MERRLOG(editor_texts::kBadYScaleType);
            m_editing.ShowAgain();
            return false;
        }
        graph.YScales[*axis].ScaleAx = ScaleAxCode::kAutomatic;
        return true;
    });
}

void ScalesPage::OnYManual() {
    const bool changed = m_editing.Change([this](WavoGraph& graph) {
        const std::optional<std::size_t> axis = m_editing.ChosenAxis(graph);
        const std::string minimum_text = m_fields.Text(kYMinimum);
        const std::string maximum_text = m_fields.Text(kYMaximum);
        const bool both_empty = minimum_text.empty() && maximum_text.empty();
        const double minimum = both_empty ? 0.0 : ReadDouble(minimum_text);
        const double maximum = both_empty ? kDefaultYMaximum : ReadDouble(maximum_text);
        if (!axis.has_value() || *axis >= graph.YScales.size()) {
            m_editing.ShowAgain();
            return false;
        }
        if (!(minimum < maximum)) {
            m_fields.SetChecked(kYAutomatic, true);
            return false;
        }
        ScaleDefinition& scale = graph.YScales[*axis];
        scale.ScaleAx = ScaleAxCode::kManual;
        scale.Minimum = minimum;
        scale.Maximum = maximum;
        return true;
    });
    if (changed) {
        m_editing.ShowWithChosenAxis();
    }
}

}  // namespace wavo
