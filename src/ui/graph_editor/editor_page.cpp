#include "ui/graph_editor/editor_page.h"

#include <utility>

#include "support/number_text.h"

namespace wavo {

namespace {

/// Whether the text is this number and nothing else.
bool IsWholly(const std::string& text, double value) {
    const std::optional<double> number = FindWholeDouble(text);
    return number.has_value() && *number == value;
}

}  // namespace

void EditorPage::OnLeft(EditorControl id, std::function<void(const WavoGraph& graph)> handler) {
    m_fields.OnLeft(id, *this, [this, handler = std::move(handler)] {
        if (const WavoGraph* const graph = m_editing.Selected()) {
            handler(*graph);
        } else {
            m_editing.ShowAgain();
        }
    });
}

void EditorPage::ShowTakenNumber(EditorControl id, std::optional<double> value, int decimals) {
    const std::string text = m_fields.Text(id);
    if (value.has_value() ? !IsWholly(text, *value) : !text.empty()) {
        m_fields.SetNumber(id, value, decimals);
    }
}

}  // namespace wavo
