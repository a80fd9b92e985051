// The graph editor: a strip of controls above the graphs that shows one graph definition and
// changes it.
//
// Every change is made to a copy of the selected record, which goes back whole into the view's
// list, with its derived radii; the view is then told by a posted message. Selected is the graph
// whose number stands in the combo of the graph numbers.
//
// Invariants:
// 1. Without a selected graph no record is changed and no change announced.
// 2. What the editor writes into its controls never counts as a change.
// 3. What was not taken of a text does not stay when its edit is left. Bounds of a scale that is
//    not manual wait for a click on `manual`.
// 4. No record is referred to across an event loop: a dialog's result goes to the graph that has
//    the number then, if it still has that axis.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "graph/model/graph_list.h"
#include "ui/graph_editor/editor_strip.h"
#include "ui/graph_editor/graph_edits.h"
#include "ui/messages.h"

namespace wavo {

class AxisLimitsSource;

class CAxSelect : public EditorStrip {
    Q_OBJECT

 public:
    /// `view` gets the messages; may be null; not owned, outlives the editor.
    explicit CAxSelect(QObject* view, QWidget* parent = nullptr);
    ~CAxSelect() override;

    /// Takes the document to edit (not owned, outlives the editor) and the axis names that the
    /// master offers, and announces the graphs to the view with a posted kGraphChanged. False on
    /// failure.
    bool Init(GraphList& graphs, const std::vector<std::string>& axis_names);
    /// Whether there was a graph to edit since SetNotInitialised.
    [[nodiscard]] bool IsInitialised() const { return m_initialised; }
    void SetNotInitialised() { m_initialised = false; }
    /// Drops all zooms that could be stepped back from.
    void ResetSelection();
    /// Seconds per line of the master.
    void SetCycleTime(double cycle_time);
    /// Whether values flow into the graphs.
    void SetAcquisitionRuns(bool runs);

    /// Where the scale of a new y axis comes from; may be null; not owned, outlives the editor.
    void SetAxisLimits(AxisLimitsSource* limits) { m_limits = limits; }

    /// Tells how large the curves of a graph are drawn; nothing is known before it is set.
    using PlotSizeSource = std::function<PlotSize(std::uint32_t graph_number)>;
    void SetPlotSizes(PlotSizeSource plot_sizes) { m_plot_sizes = std::move(plot_sizes); }

    /// The background of the graphs: colours of new curves stand out from it.
    void SetBackground(ColorRef background);

    /// The spans, seconds, of the graphs that are zoomed, by their numbers. A zoomed graph shows
    /// its span in place of its time range, which stays as it is; while there is one, no time range
    /// can be edited.
    void SetZooms(std::map<std::uint32_t, double> spans);

    /// Shows a graph by its number, with one of its y axes. False, and an error-log entry, for a
    /// number that no graph has.
    bool SetWindowData(std::uint32_t graph_number, std::size_t axis);

    /// Whether the editor has been in use since it was closed last.
    [[nodiscard]] bool IsShown() const { return m_shown; }
    /// Number of the graph that is shown for editing; 0 for none.
    [[nodiscard]] std::uint32_t SelectedNumber() const;
    /// Whether times and zooms are for all graphs.
    [[nodiscard]] bool AllGraphs() const { return IsChecked(EditorControl::kAllGraphs); }
    /// Whether the mouse zooms.
    [[nodiscard]] bool ZoomEnabled() const { return IsChecked(EditorControl::kZoomEnable); }
    /// The colour that the next y axis gets.
    [[nodiscard]] ColorRef PickedColor() const { return m_picked_color; }

    /// Lets the user edit a trigger over `parent`; false when nothing was decided.
    using TriggerDialog = std::function<bool(TriggerEntry& trigger, QWidget* parent)>;
    /// Asks `dialog` from now on instead of showing the dialog; null shows it again.
    void SetTriggerDialog(TriggerDialog dialog);

 Q_SIGNALS:
    /// Zooms can no longer be stepped back from.
    void SelectionReset();

 protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

 private:
    // Lifecycle, messages and selection (ax_select.cpp).
    void ConnectControls();
    void ConnectTexts();
    void OnClick(EditorControl id, void (CAxSelect::*handler)());
    void OnEdit(EditorControl id, void (CAxSelect::*handler)());
    void OnCombo(EditorControl id, void (CAxSelect::*handler)());
    std::int64_t OnMessage(AppMessage number, std::int64_t l_param);
    void SelectByMessage(std::uint32_t graph_number);
    void FillCombos();
    void Close();
    void SelectGraph();
    void CreateGraph(std::uint32_t number);
    void DeleteGraph();
    void SaveValues();
    void ZoomOut();

    // The document (ax_select.cpp). The view learns of changes by messages alone, so that bounds
    // that are no range yet can be stored.
    [[nodiscard]] const WavoGraph* Find(std::uint32_t graph_number) const;
    [[nodiscard]] const WavoGraph* Selected() const { return Find(SelectedNumber()); }
    /// Tells the view which graph changed; kNoGraph for none.
    void Announce(std::int64_t graph_number);
    /// Changes a copy of the selected graph and puts it back; with `announce`, tells the view.
    /// `change` returns whether it changed anything. False when nothing was put back.
    bool Change(const std::function<bool(WavoGraph&)>& change, bool announce = true);

    // Showing (ax_select_show.cpp).
    void Show(const WavoGraph& graph, std::size_t axis);
    void ShowAgain();
    void ShowWithChosenAxis();
    void ShowNoGraph();
    void ShowCoordinates(const WavoGraph& graph, std::size_t axis);
    void ShowYAxes(const QString& axes);
    void ShowTriggerState(bool is_defined);
    void ShowScales(const WavoGraph& graph, std::size_t axis);
    void DisplayScaleAx(const ScaleDefinition& scale, EditorControl automatic, EditorControl manual,
                        EditorControl minimum, EditorControl maximum);
    void ShowCircles(const WavoGraph& graph);
    void EnableControls(const WavoGraph& graph);
    void EnableTimeRange();
    void ShowColor();
    void ShowTimeRange(const WavoGraph& graph);

    // What became of what was typed (ax_select_taken.cpp).
    void ShowTaken(EditorControl id);
    void ShowTakenBound(EditorControl id, const ScaleDefinition& scale, bool waits);
    void ShowTakenNumber(EditorControl id, std::optional<double> value, int decimals);

    // Coordinates and axes (ax_select_axes.cpp).
    [[nodiscard]] std::int32_t Derivation() const;
    [[nodiscard]] std::optional<std::size_t> ChosenAxis(const WavoGraph& graph) const;
    [[nodiscard]] PlotSize PlotSizeOf(const WavoGraph& graph) const;
    [[nodiscard]] bool IsMasterAxis(const std::string& name) const;
    void OnXIsTime();
    void OnXIsAxis();
    void OnXAxis();
    void OnYAxis();
    void OnAddYAxis();
    void OnDeleteYAxis();
    void OnColor();
    void OnTrigger();
    void TakeNextColor(const WavoGraph& graph);

    // Scales, modes and circles (ax_select_scales.cpp).
    void ReadXScale(WavoGraph& graph) const;
    void ApplyTimeToAllGraphs(double time);
    void TakeTime();
    void OnXTime();
    void OnXAutomatic();
    void OnXManual();
    void OnTimeRange();
    void OnAllGraphs();
    void OnXBound(EditorControl id);
    void OnYBound(EditorControl id);
    void OnYAutomatic();
    void OnYManual();
    void SetMode(GraphMode mode);
    void SetModeAx(AxisDrawMode mode);
    void OnAutoCircle();
    void OnZeroLines();
    void OnCircle(EditorControl id);
    void OnFadeOutTime();

    // Constant after construction.
    QObject* m_view;
    TriggerDialog m_trigger_dialog;

    GraphList* m_graphs = nullptr;          // the document
    std::vector<std::string> m_axis_names;  // that the master offers
    AxisLimitsSource* m_limits = nullptr;
    PlotSizeSource m_plot_sizes;
    std::map<std::uint32_t, double> m_zooms;  // spans, seconds
    std::uint32_t m_shown_graph = 0;  // number of the graph that the controls show; 0 for none
    std::int32_t m_color_index = -1;  // y axis whose colour the colour field shows; -1 for none
    ColorRef m_background = 0;
    ColorRef m_picked_color;
    bool m_initialised = false;
    bool m_notify = false;  // changes are announced
    bool m_shown = false;
};

}  // namespace wavo
