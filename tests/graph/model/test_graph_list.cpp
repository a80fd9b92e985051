#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "graph/model/graph_list.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Kind = GraphChange::Kind;
using Telling = GraphList::Telling;

WavoGraph Numbered(std::uint32_t number, const char* axis = "X") {
    WavoGraph graph;
    graph.InitGraph(number, axis, 0, nullptr);
    return graph;
}

class Document : public ::testing::Test {
 protected:
    Document() {
        m_list.SetObserver([this](const GraphChange& change) { m_changes.push_back(change); });
    }
    [[nodiscard]] std::vector<std::uint32_t> Numbers() const {
        std::vector<std::uint32_t> numbers;
        for (const WavoGraph& graph : m_list.Graphs()) {
            numbers.push_back(graph.GraphNumber);
        }
        return numbers;
    }

    GraphList m_list;
    std::vector<GraphChange> m_changes;
};

TEST_F(Document, TellsOfEachChangeAfterItIsMade) {
    std::vector<std::size_t> sizes;
    m_list.SetObserver([&](const GraphChange& change) {
        m_changes.push_back(change);
        sizes.push_back(m_list.Graphs().size());
    });
    m_list.Add(Numbered(3));
    m_list.Add(Numbered(7), Telling::kSilent);
    EXPECT_TRUE(m_list.Put(Numbered(7, "Y"), Telling::kSilent));
    EXPECT_TRUE(m_list.Remove(3));
    m_list.Replace({});
    EXPECT_THAT(m_changes,
                ElementsAre(GraphChange{Kind::kAdded, 3, false}, GraphChange{Kind::kAdded, 7, true},
                            GraphChange{Kind::kPut, 7, true}, GraphChange{Kind::kRemoved, 3, false},
                            GraphChange{Kind::kReplaced, 0, false}));
    EXPECT_THAT(sizes, ElementsAre(1U, 2U, 2U, 1U, 0U));
    EXPECT_TRUE(m_list.IsEmpty());
}

TEST_F(Document, WhatIsNotThereChangesNothingAndTellsNobody) {
    m_list.Add(Numbered(3));
    m_changes.clear();
    EXPECT_FALSE(m_list.Put(Numbered(4)));
    EXPECT_FALSE(m_list.Remove(4));
    EXPECT_EQ(m_list.Find(4), nullptr);
    EXPECT_THAT(Numbers(), ElementsAre(3U));
    EXPECT_THAT(m_changes, IsEmpty());
}

TEST_F(Document, KeepsTheOrderOfTheGraphs) {
    m_list.Replace({Numbered(5), Numbered(2), Numbered(9)});
    m_list.Put(Numbered(2, "Z"));
    EXPECT_THAT(Numbers(), ElementsAre(5U, 2U, 9U));
    EXPECT_THAT(m_list.Find(2)->YCoorAxName, ElementsAre("Z"));
    m_list.Remove(5);
    m_list.Add(Numbered(5));
    EXPECT_THAT(Numbers(), ElementsAre(2U, 9U, 5U));
}

TEST_F(Document, AFreeNumberIsOneAboveTheHighest) {
    EXPECT_EQ(m_list.FreeNumber(), 1U);
    m_list.Replace({Numbered(5), Numbered(2)});
    EXPECT_EQ(m_list.FreeNumber(), 6U);
}

TEST_F(Document, AGraphThatIsPutHasGuidingCirclesOfItsScales) {
    WavoGraph graph = Numbered(1);
    graph.AutoCircle = false;
    m_list.Add(graph);
    graph.XScale.Minimum = 0.0;
    graph.XScale.Maximum = 10.0;
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 0.0, 5.0}};
    graph.InnerGuidingCircleDX = 2.0;
    m_list.Put(graph);
    EXPECT_EQ(m_list.Find(1)->InnerGuidingCircleDY, 1.0);
}

TEST_F(Document, NobodyNeedsToListen) {
    m_list.SetObserver(nullptr);
    m_list.Add(Numbered(1));
    EXPECT_TRUE(m_list.Remove(1));
    EXPECT_THAT(m_changes, IsEmpty());
}

}  // namespace
}  // namespace wavo
