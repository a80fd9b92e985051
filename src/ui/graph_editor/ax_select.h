// The graph editor: a strip of controls above the graphs that shows one graph definition and
// changes it.
//
// It puts its pages together and hands them what it is told; what a control does stands in the page
// that has it.
//
// Invariant: what the editor writes into its controls never counts as a change.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/graph_editor/axes_page.h"
#include "ui/graph_editor/display_page.h"
#include "ui/graph_editor/editor_fields.h"
#include "ui/graph_editor/graph_editing.h"
#include "ui/graph_editor/graph_page.h"
#include "ui/graph_editor/scales_page.h"
#include "ui/messages.h"
#include "ui/prompts.h"

namespace wavo {

class CAxSelect : public QWidget {
    Q_OBJECT

 public:
    /// `view` gets the messages; may be null. It and `prompts` are not owned and outlive the
    /// editor. `graph_shown`: a graph is shown for editing, perhaps another one than before.
    CAxSelect(
        QObject* view, const Prompts& prompts, QWidget* parent = nullptr,
        std::function<void()> graph_shown = [] {});

    /// Takes the document to edit (not owned, outlives the editor) and the axis names that the
    /// master offers, and announces the graphs to the view with a posted kGraphChanged. False on
    /// failure.
    bool Init(GraphList& graphs, const std::vector<std::string>& axis_names);
    /// Whether there was a graph to edit since SetNotInitialised.
    [[nodiscard]] bool IsInitialised() const { return m_editing.IsInitialised(); }
    void SetNotInitialised() { m_editing.SetNotInitialised(); }
    /// Drops all zooms that could be stepped back from.
    void ResetSelection();
    /// Seconds per line of the master.
    void SetCycleTime(double cycle_time) { m_scales.SetCycleTime(cycle_time); }
    /// Whether values flow into the graphs.
    void SetAcquisitionRuns(bool runs);

    /// Where the scale of a new y axis comes from; may be null; not owned, outlives the editor.
    void SetAxisLimits(AxisLimitsSource* limits) { m_editing.Known().limits = limits; }

    /// Tells how large the curves of a graph are drawn; nothing is known before it is set.
    using PlotSizeSource = std::function<PlotSize(std::uint32_t graph_number)>;
    void SetPlotSizes(PlotSizeSource plot_sizes);

    /// The background of the graphs: colours of new curves stand out from it.
    void SetBackground(ColorRef background);

    /// The spans, seconds, of the graphs that are zoomed, by their numbers. A zoomed graph shows
    /// its span in place of its time range, which stays as it is; while there is one, no time range
    /// can be edited.
    void SetZooms(std::map<std::uint32_t, double> spans) { m_scales.SetZooms(std::move(spans)); }

    /// Shows a graph by its number, with one of its y axes. False, and an error-log entry, for a
    /// number that no graph has.
    bool SetWindowData(std::uint32_t graph_number, std::size_t axis);

    /// Whether the editor has been in use since it was closed last.
    [[nodiscard]] bool IsShown() const { return m_shown; }
    /// Number of the graph that is shown for editing; 0 for none.
    [[nodiscard]] std::uint32_t SelectedNumber() const { return m_editing.SelectedNumber(); }
    /// Whether times and zooms are for all graphs.
    [[nodiscard]] bool AllGraphs() const { return m_scales.AllGraphs(); }
    /// Whether the mouse zooms.
    [[nodiscard]] bool ZoomEnabled() const {
        return m_fields.IsChecked(EditorControl::kZoomEnable);
    }
    /// The colour that the next y axis gets.
    [[nodiscard]] ColorRef PickedColor() const { return m_axes.PickedColor(); }
    /// What stands in the controls.
    [[nodiscard]] const EditorFields& Fields() const { return m_fields; }

 Q_SIGNALS:
    /// Zooms can no longer be stepped back from.
    void SelectionReset();

 protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

 private:
    void Show(const WavoGraph& graph, std::size_t axis);
    std::int64_t OnMessage(AppMessage number, std::int64_t l_param);
    void SelectByMessage(std::uint32_t graph_number);
    void Close();

    const std::function<void()> m_graph_shown;
    EditorFields m_fields;
    GraphEditing m_editing;
    GraphPage m_graph;
    AxesPage m_axes;
    ScalesPage m_scales;
    DisplayPage m_display;
    bool m_shown = false;
};

}  // namespace wavo
