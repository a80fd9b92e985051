#include "bench/ours_plot.h"

#include <QRect>
#include <string>

namespace wavo::bench {

namespace {

constexpr ColorRef kColors[] = {0x00FFFF, 0x00FF00, 0xFFFF00, 0x5050FF,
                                0xFF50FF, 0xFF8040, 0x40C0FF, 0xC0C0C0};

std::string StreamName(std::size_t stream) {
    return std::string("A").append(std::to_string(stream));
}

ScaleDefinition AxisScale(const Scene& scene) {
    return {ScaleTypeCode::kAxis, 0.0,
            scene.rising ? ScaleAxCode::kAutomatic : ScaleAxCode::kManual, -kScaleEnd, kScaleEnd};
}

void AddCurve(WavoGraph& graph, const Scene& scene, std::size_t stream) {
    graph.YCoorAxName.push_back(StreamName(stream));
    graph.YCoorAxColor.push_back(kColors[stream % std::size(kColors)]);
    graph.YCoorAxDerivation.push_back(0);
    graph.Triggers.push_back({TriggerTypeCode::kNone, 0.0, StreamName(stream)});
    graph.YScales.push_back(AxisScale(scene));
}

}  // namespace

WavoGraph MakeGraph(const Scene& scene, std::size_t graph_index) {
    WavoGraph graph;
    graph.GraphNumber = static_cast<std::uint32_t>(graph_index + 1);
    graph.Mode = scene.mode == SceneMode::kClassic ? GraphMode::kClassic : GraphMode::kContinuity;
    graph.ModeAx = AxisDrawMode::kLines;
    graph.FadeOutTime = scene.Range();
    if (scene.mode == SceneMode::kOverAxis) {
        graph.XCoorType = CoorType::kAxis;
        graph.XCoorAxName = StreamName(1);
        graph.XScale = AxisScale(scene);
    } else {
        graph.XCoorType = CoorType::kTime;
        graph.XScale = {ScaleTypeCode::kTime, scene.Range(), ScaleAxCode{}, 0.0, 0.0};
    }
    for (std::size_t i = 0; i < scene.curves; ++i) {
        AddCurve(graph, scene, graph_index * scene.curves + i);
    }
    return graph;
}

OursPlot::OursPlot(const Scene& scene) : m_scene(scene), m_image(scene.size, QImage::Format_RGB32) {
    for (std::size_t i = 0; i < scene.Streams(); ++i) {
        m_values.emplace_back(StreamName(i), scene.cycle_time, scene.Range(), 0);
    }
}

void OursPlot::Hold(const std::vector<const double*>& samples, std::size_t count) {
    Add(samples, count, 1);
    for (GraphValue& value : m_values) {
        value.EmptyNewValues();
    }
}

void OursPlot::Start() {
    const int height = m_scene.size.height() / static_cast<int>(m_scene.graphs);
    for (std::size_t i = 0; i < m_scene.graphs; ++i) {
        GraphStreams streams;
        for (std::size_t curve = 0; curve < m_scene.curves; ++curve) {
            streams.y.push_back(&m_values[i * m_scene.curves + curve]);
        }
        if (m_scene.mode == SceneMode::kOverAxis) {
            streams.x = &m_values[1];
        }
        const QRect rectangle(0, static_cast<int>(i) * height, m_scene.size.width(), height);
        m_graphs.push_back(std::make_unique<GraphDraw>(rectangle, MakeGraph(m_scene, i), m_host,
                                                       m_settings, m_scene.cycle_time, 5, 3,
                                                       streams));
    }
    m_not_zoomed = m_graphs.front()->Zoom();
    Draw();
}

void OursPlot::Add(const std::vector<const double*>& samples, std::size_t count,
                   std::size_t stride) {
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        m_values[i].SetValues(samples[i], count, stride);
    }
}

void OursPlot::Draw() {
    for (const auto& graph : m_graphs) {
        graph->DrawGraph(m_image, false);
    }
    for (GraphValue& value : m_values) {
        value.EmptyNewValues();
    }
}

void OursPlot::Zoom(double from, double to) {
    GraphDraw& graph = *m_graphs.front();
    graph.RestoreZoom(m_not_zoomed);
    graph.SetZoomRange(from * m_scene.Range(), to * m_scene.Range());
}

}  // namespace wavo::bench
