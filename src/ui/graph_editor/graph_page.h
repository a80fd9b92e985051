// The page of the graph itself: which one is edited, and the end of it.
#pragma once

#include "ui/graph_editor/editor_page.h"
#include "ui/prompts.h"

namespace wavo {

class GraphPage final : public EditorPage {
 public:
    /// `prompts` stand over `window`; neither is owned, both outlive the page.
    GraphPage(EditorFields& fields, GraphEditing& editing, const Prompts& prompts, QWidget& window);

    void FillLists() override;
    void Show(const WavoGraph& graph, std::size_t axis) override;

 private:
    void DeleteGraph();
    void SaveValues();

    const Prompts& m_prompts;
    QWidget& m_window;
};

}  // namespace wavo
