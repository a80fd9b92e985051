#include "ui/graph_editor/axes_page.h"

#include <QComboBox>
#include <algorithm>
#include <utility>

#include "graph/draw/display_settings.h"
#include "link/axis_capabilities.h"
#include "support/diagnostics.h"
#include "support/number_text.h"
#include "ui/controls/color_field.h"
#include "ui/graph_editor/curve_palette.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

using enum EditorControl;

AxesPage::AxesPage(EditorFields& fields, GraphEditing& editing, const Prompts& prompts,
                   QWidget& window)
    : EditorPage(fields, editing),
      m_prompts(prompts),
      m_window(window),
      m_picked_color(FirstCurveColor(editing.Known().background)) {
    OnClick(kXIsTime, [this] { OnXIsTime(); });
    OnClick(kXIsAxis, [this] { OnXIsAxis(); });
    OnClick(kClassic, [this] { OnMode(GraphMode::kClassic); });
    OnClick(kContinuity, [this] { OnMode(GraphMode::kContinuity); });
    OnClick(kLines, [this] { OnModeAx(AxisDrawMode::kLines); });
    OnClick(kPoints, [this] { OnModeAx(AxisDrawMode::kPoints); });
    OnClick(kAddYAxis, [this] { OnAddYAxis(); });
    OnClick(kDeleteYAxis, [this] { OnDeleteYAxis(); });
    OnClick(kColor, [this] { OnColor(); });
    OnClick(kTrigger, [this] { OnTrigger(); });
    OnText(kXAxis, [this] { OnXAxis(); });
    OnText(kYAxis, [this] { OnYAxis(); });
    OnText(kDerivation, [this] { OnYAxis(); });
    OnLeft(kXAxis, [this](const WavoGraph& graph) {
        if (graph.XCoorType == CoorType::kAxis && m_fields.Text(kXAxis) != graph.XCoorAxName) {
            m_fields.SetText(kXAxis, QString::fromStdString(graph.XCoorAxName));
        }
    });
    m_fields.OnLeft(kDerivation, *this, [this] { ShowTakenDerivation(); });
}

void AxesPage::FillLists() {
    for (const EditorControl id : {kXAxis, kYAxis}) {
        m_fields.Combo(id).clear();
        for (const std::string& name : m_editing.Known().axis_names) {
            m_fields.Combo(id).addItem(QString::fromStdString(name));
        }
        m_fields.NoteTaken(id);
    }
}

void AxesPage::SetBackground(ColorRef background) {
    m_picked_color = FirstCurveColor(background);
    ShowColor();
}

void AxesPage::Show(const WavoGraph& graph, std::size_t axis) {
    const bool x_is_axis = graph.XCoorType == CoorType::kAxis;
    m_fields.SetChecked(x_is_axis ? kXIsAxis : kXIsTime, true);
    if (x_is_axis) {
        m_fields.SetText(kXAxis, QString::fromStdString(graph.XCoorAxName));
    }
    m_fields.SetChecked(graph.Mode == GraphMode::kClassic ? kClassic : kContinuity, true);
    m_fields.SetChecked(graph.ModeAx == AxisDrawMode::kLines ? kLines : kPoints, true);
    ShowYAxes(QString::fromStdString(YAxesText(graph)));
    if (axis < graph.YCoorAxName.size()) {
        m_fields.SetText(kYAxis, QString::fromStdString(graph.YCoorAxName[axis]));
        m_fields.SetText(kDerivation, QString::number(DerivationOf(graph, axis)));
    } else if (x_is_axis || m_fields.Text(kDerivation).empty()) {
        m_fields.SetText(kDerivation, QStringLiteral("0"));
    }
    ShowTriggerState(TriggerOf(graph, axis).TriggerType != TriggerTypeCode::kNone);
    m_color_index = axis < graph.YCoorAxName.size() ? static_cast<std::int32_t>(axis) : -1;
    EnableControls(x_is_axis);
    ShowColor();
}

void AxesPage::EnableControls(bool x_is_axis) {
    for (const EditorControl id : {kLines, kPoints}) {
        m_fields.SetEnabled(id, x_is_axis);
    }
    for (const EditorControl id : {kClassic, kContinuity, kDerivation}) {
        m_fields.SetEnabled(id, !x_is_axis);
    }
    m_fields.SetEnabled(kTrigger, m_color_index >= 0);
}

// More axes than the field has room for are read in its tool tip.
void AxesPage::ShowYAxes(const QString& axes) {
    m_fields.SetText(kYAxes, axes);
    const QString tip = QString::fromUtf8(FindEditorRow(kYAxes).tip);
    m_fields.Control(kYAxes).setToolTip(axes.isEmpty() ? tip : tip + u'\n' + axes);
}

void AxesPage::ShowTriggerState(bool is_defined) {
    m_fields.SetText(kTriggerState,
                     is_defined ? QStringLiteral("defined") : QStringLiteral("not defined"));
}

void AxesPage::ShowColor() {
    ColorRef color = m_picked_color;
    const WavoGraph* const graph = m_editing.Find(m_editing.ShownNumber());
    if (m_color_index >= 0 && graph != nullptr) {
        const auto index = static_cast<std::size_t>(m_color_index);
        color = index < graph->YCoorAxColor.size() ? graph->YCoorAxColor[index] : 0xFFFFFF;
    }
    static_cast<ColorField&>(m_fields.Control(kColor)).SetColor(ToQColor(color));
}

void AxesPage::ShowTakenDerivation() {
    if (ReadWholeNumber(m_fields.Text(kDerivation)) != m_editing.Derivation()) {
        m_fields.SetText(kDerivation, QString::number(m_editing.Derivation()));
    }
}

bool AxesPage::IsMasterAxis(const std::string& name) const {
    const std::vector<std::string>& names = m_editing.Known().axis_names;
    return std::find(names.begin(), names.end(), name) != names.end();
}

void AxesPage::OnXIsTime() {
    const bool changed = m_editing.Change([](WavoGraph& graph) {
        if (graph.XCoorType == CoorType::kTime) {
            return false;
        }
        MTRACE(1, editor_texts::kXIsTime);
        MakeXTime(graph);
        return true;
    });
    if (changed) {
        m_editing.ShowWithChosenAxis();
    }
}

void AxesPage::OnXIsAxis() {
    const bool changed = m_editing.Change([this](WavoGraph& graph) {
        m_fields.SetEnabled(kDerivation, false);
        if (graph.XCoorType == CoorType::kAxis) {
            return false;
        }
        if (graph.YCoorAxName.size() >= 2) {
            MERRLOG(editor_texts::kOneYAxisAllowed);
        }
        const std::string name = m_fields.Text(kXAxis);
        if (name.empty()) {
            MTRACE(1, editor_texts::kXIsNoAxis);
        } else {
            MTRACE(1, editor_texts::kXIsAxis, name.c_str());
        }
        MakeXAxis(graph, name, m_editing.PlotSizeOf(graph));
        return true;
    });
    if (changed) {
        m_editing.SelectGraph();
    }
}

void AxesPage::OnXAxis() {
    const std::string name = m_fields.Text(kXAxis);
    if (!IsMasterAxis(name)) {
        return;
    }
    m_editing.Change([&name](WavoGraph& graph) {
        if (graph.XCoorType != CoorType::kAxis || graph.XCoorAxName == name) {
            return false;
        }
        graph.XCoorAxName = name;
        MTRACE(1, editor_texts::kNewXAxis, name.c_str());
        return true;
    });
}

// Looks at another y axis; changes nothing.
void AxesPage::OnYAxis() {
    const WavoGraph* const graph = m_editing.Selected();
    if (graph == nullptr) {
        return;
    }
    const std::optional<std::size_t> axis = m_editing.ChosenAxis(*graph);
    if (!axis.has_value()) {
        m_color_index = -1;  // the colour that the axis would get
        ShowColor();
        ShowTriggerState(false);
        m_fields.SetEnabled(kTrigger, false);
        return;
    }
    const bool is_shown = m_editing.ShownNumber() == graph->GraphNumber && m_color_index >= 0 &&
                          static_cast<std::size_t>(m_color_index) == *axis;
    if (!is_shown) {  // bounds that wait for `manual` stay
        m_editing.Show(*graph, *axis);
    }
}

void AxesPage::OnAddYAxis() {
    if (m_editing.Document() != nullptr && m_editing.Document()->IsEmpty()) {
        m_fields.SetText(kGraphNumber, QStringLiteral("1"));
        // The axis to add is the one chosen before the graph was there.
        m_editing.SelectGraph();
    }
    const YAxisToAdd axis{m_fields.Text(kYAxis), m_picked_color, m_editing.Derivation()};
    std::size_t index = 0;
    const bool added = m_editing.Change([&](WavoGraph& graph) {
        index = graph.YCoorAxName.size();
        const bool over_axis =
            graph.XCoorType == CoorType::kAxis || graph.XScale.ScaleType == ScaleTypeCode::kAxis;
        if ((over_axis && index > 0) || !IsMasterAxis(axis.name)) {
            return false;
        }
        AxisLimitsSource* const limits = m_editing.Known().limits;
        AddYAxis(graph, axis, limits == nullptr ? std::nullopt : limits->FindAxis(axis.name));
        MTRACE(1, editor_texts::kNewYAxis, axis.name.c_str());
        return true;
    });
    const WavoGraph* const graph = m_editing.Selected();
    if (added && graph != nullptr) {
        m_picked_color =
            NextCurveColor(m_picked_color, m_editing.Known().background, graph->YCoorAxColor);
        m_editing.Show(*graph, index);
    }
}

void AxesPage::OnDeleteYAxis() {
    if (m_editing.Selected() == nullptr) {
        MERRLOG(editor_texts::kGraphNotFound);
        return;
    }
    const bool removed = m_editing.Change([this](WavoGraph& graph) {
        const std::optional<std::size_t> axis = m_editing.ChosenAxis(graph);
        if (!axis.has_value()) {
            return false;
        }
        const std::string label = AxisLabel(graph.YCoorAxName[*axis], DerivationOf(graph, *axis));
        RemoveYAxis(graph, *axis);
        MTRACE(1, editor_texts::kYAxisErased, label.c_str());
        return true;
    });
    if (removed) {
        m_editing.SelectGraph();
    }
}

void AxesPage::OnColor() {
    const std::optional<QColor> chosen = m_prompts.color(&m_window, Qt::black);
    if (!chosen.has_value()) {
        return;
    }
    m_picked_color = ToColorRef(*chosen);
    if (m_editing.Selected() != nullptr) {
        ColorChosenAxis(m_picked_color);
    }
    ShowColor();
}

void AxesPage::ColorChosenAxis(ColorRef color) {
    m_editing.Change([this, color](WavoGraph& graph) {
        const std::optional<std::size_t> axis = m_editing.ChosenAxis(graph);
        if (!axis.has_value()) {
            MERRLOG(editor_texts::kColoredGraphNotFound, m_fields.Text(kYAxis).c_str());
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

void AxesPage::OnTrigger() {
    const WavoGraph* const graph = m_editing.Selected();
    const std::optional<std::size_t> axis =
        graph == nullptr ? std::nullopt : m_editing.ChosenAxis(*graph);
    if (!axis.has_value()) {
        return;
    }
    const std::uint32_t number = graph->GraphNumber;
    const std::string name = graph->YCoorAxName[*axis];
    const std::int32_t derivation = DerivationOf(*graph, *axis);
    TriggerEntry trigger = TriggerOf(*graph, *axis);
    if (!m_prompts.trigger(&m_window, trigger)) {
        return;
    }
    const WavoGraph* const now = m_editing.Find(number);
    if (now == nullptr || FindYAxis(*now, name, derivation) != axis) {
        return;  // gone while the dialog was open
    }
    WavoGraph copy = *now;
    SetTrigger(copy, *axis, trigger);
    if (MixesTriggers(copy)) {
        m_prompts.box(&m_window,
                      {editor_texts::kMixedTriggersBox, editor_texts::kMixedTriggersCaption,
                       BoxIcon::kExclamation, BoxButtons::kOk});
        return;
    }
    m_editing.Document()->Put(std::move(copy), GraphList::Telling::kSilent);
    if (const WavoGraph* const put = m_editing.Find(number)) {
        m_editing.Show(*put, *axis);
    }
    m_editing.Announce(number);
}

void AxesPage::OnMode(GraphMode mode) {
    m_editing.Change([mode](WavoGraph& graph) {
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
    if (m_editing.Selected() != nullptr) {
        m_editing.SelectGraph();
    }
}

void AxesPage::OnModeAx(AxisDrawMode mode) {
    m_editing.Change([mode](WavoGraph& graph) {
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

}  // namespace wavo
