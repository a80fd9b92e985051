#include "ui/graph_editor/graph_editing.h"

#include <QComboBox>
#include <QString>
#include <algorithm>
#include <utility>

#include "graph/model/graph_ini_data.h"
#include "support/number_text.h"
#include "ui/graph_editor/editor_fields.h"

namespace wavo {

namespace {

std::int32_t DerivationOf(const EditorFields& fields) {
    return std::clamp(ReadInteger(fields.Text(EditorControl::kDerivation)), 0,
                      kHighestStoredDerivation);
}

}  // namespace

GraphEditing::GraphEditing(EditorFields& fields, QObject* view, Shower shower)
    : m_fields(fields), m_view(view), m_shower(std::move(shower)) {}

void GraphEditing::Begin() {
    m_initialised = !m_graphs->IsEmpty();
    m_notify = m_initialised;
    if (!m_initialised) {
        ShowNoGraph();
        PostAppMessage(m_view, AppMessage::kGraphChanged, 0, kNoGraph);
    } else {
        const WavoGraph& first = m_graphs->Graphs().front();
        Show(first, 0);
        Announce(first.GraphNumber);
    }
}

PlotSize GraphEditing::PlotSizeOf(const WavoGraph& graph) const {
    return m_known.plot_sizes ? m_known.plot_sizes(graph.GraphNumber) : PlotSize();
}

const WavoGraph* GraphEditing::Find(std::uint32_t graph_number) const {
    return m_graphs == nullptr || graph_number == 0 ? nullptr : m_graphs->Find(graph_number);
}

std::uint32_t GraphEditing::SelectedNumber() const {
    return ReadUnsigned(m_fields.Text(EditorControl::kGraphNumber));
}

std::int32_t GraphEditing::Derivation() const {
    return DerivationOf(m_fields);
}

std::optional<std::size_t> ChosenAxis(const EditorFields& fields, const WavoGraph& graph) {
    return FindYAxis(graph, fields.Text(EditorControl::kYAxis), DerivationOf(fields));
}

std::optional<std::size_t> GraphEditing::ChosenAxis(const WavoGraph& graph) const {
    return wavo::ChosenAxis(m_fields, graph);
}

bool GraphEditing::Change(const std::function<bool(WavoGraph&)>& change, bool announce) {
    const WavoGraph* const graph = Selected();
    if (graph == nullptr) {
        ShowAgain();
        return false;
    }
    WavoGraph copy = *graph;
    if (!change(copy)) {
        return false;
    }
    const std::uint32_t number = copy.GraphNumber;
    m_graphs->Put(std::move(copy), GraphList::Telling::kSilent);
    if (announce) {
        Announce(number);
    }
    return true;
}

void GraphEditing::Announce(std::int64_t graph_number) {
    if (m_notify) {
        PostAppMessage(m_view, AppMessage::kGraphChanged, 0, graph_number);
    }
}

void GraphEditing::Send(AppMessage number, std::int64_t l_param) const {
    SendAppMessage(m_view, number, 0, l_param);
}

void GraphEditing::Show(const WavoGraph& graph, std::size_t axis) {
    if (axis < graph.YCoorAxName.size()) {  // the one of its name that is changed
        axis = FindYAxis(graph, graph.YCoorAxName[axis], DerivationOf(graph, axis)).value_or(axis);
    }
    m_shown_graph = graph.GraphNumber;
    m_shower(graph, axis);
}

void GraphEditing::ShowAgain() {
    if (const WavoGraph* const graph = Find(m_shown_graph)) {
        const std::string number = m_fields.Text(EditorControl::kGraphNumber);
        Show(*graph, ChosenAxis(*graph).value_or(0));
        // The user may be about to type another number.
        m_fields.SetText(EditorControl::kGraphNumber, QString::fromStdString(number));
    } else {
        ShowNoGraph();
    }
}

void GraphEditing::ShowWithChosenAxis() {
    if (const WavoGraph* const graph = Selected()) {
        Show(*graph, ChosenAxis(*graph).value_or(0));
    }
}

void GraphEditing::ShowNoGraph() {
    WavoGraph graph;
    graph.InitGraph(0, nullptr, 0, nullptr);
    const std::string number = m_fields.Text(EditorControl::kGraphNumber);
    Show(graph, 0);
    m_fields.SetText(EditorControl::kGraphNumber, QString::fromStdString(number));
}

void GraphEditing::SelectGraph() {
    const std::uint32_t number = SelectedNumber();
    if (number == 0 || m_graphs == nullptr) {
        return;
    }
    if (const WavoGraph* const graph = Find(number)) {
        Show(*graph, 0);
    } else if (number != kNoGraph) {
        CreateGraph(number);
    }
}

void GraphEditing::CreateGraph(std::uint32_t number) {
    WavoGraph graph;
    graph.InitGraph(number, nullptr, m_known.background, m_known.limits);
    graph.UpdateGuidingCircles();
    m_graphs->Add(graph, GraphList::Telling::kSilent);
    m_initialised = true;
    m_notify = true;
    m_fields.Combo(EditorControl::kGraphNumber).addItem(QString::number(number));
    Show(graph, 0);
    Announce(number);
}

}  // namespace wavo
