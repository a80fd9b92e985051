// A graph with its buffers, an image to draw into, and values fed in batches.
#pragma once

#include <QImage>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "graph/draw/graph_draw.h"
#include "graph/values/graph_value.h"

namespace wavo::testing {

inline ScaleDefinition TimeScale(double range) {
    return {ScaleTypeCode::kTime, range, ScaleAxCode{}, 0.0, 0.0};
}

inline ScaleDefinition ManualScale(double minimum, double maximum) {
    return {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, minimum, maximum};
}

inline ScaleDefinition AutomaticScale(double minimum = 0.0, double maximum = 0.0) {
    return {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, minimum, maximum};
}

/// A graph over time, without y axes.
inline WavoGraph TimeGraph(double range, GraphMode mode = GraphMode::kContinuity) {
    WavoGraph graph;
    graph.GraphNumber = 7;
    graph.Mode = mode;
    graph.ModeAx = AxisDrawMode::kLines;
    graph.XCoorType = CoorType::kTime;
    graph.XScale = TimeScale(range);
    graph.FadeOutTime = 1.0;
    return graph;
}

inline void AddAxis(WavoGraph& graph, const std::string& name, const ScaleDefinition& scale,
                    TriggerTypeCode trigger = TriggerTypeCode::kNone, double limit = 0.0,
                    std::int32_t derivation = 0) {
    graph.YCoorAxName.push_back(name);
    graph.YCoorAxColor.push_back(0x00FFFF);
    graph.YCoorAxDerivation.push_back(derivation);
    graph.Triggers.push_back({trigger, limit, name});
    graph.YScales.push_back(scale);
}

/// Axis Y over axis X, one y axis.
inline WavoGraph AxisGraph(double fade_out_time, const ScaleDefinition& x_scale,
                           const ScaleDefinition& y_scale) {
    WavoGraph graph = TimeGraph(0.0);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale = x_scale;
    graph.FadeOutTime = fade_out_time;
    AddAxis(graph, "Y", y_scale);
    return graph;
}

class CountingHost : public GraphDrawHost {
 public:
    void RecordingEnded() override { ++ended; }
    std::optional<BackRun> BehindOf(const GraphDraw& /*graph*/) override { return behind; }
    int ended = 0;
    std::optional<BackRun> behind;
};

/// What a graph is drawn into, and how the user wants it to look.
struct ScopeLooks {
    QSize size{400, 200};  ///< of the image, logical pixels
    double ratio = 1.0;    ///< device pixels per logical pixel
    GraphDisplaySettings settings;
    std::int32_t scale_lines_x = 5;
    std::int32_t scale_lines_y = 3;
};

/// One graph as the view keeps it.
class Scope {
 public:
    explicit Scope(const WavoGraph& graph, double cycle_time = 0.25,
                   const QRect& rectangle = QRect(0, 0, 400, 200), double buffer_range = 0.0,
                   const ScopeLooks& looks = {})
        : settings(looks.settings), m_image(looks.size * looks.ratio, QImage::Format_RGB32) {
        m_image.setDevicePixelRatio(looks.ratio);
        m_image.fill(Qt::black);
        const double range = buffer_range > 0.0 ? buffer_range : GraphTimeRange(graph);
        GraphStreams streams;
        for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
            streams.y.push_back(&values.emplace_back(graph.YCoorAxName[i], cycle_time, range,
                                                     graph.YCoorAxDerivation[i]));
        }
        if (graph.XCoorType == CoorType::kAxis) {
            streams.x = &values.emplace_back(graph.XCoorAxName, cycle_time, range, 0);
        }
        draw = std::make_unique<GraphDraw>(rectangle, graph, host, settings, cycle_time,
                                           looks.scale_lines_x, looks.scale_lines_y, streams);
    }

    /// Gives each stream its values; in the order of the y axes, then x.
    void Set(const std::vector<std::vector<double>>& batches) {
        for (std::size_t stream = 0; stream < batches.size(); ++stream) {
            for (const double value : batches[stream]) {
                values[stream].SetValue(value);
            }
        }
    }

    /// One step as the view does it.
    void Draw(bool restart = false) {
        if (restart) {
            for (GraphValue& value : values) {
                value.Reset();
            }
        }
        draw->DrawGraph(m_image, restart);
        for (GraphValue& value : values) {
            value.EmptyNewValues();
        }
    }

    void Feed(const std::vector<std::vector<double>>& batches) {
        Set(batches);
        Draw();
    }

    [[nodiscard]] const LinesDrawAxis& Line(std::size_t axis = 0) const {
        return *draw->Lines()[axis];
    }
    [[nodiscard]] std::vector<double> Shown(std::size_t axis = 0) const {
        std::vector<double> shown;
        Line(axis).GetYValues(shown);
        return shown;
    }
    [[nodiscard]] const QImage& Image() const { return m_image; }
    [[nodiscard]] QColor Background() const { return ToQColor(settings.background); }

    /// Number of pixels of a colour in the plot area; texts in the same colour stand outside.
    [[nodiscard]] int Count(const QColor& color) const {
        const QRect area = draw->PlotArea() & m_image.rect();
        int count = 0;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                count += m_image.pixelColor(x, y) == color ? 1 : 0;
            }
        }
        return count;
    }

    CountingHost host;
    GraphDisplaySettings settings;
    std::deque<GraphValue> values;
    std::unique_ptr<GraphDraw> draw;

 private:
    QImage m_image;
};

/// first, first + 1, ... of `count` values.
inline std::vector<double> Ramp(double first, int count) {
    std::vector<double> ramp;
    ramp.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        ramp.push_back(first + i);
    }
    return ramp;
}

}  // namespace wavo::testing
