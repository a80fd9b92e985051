// The page of the scales: the range of x, in time or in units of an axis, and that of the y axis
// that is looked at.
//
// Bounds of a scale that is not manual wait for a click on `manual`.
#pragma once

#include "ui/graph_editor/editor_page.h"

namespace wavo {

class ScalesPage final : public EditorPage {
 public:
    ScalesPage(EditorFields& fields, GraphEditing& editing);

    void Show(const WavoGraph& graph, std::size_t axis) override;

    /// Seconds per line of the master.
    void SetCycleTime(double cycle_time);
    /// Other graphs are zoomed. One of these shows its span in place of its time range, which stays
    /// as it is; while there is one, no time range can be edited.
    void SetZooms(std::map<std::uint32_t, double> spans);
    /// Whether times and zooms are for all graphs.
    [[nodiscard]] bool AllGraphs() const { return m_fields.IsChecked(EditorControl::kAllGraphs); }

 private:
    void ConnectTexts();
    void ShowTimeRange(const WavoGraph& graph);
    /// Shows one scale in its radios and edits.
    struct ScaleFields;
    void DisplayScaleAx(const ScaleDefinition& scale, const ScaleFields& fields);
    void EnableControls(const WavoGraph& graph);
    void EnableTimeRange();
    void ShowTakenBound(EditorControl id, const ScaleDefinition& scale, bool waits);
    [[nodiscard]] bool IsZoomed(const WavoGraph& graph) const;

    [[nodiscard]] XScaleChoice ReadXScale(const WavoGraph& graph) const;
    void ApplyTimeToAllGraphs(double time);
    void TakeTime();
    void OnXTime();
    void OnXAutomatic();
    void OnXManual();
    void OnTimeRange();
    void OnXBound(EditorControl id);
    void OnYBound(EditorControl id);
    void OnYAutomatic();
    void OnYManual();
};

}  // namespace wavo
