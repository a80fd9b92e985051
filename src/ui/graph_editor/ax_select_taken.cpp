// What became of a text once its edit is left: what was not taken of it is replaced.
#include "support/number_text.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/graph_editor/graph_edits.h"

namespace wavo {

using enum EditorControl;

namespace {

bool IsBlank(const std::string& text) {
    return text.find_first_not_of(" \t") == std::string::npos;
}

/// Whether the text is this number and nothing else.
bool IsWholly(const std::string& text, double value) {
    const std::optional<double> number = FindWholeDouble(text);
    return number.has_value() && *number == value;
}

bool IsManual(const ScaleDefinition& scale) {
    return scale.ScaleType == ScaleTypeCode::kAxis && scale.ScaleAx == ScaleAxCode::kManual;
}

}  // namespace

void CAxSelect::ShowTakenNumber(EditorControl id, std::optional<double> value, int decimals) {
    const std::string text = Text(id);
    if (value.has_value() ? !IsWholly(text, *value) : !text.empty()) {
        SetNumber(id, value, decimals);
    }
}

// `waits`: a click on `manual` is going to take what stands in the edit.
void CAxSelect::ShowTakenBound(EditorControl id, const ScaleDefinition& scale, bool waits) {
    const bool is_minimum = id == kXMinimum || id == kYMinimum;
    if (!waits) {
        const double bound = is_minimum ? scale.Minimum : scale.Maximum;
        ShowTakenNumber(id, HasBounds(scale) ? std::optional(bound) : std::nullopt, 6);
    } else if (const std::string text = Text(id); !IsBlank(text)) {
        ShowTakenNumber(id, ReadDouble(text), 6);
    }
}

void CAxSelect::ShowTaken(EditorControl id) {
    const WavoGraph* const graph = Selected();
    if (id == kGraphNumber || id == kYAxis) {
        return;  // what the next click is for
    }
    if (id == kDerivation) {
        if (ReadWholeNumber(Text(id)) != Derivation()) {
            SetText(id, QString::number(Derivation()));
        }
        return;
    }
    if (graph == nullptr) {
        ShowAgain();
        return;
    }
    switch (id) {
        case kXAxis:
            if (graph->XCoorType == CoorType::kAxis && Text(id) != graph->XCoorAxName) {
                SetText(id, QString::fromStdString(graph->XCoorAxName));
            }
            return;
        case kTimeRange:
            if (m_zooms.count(graph->GraphNumber) == 0) {
                ShowTakenNumber(id, graph->XScale.TimeRange, 3);
            }
            return;
        case kFadeOutTime:
            return ShowTakenNumber(id, graph->FadeOutTime, 3);
        case kInnerCircle:
            return ShowTakenNumber(id, RadiusOf(graph->InnerGuidingCircleDX), 3);
        case kOuterCircle:
            return ShowTakenNumber(id, RadiusOf(graph->OuterGuidingCircleDX), 3);
        case kXMinimum:
        case kXMaximum:
            return ShowTakenBound(id, graph->XScale,
                                  graph->XCoorType == CoorType::kAxis && !IsManual(graph->XScale));
        case kYMinimum:
        case kYMaximum: {
            const std::optional<std::size_t> axis = ChosenAxis(*graph);
            if (axis.has_value() && *axis < graph->YScales.size()) {
                ShowTakenBound(id, graph->YScales[*axis], !IsManual(graph->YScales[*axis]));
            }
            return;
        }
        default:
            return;
    }
}

}  // namespace wavo
