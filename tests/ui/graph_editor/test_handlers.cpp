// Every control of the graph editor: the record before, what the user does, the record after, the
// messages to the view and the traces.
#include "handler_rows.h"

namespace wavo {
namespace {

using testing::Describe;
using ::testing::ElementsAreArray;
using testing::Input;
using testing::Row;

class EveryHandler : public testing::EditorFixture, public ::testing::WithParamInterface<Row> {};

TEST_P(EveryHandler, ChangesTheRecordAndTellsTheView) {
    const Row& row = GetParam();
    WavoGraph graph = row.graph(1);
    if (row.before != nullptr) {
        row.before(graph);
    }
    graph.UpdateGuidingCircles();
    Begin({graph});
    const testing::CollectReports traces(diagnostics::Service::kTrace);
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
    ASSERT_EQ(m_graphs.size(), 1U);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(graph));
    WavoGraph derived = m_graphs[0];
    derived.UpdateGuidingCircles();
    EXPECT_EQ(m_graphs[0].InnerGuidingCircleDY, derived.InnerGuidingCircleDY);
    EXPECT_EQ(m_graphs[0].OuterGuidingCircleDY, derived.OuterGuidingCircleDY);
    EXPECT_THAT(m_view.Take(), ElementsAreArray(row.messages));
    EXPECT_THAT(traces.Texts(), ElementsAreArray(row.traces));
}

std::string NameOf(const ::testing::TestParamInfo<Row>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Coordinates, EveryHandler, ::testing::ValuesIn(testing::CoordinateRows()),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Scales, EveryHandler, ::testing::ValuesIn(testing::ScaleRows()), NameOf);

}  // namespace
}  // namespace wavo
