// Showing: every control from the record of a graph.
#include <QComboBox>

#include "graph/draw/display_settings.h"
#include "support/diagnostics.h"
#include "ui/controls/color_field.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/graph_editor/graph_edits.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

using enum EditorControl;

bool CAxSelect::SetWindowData(std::uint32_t graph_number, std::size_t axis) {
    const WavoGraph* const graph = Find(graph_number);
    if (graph == nullptr) {
        MERRLOG(editor_texts::kUnknownGraph, graph_number);
        return false;
    }
    Show(*graph, axis);
    return true;
}

void CAxSelect::Show(const WavoGraph& graph, std::size_t axis) {
    if (axis < graph.YCoorAxName.size()) {  // the one of its name that is changed
        axis = FindYAxis(graph, graph.YCoorAxName[axis], DerivationOf(graph, axis)).value_or(axis);
    }
    m_shown_graph = graph.GraphNumber;
    SetText(kGraphNumber, QString::number(graph.GraphNumber));
    ShowCoordinates(graph, axis);
    ShowScales(graph, axis);
    ShowCircles(graph);
    EnableControls(graph);
    m_color_index = axis < graph.YCoorAxName.size() ? static_cast<std::int32_t>(axis) : -1;
    SetEnabled(kTrigger, m_color_index >= 0);
    ShowColor();
}

void CAxSelect::ShowAgain() {
    if (const WavoGraph* const graph = Find(m_shown_graph)) {
        const std::string number = Text(kGraphNumber);
        Show(*graph, ChosenAxis(*graph).value_or(0));
        // The user may be about to type another number.
        SetText(kGraphNumber, QString::fromStdString(number));
    } else {
        ShowNoGraph();
    }
}

void CAxSelect::ShowWithChosenAxis() {
    if (const WavoGraph* const graph = Selected()) {
        Show(*graph, ChosenAxis(*graph).value_or(0));
    }
}

void CAxSelect::ShowNoGraph() {
    WavoGraph graph;
    graph.InitGraph(0, nullptr, 0, nullptr);
    const std::string number = Text(kGraphNumber);
    Show(graph, 0);
    SetText(kGraphNumber, QString::fromStdString(number));
}

// More axes than the field has room for are read in its tool tip.
void CAxSelect::ShowYAxes(const QString& axes) {
    SetText(kYAxes, axes);
    const QString tip = QString::fromUtf8(FindEditorRow(kYAxes).tip);
    Control(kYAxes)->setToolTip(axes.isEmpty() ? tip : tip + u'\n' + axes);
}

void CAxSelect::ShowCoordinates(const WavoGraph& graph, std::size_t axis) {
    const bool x_is_axis = graph.XCoorType == CoorType::kAxis;
    SetChecked(x_is_axis ? kXIsAxis : kXIsTime, true);
    if (x_is_axis) {
        SetText(kXAxis, QString::fromStdString(graph.XCoorAxName));
    }
    SetChecked(graph.Mode == GraphMode::kClassic ? kClassic : kContinuity, true);
    SetChecked(graph.ModeAx == AxisDrawMode::kLines ? kLines : kPoints, true);
    SetChecked(kZeroLines, graph.ZeroLines);
    ShowYAxes(QString::fromStdString(YAxesText(graph)));
    if (axis < graph.YCoorAxName.size()) {
        SetText(kYAxis, QString::fromStdString(graph.YCoorAxName[axis]));
        SetText(kDerivation, QString::number(DerivationOf(graph, axis)));
    } else if (x_is_axis || Text(kDerivation).empty()) {
        SetText(kDerivation, QStringLiteral("0"));
    }
    ShowTriggerState(TriggerOf(graph, axis).TriggerType != TriggerTypeCode::kNone);
}

void CAxSelect::ShowTriggerState(bool is_defined) {
    SetText(kTriggerState, is_defined ? QStringLiteral("defined") : QStringLiteral("not defined"));
}

void CAxSelect::ShowScales(const WavoGraph& graph, std::size_t axis) {
    ShowTimeRange(graph);
    SetChecked(kXTime, graph.XScale.ScaleType == ScaleTypeCode::kTime);
    DisplayScaleAx(graph.XScale, kXAutomatic, kXManual, kXMinimum, kXMaximum);
    if (axis < graph.YScales.size()) {
        DisplayScaleAx(graph.YScales[axis], kYAutomatic, kYManual, kYMinimum, kYMaximum);
        return;
    }
    SetChecked(kYAutomatic, false);
    SetChecked(kYManual, false);
    SetText(kYMinimum, {});
    SetText(kYMaximum, {});
}

void CAxSelect::ShowTimeRange(const WavoGraph& graph) {
    const auto zoom = m_zooms.find(graph.GraphNumber);
    SetNumber(kTimeRange, zoom != m_zooms.end() ? zoom->second : graph.XScale.TimeRange, 3);
}

void CAxSelect::DisplayScaleAx(const ScaleDefinition& scale, EditorControl automatic,
                               EditorControl manual, EditorControl minimum, EditorControl maximum) {
    const bool is_axis = scale.ScaleType == ScaleTypeCode::kAxis;
    if (!is_axis && scale.ScaleType != ScaleTypeCode::kTime) {
        MERRLOG(editor_texts::kBadScaleType);
    }
    SetChecked(automatic, is_axis && scale.ScaleAx == ScaleAxCode::kAutomatic);
    SetChecked(manual, is_axis && scale.ScaleAx == ScaleAxCode::kManual);
    const bool given = HasBounds(scale);
    SetNumber(minimum, given ? std::optional(scale.Minimum) : std::nullopt, 6);
    SetNumber(maximum, given ? std::optional(scale.Maximum) : std::nullopt, 6);
}

void CAxSelect::ShowCircles(const WavoGraph& graph) {
    SetChecked(kAutoCircle, graph.AutoCircle);
    SetNumber(kInnerCircle, RadiusOf(graph.InnerGuidingCircleDX), 3);
    SetNumber(kOuterCircle, RadiusOf(graph.OuterGuidingCircleDX), 3);
    SetNumber(kFadeOutTime, graph.FadeOutTime, 3);
}

void CAxSelect::EnableControls(const WavoGraph& graph) {
    const bool x_is_axis = graph.XCoorType == CoorType::kAxis;
    const bool free_scales = !(x_is_axis && graph.AutoCircle);
    for (const EditorControl id :
         {kXManual, kLines, kPoints, kAutoCircle, kInnerCircle, kOuterCircle, kFadeOutTime}) {
        SetEnabled(id, x_is_axis);
    }
    for (const EditorControl id : {kXTime, kClassic, kContinuity, kDerivation}) {
        SetEnabled(id, !x_is_axis);
    }
    SetEnabled(kXAutomatic, x_is_axis && free_scales);
    SetEnabled(kYAutomatic, free_scales);
    EnableTimeRange();
}

void CAxSelect::EnableTimeRange() {
    const bool enabled = m_zooms.empty() && IsChecked(kXIsTime);
    SetEnabled(kTimeRange, enabled);
    SetEnabled(kAllGraphs, enabled);
}

void CAxSelect::ShowColor() {
    ColorRef color = m_picked_color;
    const WavoGraph* const graph = Find(m_shown_graph);
    if (m_color_index >= 0 && graph != nullptr) {
        const auto index = static_cast<std::size_t>(m_color_index);
        color = index < graph->YCoorAxColor.size() ? graph->YCoorAxColor[index] : 0xFFFFFF;
    }
    static_cast<ColorField*>(Control(kColor))->SetColor(ToQColor(color));
}

}  // namespace wavo
