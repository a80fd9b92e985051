// The page of the coordinates: what x shows and how, the y axes with their colours and triggers.
#pragma once

#include <string>

#include "ui/graph_editor/editor_page.h"
#include "ui/prompts.h"

namespace wavo {

class AxesPage final : public EditorPage {
 public:
    /// `prompts` stand over `window`; neither is owned, both outlive the page.
    AxesPage(EditorFields& fields, GraphEditing& editing, const Prompts& prompts, QWidget& window);

    void FillLists() override;
    void Show(const WavoGraph& graph, std::size_t axis) override;

    /// The background of the graphs has changed: the next colour stands out from it.
    void SetBackground(ColorRef background);
    /// The colour that the next y axis gets.
    [[nodiscard]] ColorRef PickedColor() const { return m_picked_color; }

 private:
    void ShowYAxes(const QString& axes);
    void ShowTriggerState(bool is_defined);
    void ShowColor();
    void EnableControls(bool x_is_axis);
    void ShowTakenDerivation();
    [[nodiscard]] bool IsMasterAxis(const std::string& name) const;

    void OnXIsTime();
    void OnXIsAxis();
    void OnXAxis();
    void OnYAxis();
    void OnAddYAxis();
    void OnDeleteYAxis();
    void OnColor();
    void ColorChosenAxis(ColorRef color);
    void OnTrigger();
    void OnMode(GraphMode mode);
    void OnModeAx(AxisDrawMode mode);

    const Prompts& m_prompts;
    QWidget& m_window;
    std::int32_t m_color_index = -1;  // y axis whose colour the colour field shows; -1 for none
    ColorRef m_picked_color;
};

}  // namespace wavo
