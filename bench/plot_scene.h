// What the painting benchmarks draw: how large, how many curves, over what, and the samples.
//
// A scene is drawn by OursPlot and by RivalPlot (ours_plot.h, rival_plot.h) in the same way: Hold
// gives the samples that were taken before the plot is shown, Start shows it, then Add and Draw are
// one frame. Streams are counted graph by graph; a scene over an axis has two, y and x.
//
// Signals repeat after the number of samples that a curve holds, so that the picture of a moving
// axis has the same shape however many samples it holds.
#pragma once

#include <QSize>
#include <cstddef>
#include <vector>

namespace wavo::bench {

/// Samples that each curve gets per frame.
inline constexpr std::size_t kFrameSamples = 100;

/// Manual scales go from -kScaleEnd to kScaleEnd; all signals stay inside.
inline constexpr double kScaleEnd = 100.0;

enum class SceneMode { kContinuity, kClassic, kOverAxis };
enum class SignalShape { kMotion, kNoise };

struct Scene {
    QSize size{1600, 900};      ///< pixels
    std::size_t held = 100000;  ///< samples per curve, a multiple of kFrameSamples
    std::size_t graphs = 1;     ///< one below the other
    std::size_t curves = 1;     ///< per graph
    double cycle_time = 0.001;  ///< seconds
    SceneMode mode = SceneMode::kContinuity;
    SignalShape shape = SignalShape::kMotion;
    /// Automatic y scale, and every frame has a sample larger than all before it.
    bool rising = false;

    [[nodiscard]] std::size_t Streams() const {
        return mode == SceneMode::kOverAxis ? 2 : graphs * curves;
    }
    /// Seconds that a curve shows.
    [[nodiscard]] double Range() const { return static_cast<double>(held) * cycle_time; }
};

/// One period of an axis that moves smoothly and reverses now and then.
std::vector<double> MakeMotion(std::size_t period);

/// The samples of all streams of a scene, without end.
class SceneSamples {
 public:
    explicit SceneSamples(const Scene& scene);

    /// The next kFrameSamples samples of each stream; valid until the next call.
    const std::vector<const double*>& Next();

    /// From now on a scene that rises does so.
    void Rise() { m_rising = m_scene.rising; }

 private:
    Scene m_scene;
    const std::vector<double>& m_y;
    const std::vector<double>& m_x;
    std::vector<std::size_t> m_positions;  // of each stream in its signal
    std::vector<const double*> m_samples;
    std::vector<double> m_frame;  // the first stream's samples while it rises
    bool m_rising = false;
    double m_peak;
};

/// Shows a scene with all samples held, a classic one in the middle of a sweep.
template <typename Plot>
void ShowFull(Plot& plot, const Scene& scene, SceneSamples& samples) {
    for (std::size_t i = 0; i < scene.held; i += kFrameSamples) {
        plot.Hold(samples.Next(), kFrameSamples);
    }
    plot.Start();
    samples.Rise();
    if (scene.mode == SceneMode::kClassic) {
        for (std::size_t i = 0; i < scene.held / 2; i += kFrameSamples) {
            plot.Add(samples.Next(), kFrameSamples, 1);
        }
        plot.Draw();
    }
    plot.Add(samples.Next(), kFrameSamples, 1);
    plot.Draw();
}

}  // namespace wavo::bench
