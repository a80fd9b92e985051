// What the pages of the graph editor share: the document, the graph that is selected in it, and how
// a change of it goes back and is announced.
//
// Every change is made to a copy of the selected record, which goes back whole into the document,
// with its derived radii; the view is then told by a posted message. Selected is the graph whose
// number stands in the combo of the graph numbers.
//
// Invariant: without a selected graph no record is changed and no change announced.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "graph/model/graph_list.h"
#include "ui/graph_editor/graph_edits.h"
#include "ui/messages.h"

class QObject;

namespace wavo {

class AxisLimitsSource;
class EditorFields;

/// What the editor knows besides the document.
struct EditorSurroundings {
    /// Where the scale of a new y axis comes from; may be null; not owned.
    AxisLimitsSource* limits = nullptr;
    /// How large the curves of a graph are drawn; empty: nothing is known.
    std::function<PlotSize(std::uint32_t graph_number)> plot_sizes;
    std::vector<std::string> axis_names;  ///< that the master offers
    ColorRef background = 0;              ///< of the graphs
    /// The spans, seconds, of the graphs that are zoomed, by their numbers.
    std::map<std::uint32_t, double> zooms;
};

/// The y axis of a graph that the controls name; nothing when it has no such one.
std::optional<std::size_t> ChosenAxis(const EditorFields& fields, const WavoGraph& graph);

class GraphEditing {
 public:
    /// Shows a graph, with one of its y axes, in all controls.
    using Shower = std::function<void(const WavoGraph& graph, std::size_t axis)>;

    /// `fields` and `view` are not owned and outlive this object; `view` gets the messages and may
    /// be null.
    GraphEditing(EditorFields& fields, QObject* view, Shower shower);

    /// Takes another document; not owned, outlives this object.
    void SetDocument(GraphList& graphs) { m_graphs = &graphs; }
    /// Shows the first graph of the document and announces it.
    void Begin();
    /// Whether there was a graph to edit since SetNotInitialised.
    [[nodiscard]] bool IsInitialised() const { return m_initialised; }
    void SetNotInitialised() { m_initialised = false; }

    [[nodiscard]] EditorSurroundings& Known() { return m_known; }
    [[nodiscard]] PlotSize PlotSizeOf(const WavoGraph& graph) const;

    /// The document; null before there is one. Whoever changes it does so silently: the view learns
    /// of changes by messages alone, so that bounds that are no range yet can be stored.
    [[nodiscard]] GraphList* Document() const { return m_graphs; }
    [[nodiscard]] const WavoGraph* Find(std::uint32_t graph_number) const;
    /// Number of the graph that is shown for editing; 0 for none.
    [[nodiscard]] std::uint32_t SelectedNumber() const;
    [[nodiscard]] const WavoGraph* Selected() const { return Find(SelectedNumber()); }
    /// The y axis that is looked at, and the derivation that its edit says.
    [[nodiscard]] std::optional<std::size_t> ChosenAxis(const WavoGraph& graph) const;
    [[nodiscard]] std::int32_t Derivation() const;

    /// Changes a copy of the selected graph and puts it back; with `announce`, tells the view.
    /// `change` returns whether it changed anything. False when nothing was put back.
    bool Change(const std::function<bool(WavoGraph&)>& change, bool announce = true);
    /// Tells the view which graph changed; kNoGraph for none.
    void Announce(std::int64_t graph_number);
    /// Sends the view a message.
    void Send(AppMessage number, std::int64_t l_param) const;

    void Show(const WavoGraph& graph, std::size_t axis);
    void ShowAgain();
    void ShowWithChosenAxis();
    void ShowNoGraph();
    /// Number of the graph that the controls show; 0 for none.
    [[nodiscard]] std::uint32_t ShownNumber() const { return m_shown_graph; }

    /// Shows the graph of the selected number; makes it where there is none.
    void SelectGraph();

 private:
    void CreateGraph(std::uint32_t number);

    // Constant after construction.
    EditorFields& m_fields;
    QObject* const m_view;
    const Shower m_shower;

    EditorSurroundings m_known;
    GraphList* m_graphs = nullptr;  // the document
    std::uint32_t m_shown_graph = 0;
    bool m_initialised = false;
    bool m_notify = false;  // changes are announced
};

}  // namespace wavo
