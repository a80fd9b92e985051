// The graph editor with real controls, operated as a user would, between a list of graphs and a
// view that records its messages.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "link/axis_capabilities.h"
#include "real_prompts.h"
#include "support/diagnostics.h"
#include "ui/controls/controls.h"
#include "ui/graph_editor/ax_select.h"

namespace wavo::testing {

/// Everything that a record says but the derived radii, one entry per line.
std::string Describe(const WavoGraph& graph);

/// A graph over time with y axes X, X' and Y.
WavoGraph TimeGraph(std::uint32_t number = 1);
/// X over Y with manual scales: x from -10 to 30, y from -5 to 5. Begin tells the editor that its
/// curves are drawn on 400 x 100 pixels.
WavoGraph AxisGraph(std::uint32_t number = 1);

/// Keeps the messages that it gets: "590", "591 1", "593 1"; of 0x592, the number of the graph.
class RecordingView : public QObject {
 public:
    bool event(QEvent* event) override;
    /// What came since the last call; posted messages are delivered first.
    std::vector<std::string> Take();
    /// What came so far without those that are posted and wait.
    [[nodiscard]] const std::vector<std::string>& Arrived() const { return m_messages; }

 private:
    std::vector<std::string> m_messages;
};

class KnownLimits : public AxisLimitsSource {
 public:
    std::optional<AxisCapabilities> FindAxis(const std::string& name) override;
    std::map<std::string, AxisCapabilities> axes;
};

class EditorFixture : public ::testing::Test {
 protected:
    EditorFixture();

    /// Gives the editor graphs to edit; drops the messages of that.
    void Begin(std::vector<WavoGraph> graphs);

    template <typename Widget = QWidget>
    [[nodiscard]] Widget& Get(EditorControl id) {
        return *FindControl<Widget>(*m_editor, static_cast<int>(id));
    }
    void Click(EditorControl id);
    /// Goes to an edit, or the edit part of a combo, replaces its text in one step and leaves it.
    void Type(EditorControl id, const std::string& text);
    /// The same without leaving it.
    void TypeAndStay(EditorControl id, const std::string& text);
    void Leave(EditorControl id);
    /// Chooses an entry of a combo from its list.
    void Choose(EditorControl id, const std::string& text);
    /// Shows a y axis: its name and derivation are typed.
    void ChooseYAxis(const std::string& name, int derivation);

    [[nodiscard]] bool IsChecked(EditorControl id) { return m_editor->Fields().IsChecked(id); }
    [[nodiscard]] bool IsEnabled(EditorControl id) { return Get(id).isEnabled(); }
    [[nodiscard]] std::string Text(EditorControl id) { return m_editor->Fields().Text(id); }
    [[nodiscard]] std::vector<std::string> Entries(EditorControl id);

    /// What graphs are drawn on, by their numbers; nothing for those that are not laid out.
    std::map<std::uint32_t, PlotSize> m_plots;
    GraphList m_list;
    const std::vector<WavoGraph>& m_graphs = m_list.Graphs();
    RecordingView m_view;
    KnownLimits m_limits;
    std::vector<Box> m_boxes;
    Prompts m_prompts = RealPrompts();
    std::unique_ptr<CAxSelect> m_editor = std::make_unique<CAxSelect>(&m_view, m_prompts);
};

}  // namespace wavo::testing
