// A user who does anything, in any order: the records stay what a record has to be.
//
// WAVO_EDITOR_STEPS sets the number of steps.
#include <QComboBox>
#include <cmath>
#include <random>
#include <set>

#include "editor_fixture.h"
#include "ui/graph_editor/graph_edits.h"

namespace wavo {
namespace {

using enum EditorControl;
using testing::AxisGraph;
using testing::Describe;
using testing::TimeGraph;

constexpr int kStepsOfAnOrdinaryTest = 3000;

/// What is wrong with a record; empty for nothing.
std::string FaultOf(const WavoGraph& graph) {
    const std::size_t axes = graph.YCoorAxName.size();
    const bool one_scale_more = axes == 0 && graph.YScales.size() == 1;
    if (graph.YCoorAxColor.size() != axes || graph.YCoorAxDerivation.size() != axes ||
        graph.Triggers.size() != axes || (graph.YScales.size() != axes && !one_scale_more)) {
        return "lists of different lengths";
    }
    if (graph.GraphNumber == 0) {
        return "no number";
    }
    if (graph.XCoorType == CoorType::kAxis && axes > 1) {
        return "two y axes over an axis";
    }
    if (MixesTriggers(graph)) {
        return "start and stop triggers";
    }
    const double numbers[] = {graph.XScale.Minimum,       graph.XScale.Maximum,
                              graph.XScale.TimeRange,     graph.InnerGuidingCircleDX,
                              graph.OuterGuidingCircleDX, graph.FadeOutTime};
    for (const double number : numbers) {
        if (!std::isfinite(number)) {
            return "a number that is none";
        }
    }
    if (graph.XScale.ScaleType == ScaleTypeCode::kTime && graph.XScale.TimeRange < kMinTimeRange) {
        return "time range too short";
    }
    if (graph.XCoorType == CoorType::kTime && graph.XScale.ScaleType != ScaleTypeCode::kTime) {
        return "time over a scale of an axis";
    }
    if (!(graph.FadeOutTime > 0.0)) {
        return "no fade-out time";
    }
    for (const ScaleDefinition& scale : graph.YScales) {
        if (scale.ScaleType != ScaleTypeCode::kAxis || !std::isfinite(scale.Minimum) ||
            !std::isfinite(scale.Maximum)) {
            return "invalid y scale";
        }
    }
    return {};
}

class RandomActions : public testing::EditorFixture {
 protected:
    RandomActions() {
        m_limits.axes["X"] = {400.0, -20.0, 250.0, 3000.0, 0.001};
        m_prompts.color = [this](QWidget*, const QColor&) {
            return std::optional(QColor::fromRgb(static_cast<QRgb>(m_random())));
        };
        m_prompts.trigger = [this](QWidget*, TriggerEntry& trigger) {
            trigger.TriggerType = static_cast<TriggerTypeCode>(1 + Below(5));
            trigger.TriggerValue = static_cast<double>(Below(100));
            return Below(4) != 0;
        };
    }

    std::size_t Below(std::size_t count) { return m_random() % count; }

    void Step() {
        switch (Below(40)) {
            case 0:
                Begin({TimeGraph(1), AxisGraph(2)});
                return;
            case 1:
                SendAppMessage(m_editor.get(), AppMessage::kSelectGraph, 0,
                               static_cast<std::int64_t>(Below(8)));
                return;
            case 2: {
                const GraphAndTime chosen{static_cast<std::uint32_t>(Below(8)), 0.5};
                SendAppMessage(m_editor.get(), AppMessage::kSelectGraphAndTime, 0,
                               reinterpret_cast<std::int64_t>(&chosen));
                return;
            }
            case 3:
                m_editor->SetZooms(Below(2) == 0 ? std::map<std::uint32_t, double>{{1, 0.5}}
                                                 : std::map<std::uint32_t, double>{});
                return;
            case 4:
                m_editor->SetAcquisitionRuns(Below(2) == 0);
                return;
            case 5:
                for (const WavoGraph& graph : m_graphs) {
                    m_plots[graph.GraphNumber] = {static_cast<std::int32_t>(Below(1000)),
                                                  static_cast<std::int32_t>(Below(200))};
                }
                return;
            default:
                Operate(EditorControls()[Below(EditorControls().size())]);
        }
    }

    void Operate(const EditorRow& row) {
        static const char* const kTexts[] = {
            "",       "0",  "1",        "2",  "3",           "12",    "-1",  "abc",
            "X",      "Y",  "Z",        "Q",  "1e9",         "-1e9",  "5",   "-5",
            "0.1",    ".5", "1e-9",     "30", "-30",         "1e308", "nan", "inf",
            "-1e308", " 7", "\xC3\xA4", "4",  "99999999999", "0x1F"};
        m_what = std::to_string(static_cast<int>(row.id));
        if (!IsEnabled(row.id)) {
            return;
        }
        const std::string text = kTexts[Below(std::size(kTexts))];
        switch (row.kind) {
            case ControlKind::kEdit:
                m_what += " " + text;
                Type(row.id, text);
                if (Below(3) == 0) {
                    QTest::keyClick(&Get(row.id), Qt::Key_Return);
                }
                return;
            case ControlKind::kCombo:
                if (Below(2) == 0) {
                    m_what += " " + text;
                    Type(row.id, text);
                } else {
                    QTest::keyClick(&Get(row.id), Below(2) == 0 ? Qt::Key_Down : Qt::Key_Up);
                }
                return;
            default:
                Click(row.id);
        }
    }

    std::mt19937 m_random{20240607};
    std::string m_what;
};

TEST_F(RandomActions, NeverBreakARecord) {
    const testing::ExpectAnyErrorLog any;
    const int steps = qEnvironmentVariableIsSet("WAVO_EDITOR_STEPS")
                          ? qEnvironmentVariableIntValue("WAVO_EDITOR_STEPS")
                          : kStepsOfAnOrdinaryTest;
    ASSERT_GT(steps, 0);
    Begin({});
    std::size_t most_graphs = 0;
    std::set<std::string> records;
    for (int step = 0; step < steps; ++step) {
        Step();
        std::set<std::uint32_t> numbers;
        for (const WavoGraph& graph : m_graphs) {
            ASSERT_EQ(FaultOf(graph), "") << "step " << step << ", control " << m_what << "\n"
                                          << Describe(graph);
            ASSERT_TRUE(numbers.insert(graph.GraphNumber).second) << "step " << step;
        }
        most_graphs = std::max(most_graphs, m_graphs.size());
        if (step < kStepsOfAnOrdinaryTest && !m_graphs.empty()) {
            records.insert(Describe(m_graphs.front()));
        }
        m_view.Take();
    }
    // The user got about.
    EXPECT_GE(most_graphs, 4U);
    EXPECT_GE(records.size(), 100U);
}

}  // namespace
}  // namespace wavo
