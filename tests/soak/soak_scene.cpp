#include "soak_scene.h"

#include <QFile>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <tuple>
#include <utility>

#include "ui/messages.h"

namespace wavo::testing {

namespace {

constexpr std::size_t kStreamsOfGraph = kSoakAxes / kSoakGraphs;
constexpr double kTimeRange = 10.0;  // s
constexpr std::size_t kRecordedLines = 8000;
constexpr double kAmplitude = 100.0;

TriggerTypeCode TriggerOf(std::size_t graph) {
    switch (graph % 4) {
        case 1:
            return TriggerTypeCode::kStartAbove;
        case 3:
            return TriggerTypeCode::kStopBelow;
        default:
            return TriggerTypeCode::kNone;
    }
}

}  // namespace

std::vector<std::string> SoakAxisNames() {
    std::vector<std::string> names;
    for (std::size_t axis = 0; axis < kSoakAxes; ++axis) {
        names.push_back("A" + std::to_string(axis));
    }
    return names;
}

void WriteSoakRecording(const QString& path) {
    std::string text;
    for (const std::string& name : SoakAxisNames()) {
        text += (text.empty() ? "" : ",") + name;
    }
    text += '\n';
    for (std::size_t line = 0; line < kRecordedLines; ++line) {
        for (std::size_t axis = 0; axis < kSoakAxes; ++axis) {
            constexpr double kTurn = 6.283185307179586;
            const double turns =
                static_cast<double>(line) / kRecordedLines + static_cast<double>(axis) / kSoakAxes;
            char number[40];
            std::snprintf(number, sizeof number, "%s%.6f", axis == 0 ? "" : ",",
                          kAmplitude * std::sin(kTurn * turns));
            text += number;
        }
        text += '\n';
    }
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(text.data(), static_cast<qint64>(text.size()));
    }
}

std::vector<WavoGraph> SoakGraphs() {
    const std::vector<std::string> names = SoakAxisNames();
    std::vector<WavoGraph> graphs;
    for (std::size_t g = 0; g < kSoakGraphs; ++g) {
        const std::string* const axes = &names[g * kStreamsOfGraph];
        WavoGraph graph;
        graph.InitGraph(static_cast<std::uint32_t>(g + 1), axes[0].c_str(), 0, nullptr);
        graph.XScale.TimeRange = kTimeRange;
        graph.YScales[0].Minimum = -kAmplitude;
        graph.YScales[0].Maximum = kAmplitude;
        graph.Triggers[0] = {TriggerOf(g), kAmplitude / 2, axes[0]};
        if (g % 4 == 0) {
            graph.XCoorType = CoorType::kAxis;
            graph.XCoorAxName = axes[1];
            graph.XScale = graph.YScales[0];
        } else {
            for (std::size_t i = 1; i < kStreamsOfGraph; ++i) {
                graph.YCoorAxName.push_back(axes[i]);
                graph.YCoorAxColor.push_back(0x40FF40U + static_cast<ColorRef>(i) * 40U);
                graph.YCoorAxDerivation.push_back(static_cast<std::int32_t>(i % 3));
                graph.Triggers.push_back({TriggerTypeCode::kNone, 0.0, axes[i]});
                graph.YScales.push_back(graph.YScales[0]);
                graph.YScales.back().ScaleAx = ScaleAxCode::kAutomatic;
            }
        }
        graphs.push_back(graph);
    }
    return graphs;
}

// Seldom enough that the buffers fill between two starts: what is needed at most is needed soon.
void SoakUser::Step() {
    LookForTriggers();
    const std::size_t kind = Below(16);
    if (!m_view.Work().Values().IsRunning() || m_done.arms == 0) {
        Arm();
    } else if (m_done.edits == 0) {
        Edit();
    } else if (m_done.zooms == 0) {
        Zoom();
    } else if (kind == 0) {
        Arm();
    } else if (kind < 5) {
        Edit();
    } else {
        Zoom();
    }
}

void SoakUser::LookForTriggers() {
    const auto& drawers = m_view.Board().Drawers();
    m_states.resize(drawers.size(), RunState::kRunning);
    for (std::size_t i = 0; i < drawers.size(); ++i) {
        const RunState before = std::exchange(m_states[i], drawers[i]->State());
        const bool started =
            before == RunState::kWaitingForStart && (m_states[i] == RunState::kRunningAfterStart ||
                                                     m_states[i] == RunState::kStoppedAfterStart);
        const bool stopped =
            before == RunState::kWaitingForStop && m_states[i] == RunState::kStoppedAfterStop;
        m_done.fired += started || stopped ? 1 : 0;
    }
}

// As the graph editor does: the record changes, then the view hears of it.
void SoakUser::Edit() {
    const std::size_t index = Below(kSoakGraphs);
    const auto edited = [](const WavoGraph& graph) {
        return std::tuple(graph.Mode, graph.ModeAx, graph.ZeroLines, graph.YCoorAxColor[0],
                          graph.XScale.TimeRange, graph.Triggers[0].TriggerValue);
    };
    const auto drawn = [&] { return edited(m_view.Board().Drawers()[index]->Graph()); };
    const auto before = drawn();
    WavoGraph graph = m_view.Work().Graphs().Graphs()[index];
    switch (Below(6)) {
        case 0:
            graph.Mode =
                graph.Mode == GraphMode::kClassic ? GraphMode::kContinuity : GraphMode::kClassic;
            break;
        case 1:
            graph.ModeAx =
                graph.ModeAx == AxisDrawMode::kLines ? AxisDrawMode::kPoints : AxisDrawMode::kLines;
            break;
        case 2:
            graph.ZeroLines = !graph.ZeroLines;
            break;
        case 3:
            graph.YCoorAxColor[0] = static_cast<ColorRef>(m_random()) | 0x808080U;
            graph.YCoorAxColor[0] &= 0xFFFFFFU;
            break;
        case 4:
            if (graph.XCoorType == CoorType::kTime) {
                graph.XScale.TimeRange = kTimeRange * static_cast<double>(1 + Below(4)) / 4.0;
            }
            break;
        default:
            graph.Triggers[0].TriggerValue = static_cast<double>(Below(180)) - 90.0;
    }
    const auto wanted = edited(graph);
    m_view.Work().Graphs().Put(graph, GraphList::Telling::kSilent);
    SendAppMessage(&m_view, AppMessage::kGraphChanged, 0, graph.GraphNumber);
    m_done.edits += wanted != before ? 1 : 0;
    m_done.edits_shown += wanted != before && drawn() == wanted ? 1 : 0;
    m_done.edits_not_shown += drawn() != wanted ? 1 : 0;
}

void SoakUser::Zoom() {
    const std::size_t index = Below(kSoakGraphs);
    const GraphDraw& drawer = *m_view.Board().Drawers()[index];
    const WavoGraph& graph = drawer.Graph();
    const auto shown = [&] {
        return std::tuple(drawer.Zoom().active, drawer.Zoom().start, drawer.Zoom().end);
    };
    const auto before = shown();
    if (graph.XCoorType != CoorType::kTime || Below(3) == 0) {
        m_view.Zooms().ZoomOut(graph.GraphNumber);
        m_done.zooms_undone += shown() != before ? 1 : 0;
        return;
    }
    ++m_done.zooms;
    const double range = graph.XScale.TimeRange;
    const double start = range * static_cast<double>(Below(50)) / 100.0;
    const double end = start + range * static_cast<double>(10 + Below(40)) / 100.0;
    m_view.Zooms().ZoomGraph(index, start, end);
    m_done.zooms_shown += shown() == std::tuple(true, start, end) ? 1 : 0;
}

// Start begins all recordings anew and arms their triggers. Half of the time the view stands until
// the next step.
void SoakUser::Arm() {
    const bool stop = m_view.Work().Values().IsRunning() && Below(2) == 0;
    m_view.Commands().Execute(stop ? CommandId::kStop : CommandId::kStart);
    if (m_view.Work().Values().IsRunning() == stop) {
        ++m_done.runs_not_changed;
    }
    if (stop) {
        return;
    }
    ++m_done.arms;
    LookForTriggers();
    m_done.armed += static_cast<std::uint64_t>(
        std::count_if(m_states.begin(), m_states.end(), [](RunState state) {
            return state == RunState::kWaitingForStart || state == RunState::kWaitingForStop;
        }));
}

}  // namespace wavo::testing
