// The page of circles and display: what a graph of an axis over an axis shows besides, lines at
// zero, and zooms.
#pragma once

#include "ui/graph_editor/editor_page.h"

namespace wavo {

class DisplayPage final : public EditorPage {
 public:
    DisplayPage(EditorFields& fields, GraphEditing& editing);

    void Show(const WavoGraph& graph, std::size_t axis) override;

 private:
    void ConnectTexts();
    void OnAutoCircle();
    void OnCircle(EditorControl id);
    void OnFadeOutTime();
    void OnZeroLines();
    void ZoomOut();
};

}  // namespace wavo
