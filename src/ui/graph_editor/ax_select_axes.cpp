// The handlers of the coordinates: what x shows, the y axes, their colours and triggers.
#include <algorithm>
#include <utility>

#include "graph/draw/display_settings.h"
#include "graph/model/graph_ini_data.h"
#include "link/axis_capabilities.h"
#include "support/diagnostics.h"
#include "support/number_text.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/graph_editor/curve_palette.h"
#include "ui/graph_editor/graph_edits.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

using enum EditorControl;

std::int32_t CAxSelect::Derivation() const {
    return std::clamp(ReadInteger(Text(kDerivation)), 0, kHighestStoredDerivation);
}

std::optional<std::size_t> CAxSelect::ChosenAxis(const WavoGraph& graph) const {
    return FindYAxis(graph, Text(kYAxis), Derivation());
}

bool CAxSelect::IsMasterAxis(const std::string& name) const {
    return std::find(m_axis_names.begin(), m_axis_names.end(), name) != m_axis_names.end();
}

void CAxSelect::OnXIsTime() {
    const bool changed = Change([](WavoGraph& graph) {
        if (graph.XCoorType == CoorType::kTime) {
            return false;
        }
        MTRACE(1, editor_texts::kXIsTime);
        MakeXTime(graph);
        return true;
    });
    if (changed) {
        ShowWithChosenAxis();
    }
}

void CAxSelect::OnXIsAxis() {
    const bool changed = Change([this](WavoGraph& graph) {
        SetEnabled(kDerivation, false);
        if (graph.XCoorType == CoorType::kAxis) {
            return false;
        }
        if (graph.YCoorAxName.size() >= 2) {
            MERRLOG(editor_texts::kOneYAxisAllowed);
        }
        const std::string name = Text(kXAxis);
        if (name.empty()) {
            MTRACE(1, editor_texts::kXIsNoAxis);
        } else {
            MTRACE(1, editor_texts::kXIsAxis, name.c_str());
        }
        MakeXAxis(graph, name, PlotSizeOf(graph));
        return true;
    });
    if (changed) {
        SelectGraph();
    }
}

void CAxSelect::OnXAxis() {
    const std::string name = Text(kXAxis);
    if (!IsMasterAxis(name)) {
        return;
    }
    Change([&name](WavoGraph& graph) {
        if (graph.XCoorType != CoorType::kAxis || graph.XCoorAxName == name) {
            return false;
        }
        graph.XCoorAxName = name;
        MTRACE(1, editor_texts::kNewXAxis, name.c_str());
        return true;
    });
}

// Looks at another y axis; changes nothing.
void CAxSelect::OnYAxis() {
    const WavoGraph* const graph = Selected();
    if (graph == nullptr) {
        return;
    }
    const std::optional<std::size_t> axis = ChosenAxis(*graph);
    if (!axis.has_value()) {
        m_color_index = -1;  // the colour that the axis would get
        ShowColor();
        ShowTriggerState(false);
        SetEnabled(kTrigger, false);
        return;
    }
    const bool is_shown = m_shown_graph == graph->GraphNumber && m_color_index >= 0 &&
                          static_cast<std::size_t>(m_color_index) == *axis;
    if (!is_shown) {  // bounds that wait for `manual` stay
        Show(*graph, *axis);
    }
}

void CAxSelect::OnAddYAxis() {
    if (m_graphs != nullptr && m_graphs->IsEmpty()) {
        SetText(kGraphNumber, QStringLiteral("1"));
        // The axis to add is the one chosen before the graph was there.
        SelectGraph();
    }
    const YAxisToAdd axis{Text(kYAxis), m_picked_color, Derivation()};
    std::size_t index = 0;
    const bool added = Change([&](WavoGraph& graph) {
        index = graph.YCoorAxName.size();
        const bool over_axis =
            graph.XCoorType == CoorType::kAxis || graph.XScale.ScaleType == ScaleTypeCode::kAxis;
        if ((over_axis && index > 0) || !IsMasterAxis(axis.name)) {
            return false;
        }
        AddYAxis(graph, axis, m_limits == nullptr ? std::nullopt : m_limits->FindAxis(axis.name));
        MTRACE(1, editor_texts::kNewYAxis, axis.name.c_str());
        return true;
    });
    const WavoGraph* const graph = Selected();
    if (added && graph != nullptr) {
        TakeNextColor(*graph);
        Show(*graph, index);
    }
}

void CAxSelect::TakeNextColor(const WavoGraph& graph) {
    m_picked_color = NextCurveColor(m_picked_color, m_background, graph.YCoorAxColor);
}

void CAxSelect::OnDeleteYAxis() {
    if (Selected() == nullptr) {
        MERRLOG(editor_texts::kGraphNotFound);
        return;
    }
    const bool removed = Change([this](WavoGraph& graph) {
        const std::optional<std::size_t> axis = ChosenAxis(graph);
        if (!axis.has_value()) {
            return false;
        }
        const std::string label = AxisLabel(graph.YCoorAxName[*axis], DerivationOf(graph, *axis));
        RemoveYAxis(graph, *axis);
        MTRACE(1, editor_texts::kYAxisErased, label.c_str());
        return true;
    });
    if (removed) {
        SelectGraph();
    }
}

void CAxSelect::OnColor() {
    const std::optional<QColor> chosen = ChooseColor(this, Qt::black);
    if (!chosen.has_value()) {
        return;
    }
    const ColorRef color = ToColorRef(*chosen);
    m_picked_color = color;
    if (Selected() != nullptr) {
        Change([this, color](WavoGraph& graph) {
            const std::optional<std::size_t> axis = ChosenAxis(graph);
            if (!axis.has_value()) {
                MERRLOG(editor_texts::kColoredGraphNotFound, Text(kYAxis).c_str());
                m_color_index = -1;
                return false;
            }
            if (graph.YCoorAxColor.size() <= *axis) {
                graph.YCoorAxColor.resize(*axis + 1, color);
            }
            graph.YCoorAxColor[*axis] = color;
            m_color_index = static_cast<std::int32_t>(*axis);
            // Named like the removal of an axis.
            MTRACE(1, editor_texts::kYAxisErased,
                   AxisLabel(graph.YCoorAxName[*axis], DerivationOf(graph, *axis)).c_str());
            return true;
        });
    }
    ShowColor();
}

void CAxSelect::OnTrigger() {
    const WavoGraph* const graph = Selected();
    const std::optional<std::size_t> axis = graph == nullptr ? std::nullopt : ChosenAxis(*graph);
    if (!axis.has_value()) {
        return;
    }
    const std::uint32_t number = graph->GraphNumber;
    const std::string name = graph->YCoorAxName[*axis];
    const std::int32_t derivation = DerivationOf(*graph, *axis);
    TriggerEntry trigger = TriggerOf(*graph, *axis);
    if (!m_trigger_dialog(trigger, this)) {
        return;
    }
    const WavoGraph* const now = Find(number);
    if (now == nullptr || FindYAxis(*now, name, derivation) != axis) {
        return;  // gone while the dialog was open
    }
    WavoGraph copy = *now;
    SetTrigger(copy, *axis, trigger);
    if (MixesTriggers(copy)) {
        ShowBox(this, {editor_texts::kMixedTriggersBox, editor_texts::kMixedTriggersCaption,
                       BoxIcon::kExclamation, BoxButtons::kOk});
        return;
    }
    m_graphs->Put(std::move(copy), GraphList::Telling::kSilent);
    SetWindowData(number, *axis);
    Announce(number);
}

}  // namespace wavo
