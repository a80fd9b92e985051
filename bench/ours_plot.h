// A scene as the view shows it: value buffers, and a GraphDraw per graph that draws into a picture.
#pragma once

#include <QImage>
#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

#include "bench/plot_scene.h"
#include "graph/draw/graph_draw.h"
#include "graph/values/graph_value.h"

namespace wavo::bench {

/// The definition of one graph of a scene. Its axes are named by their streams: A0, A1, ...
WavoGraph MakeGraph(const Scene& scene, std::size_t graph);

class OursPlot {
 public:
    explicit OursPlot(const Scene& scene);

    /// Samples that were taken before the graphs are made: `count` of each stream.
    void Hold(const std::vector<const double*>& samples, std::size_t count);

    /// Makes the graphs and draws them for the first time.
    void Start();

    /// `count` new samples of each stream, `stride` apart.
    void Add(const std::vector<const double*>& samples, std::size_t count, std::size_t stride);

    /// One drawing step of all graphs.
    void Draw();

    /// Shows the span of the first graph from one part of its time range to another, 0 to 1,
    /// whatever was shown before.
    void Zoom(double from, double to);

    [[nodiscard]] const QImage& Image() const { return m_image; }

 private:
    /// No graph here has a trigger.
    class Host : public GraphDrawHost {
     public:
        void RecordingEnded() override {}
    };

    Scene m_scene;
    Host m_host;
    GraphDisplaySettings m_settings;
    std::deque<GraphValue> m_values;
    std::vector<std::unique_ptr<GraphDraw>> m_graphs;
    ZoomState m_not_zoomed;
    QImage m_image;
};

}  // namespace wavo::bench
