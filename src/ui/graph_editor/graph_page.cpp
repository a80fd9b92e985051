#include "ui/graph_editor/graph_page.h"

#include <QComboBox>

#include "ui/graph_editor/report_texts.h"

namespace wavo {

using enum EditorControl;

GraphPage::GraphPage(EditorFields& fields, GraphEditing& editing, const Prompts& prompts,
                     QWidget& window)
    : EditorPage(fields, editing), m_prompts(prompts), m_window(window) {
    OnText(kGraphNumber, [this] { m_editing.SelectGraph(); });
    OnClick(kDeleteGraph, [this] { DeleteGraph(); });
    OnClick(kSaveValues, [this] { SaveValues(); });
}

void GraphPage::FillLists() {
    QComboBox& numbers = m_fields.Combo(kGraphNumber);
    numbers.clear();
    for (const WavoGraph& graph : m_editing.Document()->Graphs()) {
        numbers.addItem(QString::number(graph.GraphNumber));
    }
    m_fields.NoteTaken(kGraphNumber);
}

void GraphPage::Show(const WavoGraph& graph, std::size_t /*axis*/) {
    m_fields.SetText(kGraphNumber, QString::number(graph.GraphNumber));
}

void GraphPage::DeleteGraph() {
    const WavoGraph* const graph = m_editing.Selected();
    if (graph == nullptr) {
        return;
    }
    GraphList& graphs = *m_editing.Document();
    QComboBox& combo = m_fields.Combo(kGraphNumber);
    combo.removeItem(combo.findText(QString::number(graph->GraphNumber)));
    graphs.Remove(graph->GraphNumber, GraphList::Telling::kSilent);
    if (graphs.IsEmpty()) {
        combo.setEditText({});
        m_editing.ShowNoGraph();
        m_editing.Announce(kNoGraph);
        return;
    }
    combo.setCurrentIndex(0);
    combo.setEditText(combo.itemText(0));
    m_editing.SelectGraph();
    m_editing.Announce(m_editing.SelectedNumber());
}

void GraphPage::SaveValues() {
    const WavoGraph* const graph = m_editing.Selected();
    if (graph == nullptr) {
        m_prompts.box(&m_window, {editor_texts::kNoGraphBox, editor_texts::kNoGraphCaption,
                                  BoxIcon::kExclamation, BoxButtons::kOk});
        return;
    }
    // A copy: saving may show dialogs, and the list may change meanwhile.
    const WavoGraph copy = *graph;
    m_editing.Send(AppMessage::kSaveValues, reinterpret_cast<std::int64_t>(&copy));
}

}  // namespace wavo
