// Every control of the graph editor: the record before, what the user does, the record after, the
// messages to the view and the traces.
#include <set>

#include "handler_rows.h"

namespace wavo {
namespace {

using testing::Describe;
using ::testing::ElementsAreArray;
using testing::Input;
using testing::Row;

class EveryHandler : public testing::EditorFixture, public ::testing::WithParamInterface<Row> {
 protected:
    EveryHandler() {
        m_prompts.color = [](QWidget*, const QColor&) {
            return std::optional(testing::kChosenColor);
        };
        m_prompts.trigger = [](QWidget*, TriggerEntry& trigger) {
            trigger = testing::kChosenTrigger;
            return true;
        };
        m_editor->SetAcquisitionRuns(false);
    }
};

TEST_P(EveryHandler, ChangesTheRecordAndTellsTheView) {
    const Row& row = GetParam();
    WavoGraph graph = row.graph(1);
    if (row.before != nullptr) {
        row.before(graph);
    }
    graph.UpdateGuidingCircles();
    Begin({graph});
    m_plots.clear();
    if (row.laid_out && row.graph == testing::AxisGraph) {
        m_plots[1] = {400, 100};
    }
    const testing::CollectReports traces(diagnostics::Service::kTrace);
    const testing::ExpectErrorLog errors(row.errors);
    for (const Input& input : row.inputs) {
        ASSERT_TRUE(IsEnabled(input.control)) << static_cast<int>(input.control);
        if (input.text == nullptr) {
            Click(input.control);
        } else {
            Type(input.control, input.text);
        }
    }
    if (row.after != nullptr) {
        row.after(graph);
    }
    ASSERT_EQ(m_graphs.size(), row.graphs);
    if (row.graphs > 0) {
        EXPECT_EQ(Describe(m_graphs[0]), Describe(graph));
        WavoGraph derived = m_graphs[0];
        derived.UpdateGuidingCircles();
        EXPECT_EQ(m_graphs[0].InnerGuidingCircleDY, derived.InnerGuidingCircleDY);
        EXPECT_EQ(m_graphs[0].OuterGuidingCircleDY, derived.OuterGuidingCircleDY);
    }
    EXPECT_THAT(m_view.Take(), ElementsAreArray(row.messages));
    EXPECT_THAT(traces.Texts(), ElementsAreArray(row.traces));
}

std::string NameOf(const ::testing::TestParamInfo<Row>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Graph, EveryHandler, ::testing::ValuesIn(testing::GraphRows()), NameOf);
INSTANTIATE_TEST_SUITE_P(Coordinates, EveryHandler, ::testing::ValuesIn(testing::CoordinateRows()),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Scales, EveryHandler, ::testing::ValuesIn(testing::ScaleRows()), NameOf);

TEST(EveryControl, ThatCanBeOperatedHasARowThatEndsWithIt) {
    std::set<EditorControl> operated;
    for (const auto& rows :
         {testing::GraphRows(), testing::CoordinateRows(), testing::ScaleRows()}) {
        for (const Row& row : rows) {
            operated.insert(row.inputs.back().control);
        }
    }
    for (const EditorRow& control : EditorControls()) {
        const bool is_shown_only =
            control.kind == ControlKind::kReadOnlyEdit || control.kind == ControlKind::kStatic;
        EXPECT_EQ(operated.count(control.id), is_shown_only ? 0U : 1U)
            << static_cast<int>(control.id);
    }
}

}  // namespace
}  // namespace wavo
