#include "ui/graph_editor/display_page.h"

#include <string>

#include "support/number_text.h"

namespace wavo {

using enum EditorControl;

DisplayPage::DisplayPage(EditorFields& fields, GraphEditing& editing)
    : EditorPage(fields, editing) {
    OnClick(kAutoCircle, [this] { OnAutoCircle(); });
    OnClick(kZeroLines, [this] { OnZeroLines(); });
    OnClick(kZoomOut, [this] { ZoomOut(); });
    ConnectTexts();
}

void DisplayPage::ConnectTexts() {
    for (const EditorControl id : {kInnerCircle, kOuterCircle}) {
        OnText(id, [this, id] { OnCircle(id); });
    }
    OnLeft(kInnerCircle, [this](const WavoGraph& graph) {
        ShowTakenNumber(kInnerCircle, RadiusOf(graph.InnerGuidingCircleDX), 3);
    });
    OnLeft(kOuterCircle, [this](const WavoGraph& graph) {
        ShowTakenNumber(kOuterCircle, RadiusOf(graph.OuterGuidingCircleDX), 3);
    });
    OnText(kFadeOutTime, [this] { OnFadeOutTime(); });
    OnLeft(kFadeOutTime,
           [this](const WavoGraph& graph) { ShowTakenNumber(kFadeOutTime, graph.FadeOutTime, 3); });
}

void DisplayPage::Show(const WavoGraph& graph, std::size_t /*axis*/) {
    m_fields.SetChecked(kZeroLines, graph.ZeroLines);
    m_fields.SetChecked(kAutoCircle, graph.AutoCircle);
    m_fields.SetNumber(kInnerCircle, RadiusOf(graph.InnerGuidingCircleDX), 3);
    m_fields.SetNumber(kOuterCircle, RadiusOf(graph.OuterGuidingCircleDX), 3);
    m_fields.SetNumber(kFadeOutTime, graph.FadeOutTime, 3);
    for (const EditorControl id : {kAutoCircle, kInnerCircle, kOuterCircle, kFadeOutTime}) {
        m_fields.SetEnabled(id, graph.XCoorType == CoorType::kAxis);
    }
}

void DisplayPage::OnAutoCircle() {
    m_editing.Change([this](WavoGraph& graph) {
        SetAutoCircle(graph, m_fields.IsChecked(kAutoCircle), m_editing.ChosenAxis(graph));
        return true;
    });
    m_editing.ShowWithChosenAxis();
}

void DisplayPage::OnCircle(EditorControl id) {
    const std::string text = m_fields.Text(id);
    m_editing.Change([&](WavoGraph& graph) {
        return SetCircle(graph, id == kInnerCircle,
                         text.empty() ? std::nullopt : std::optional(ReadDouble(text)));
    });
}

void DisplayPage::OnFadeOutTime() {
    const std::string text = m_fields.Text(kFadeOutTime);
    if (!text.empty()) {
        m_editing.Change(
            [time = ReadDouble(text)](WavoGraph& graph) { return SetFadeOutTime(graph, time); });
    }
}

void DisplayPage::OnZeroLines() {
    m_editing.Change([this](WavoGraph& graph) {
        graph.ZeroLines = m_fields.IsChecked(kZeroLines);
        return true;
    });
    m_editing.ShowWithChosenAxis();
}

void DisplayPage::ZoomOut() {
    if (const WavoGraph* const graph = m_editing.Selected()) {
        m_editing.Send(AppMessage::kZoomOut, graph->GraphNumber);
    }
}

}  // namespace wavo
