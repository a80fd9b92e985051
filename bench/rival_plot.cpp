#include "bench/rival_plot.h"

#include <qcustomplot.h>

#include <algorithm>

namespace wavo::bench {

namespace {

constexpr Qt::GlobalColor kColors[] = {Qt::yellow,  Qt::green, Qt::cyan,     Qt::red,
                                       Qt::magenta, Qt::blue,  Qt::darkCyan, Qt::lightGray};

/// Few ticks with labels, one solid grid line each.
void SetUpAxis(QCPAxis& axis) {
    const QPen pen(Qt::gray, 0);
    axis.setBasePen(pen);
    axis.setTickPen(pen);
    axis.setSubTicks(false);
    axis.setTickLabelColor(Qt::lightGray);
    axis.grid()->setVisible(true);
    axis.grid()->setPen(QPen(Qt::darkGray, 0));
    axis.grid()->setZeroLinePen(Qt::NoPen);
    axis.ticker()->setTickCount(5);
}

}  // namespace

class RivalPlot::Plot {
 public:
    explicit Plot(const Scene& scene);

    void Add(const std::vector<const double*>& samples, std::size_t count, std::size_t stride);
    void Draw() { m_plot.replot(QCustomPlot::rpQueuedRefresh); }
    void Zoom(double from, double to);
    void ShowNewest();
    QImage Image();

 private:
    void MakeAxisRects();
    void MakeCurves();
    void AddToGraphs(const std::vector<const double*>& samples, std::size_t count,
                     std::size_t stride);
    void AddToSweep(const std::vector<const double*>& samples, std::size_t count,
                    std::size_t stride);
    void AddToPath(const std::vector<const double*>& samples, std::size_t count,
                   std::size_t stride);
    void WidenScale(const double* samples, std::size_t count, std::size_t stride);
    void FillBlock(const double* samples, std::size_t count, std::size_t stride, double first);

    [[nodiscard]] double End() const { return m_taken * m_scene.cycle_time; }

    Scene m_scene;
    QCustomPlot m_plot;
    std::vector<QCPAxisRect*> m_rects;
    std::vector<QCPGraph*> m_graphs;
    std::vector<QCPGraph*> m_previous;  // of classic curves: the last sweep
    QCPCurve* m_path = nullptr;
    QVector<QCPGraphData> m_block;
    QVector<QCPCurveData> m_path_block;
    double m_taken = 0.0;         // samples of each stream
    std::size_t m_sweep = 0;      // samples of the sweep
    double m_lowest = kScaleEnd;  // of an automatic scale
    double m_highest = -kScaleEnd;
};

RivalPlot::Plot::Plot(const Scene& scene) : m_scene(scene) {
    m_plot.setViewport(QRect(QPoint(0, 0), scene.size));
    m_plot.setNotAntialiasedElements(QCP::aeAll);
    m_plot.setPlottingHints(QCP::phCacheLabels);
    m_plot.setBackground(QBrush(Qt::black));
    for (int i = 0; i < m_plot.layerCount(); ++i) {
        m_plot.layer(i)->setMode(QCPLayer::lmLogical);
    }
    MakeAxisRects();
    MakeCurves();
}

void RivalPlot::Plot::MakeAxisRects() {
    m_plot.plotLayout()->clear();
    m_plot.plotLayout()->setRowSpacing(0);
    for (std::size_t i = 0; i < m_scene.graphs; ++i) {
        auto* const rect = new QCPAxisRect(&m_plot, false);
        rect->setAutoMargins(QCP::msNone);
        rect->setMargins(QMargins(50, 4, 20, 24));
        rect->setMinimumSize(1, 1);
        rect->setMinimumMargins(QMargins(0, 0, 0, 0));
        m_plot.plotLayout()->addElement(static_cast<int>(i), 0, rect);
        SetUpAxis(*rect->addAxis(QCPAxis::atBottom));
        SetUpAxis(*rect->addAxis(QCPAxis::atLeft));
        rect->axis(QCPAxis::atLeft)->setRange(-kScaleEnd, kScaleEnd);
        // The range of a time axis follows the samples.
        rect->axis(QCPAxis::atBottom)
            ->setRange(m_scene.mode == SceneMode::kOverAxis ? QCPRange(-kScaleEnd, kScaleEnd)
                                                            : QCPRange(0.0, m_scene.Range()));
        m_rects.push_back(rect);
    }
}

void RivalPlot::Plot::MakeCurves() {
    for (std::size_t i = 0; i < m_scene.graphs * m_scene.curves; ++i) {
        const QCPAxisRect& rect = *m_rects[i / m_scene.curves];
        QCPAxis* const x = rect.axis(QCPAxis::atBottom);
        QCPAxis* const y = rect.axis(QCPAxis::atLeft);
        const QPen pen(kColors[i % std::size(kColors)], 0);
        if (m_scene.mode == SceneMode::kOverAxis) {
            m_path = new QCPCurve(x, y);
            m_path->setPen(pen);
            return;
        }
        m_graphs.push_back(m_plot.addGraph(x, y));
        m_graphs.back()->setPen(pen);
        if (m_scene.mode == SceneMode::kClassic) {
            m_previous.push_back(m_plot.addGraph(x, y));
            m_previous.back()->setPen(pen);
        }
    }
}

void RivalPlot::Plot::Add(const std::vector<const double*>& samples, std::size_t count,
                          std::size_t stride) {
    switch (m_scene.mode) {
        case SceneMode::kContinuity:
            AddToGraphs(samples, count, stride);
            break;
        case SceneMode::kClassic:
            AddToSweep(samples, count, stride);
            break;
        case SceneMode::kOverAxis:
            AddToPath(samples, count, stride);
            break;
    }
}

void RivalPlot::Plot::FillBlock(const double* samples, std::size_t count, std::size_t stride,
                                double first) {
    m_block.resize(static_cast<qsizetype>(count));
    QCPGraphData* const block = m_block.data();
    for (std::size_t i = 0; i < count; ++i) {
        block[i] = {(first + static_cast<double>(i)) * m_scene.cycle_time, samples[i * stride]};
    }
}

void RivalPlot::Plot::AddToGraphs(const std::vector<const double*>& samples, std::size_t count,
                                  std::size_t stride) {
    const double first = m_taken;
    m_taken += static_cast<double>(count);
    for (std::size_t i = 0; i < m_graphs.size(); ++i) {
        FillBlock(samples[i], count, stride, first);
        m_graphs[i]->data()->add(m_block, true);
        m_graphs[i]->data()->removeBefore(End() - m_scene.Range());
    }
    if (m_scene.rising) {
        WidenScale(samples[0], count, stride);
    }
}

void RivalPlot::Plot::AddToSweep(const std::vector<const double*>& samples, std::size_t count,
                                 std::size_t stride) {
    if (m_sweep + count > m_scene.held) {
        for (std::size_t i = 0; i < m_graphs.size(); ++i) {
            m_previous[i]->setData(m_graphs[i]->data());
            m_graphs[i]->setData(QSharedPointer<QCPGraphDataContainer>::create());
        }
        m_sweep = 0;
    }
    const auto first = static_cast<double>(m_sweep);
    m_sweep += count;
    m_taken += static_cast<double>(count);
    for (std::size_t i = 0; i < m_graphs.size(); ++i) {
        FillBlock(samples[i], count, stride, first);
        m_graphs[i]->data()->add(m_block, true);
        m_previous[i]->data()->removeBefore(static_cast<double>(m_sweep) * m_scene.cycle_time);
    }
}

void RivalPlot::Plot::AddToPath(const std::vector<const double*>& samples, std::size_t count,
                                std::size_t stride) {
    m_path_block.resize(static_cast<qsizetype>(count));
    QCPCurveData* const block = m_path_block.data();
    for (std::size_t i = 0; i < count; ++i) {
        block[i] = {m_taken + static_cast<double>(i), samples[1][i * stride],
                    samples[0][i * stride]};
    }
    m_taken += static_cast<double>(count);
    m_path->data()->add(m_path_block, true);
    m_path->data()->removeBefore(m_taken - static_cast<double>(m_scene.held));
}

void RivalPlot::Plot::WidenScale(const double* samples, std::size_t count, std::size_t stride) {
    for (std::size_t i = 0; i < count; ++i) {
        m_lowest = std::min(m_lowest, samples[i * stride]);
        m_highest = std::max(m_highest, samples[i * stride]);
    }
    const double margin = (m_highest - m_lowest) / 20.0;
    m_rects.front()->axis(QCPAxis::atLeft)->setRange(m_lowest - margin, m_highest + margin);
}

void RivalPlot::Plot::ShowNewest() {
    if (m_scene.mode != SceneMode::kContinuity) {
        return;
    }
    for (QCPAxisRect* const rect : m_rects) {
        rect->axis(QCPAxis::atBottom)->setRange(End() - m_scene.Range(), End());
    }
}

void RivalPlot::Plot::Zoom(double from, double to) {
    const double start = End() - m_scene.Range();
    m_rects.front()
        ->axis(QCPAxis::atBottom)
        ->setRange(start + from * m_scene.Range(), start + to * m_scene.Range());
}

QImage RivalPlot::Plot::Image() {
    return m_plot.toPixmap(m_scene.size.width(), m_scene.size.height()).toImage();
}

RivalPlot::RivalPlot(const Scene& scene) : m_plot(std::make_unique<Plot>(scene)) {}
RivalPlot::~RivalPlot() = default;

void RivalPlot::Hold(const std::vector<const double*>& samples, std::size_t count) {
    m_plot->Add(samples, count, 1);
}

void RivalPlot::Start() {
    m_plot->ShowNewest();
    m_plot->Draw();
}

void RivalPlot::Add(const std::vector<const double*>& samples, std::size_t count,
                    std::size_t stride) {
    m_plot->Add(samples, count, stride);
    m_plot->ShowNewest();
}

void RivalPlot::Draw() {
    m_plot->Draw();
}

void RivalPlot::Zoom(double from, double to) {
    m_plot->Zoom(from, to);
}

QImage RivalPlot::Image() {
    return m_plot->Image();
}

}  // namespace wavo::bench
