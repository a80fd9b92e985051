#include "bench/plot_scene.h"

#include <cmath>
#include <map>
#include <numbers>
#include <random>
#include <utility>

namespace wavo::bench {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;

/// One period of a function of the part of the period that has passed, 0 to 1.
template <typename Function>
std::vector<double> Tabulate(std::size_t period, Function&& function) {
    std::vector<double> samples(period);
    for (std::size_t i = 0; i < period; ++i) {
        samples[i] = function(static_cast<double>(i) / static_cast<double>(period));
    }
    return samples;
}

/// There and back at a constant feed: -1 to 1.
double Triangle(double turns) {
    return 4.0 * std::abs(turns - std::floor(turns + 0.5)) - 1.0;
}

/// The closed path of two axes that circle while their centre moves.
std::vector<double> MakePathY(std::size_t period) {
    return Tabulate(period, [](double part) {
        return 60.0 * std::cos(kTurn * 31.0 * part) + 25.0 * std::sin(kTurn * 4.0 * part);
    });
}

std::vector<double> MakePathX(std::size_t period) {
    return Tabulate(period, [](double part) {
        return 60.0 * std::sin(kTurn * 31.0 * part) + 30.0 * std::sin(kTurn * 3.0 * part);
    });
}

std::vector<double> MakeNoise(std::size_t period) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> distribution(-0.95 * kScaleEnd, 0.95 * kScaleEnd);
    std::vector<double> samples(period);
    for (double& sample : samples) {
        sample = distribution(random);
    }
    return samples;
}

/// Signals are made once and kept: a benchmark sets up its scene many times.
template <std::vector<double> (*kMake)(std::size_t)>
const std::vector<double>& Kept(std::size_t period) {
    static std::map<std::size_t, std::vector<double>> kept;
    std::vector<double>& samples = kept[period];
    if (samples.empty()) {
        samples = kMake(period);
    }
    return samples;
}

const std::vector<double>& SignalY(const Scene& scene) {
    if (scene.mode == SceneMode::kOverAxis) {
        return Kept<MakePathY>(scene.held);
    }
    return scene.shape == SignalShape::kNoise ? Kept<MakeNoise>(scene.held)
                                              : Kept<MakeMotion>(scene.held);
}

}  // namespace

std::vector<double> MakeMotion(std::size_t period) {
    return Tabulate(period, [](double part) {
        return 60.0 * std::sin(kTurn * 2.0 * part) + 25.0 * std::sin(kTurn * 7.0 * part) +
               10.0 * Triangle(5.0 * part);
    });
}

SceneSamples::SceneSamples(const Scene& scene)
    : m_scene(scene),
      m_y(SignalY(scene)),
      m_x(scene.mode == SceneMode::kOverAxis ? Kept<MakePathX>(scene.held) : m_y),
      m_frame(kFrameSamples),
      m_peak(kScaleEnd) {
    // Curves of one scene stand beside each other, not on each other. The two of a path belong
    // together.
    const std::size_t frames = scene.held / kFrameSamples;
    for (std::size_t i = 0; i < scene.Streams(); ++i) {
        const bool path = scene.mode == SceneMode::kOverAxis;
        m_positions.push_back(path ? 0 : i * frames / scene.Streams() * kFrameSamples);
    }
    m_samples.resize(scene.Streams());
}

const std::vector<const double*>& SceneSamples::Next() {
    const bool path = m_scene.mode == SceneMode::kOverAxis;
    for (std::size_t i = 0; i < m_samples.size(); ++i) {
        const std::vector<double>& signal = path && i == 1 ? m_x : m_y;
        m_samples[i] = signal.data() + m_positions[i];
        m_positions[i] = (m_positions[i] + kFrameSamples) % signal.size();
    }
    if (m_rising) {
        m_frame.assign(m_samples[0], m_samples[0] + kFrameSamples);
        m_peak += 0.0005 * kScaleEnd;
        m_frame[0] = m_peak;
        m_samples[0] = m_frame.data();
    }
    return m_samples;
}

}  // namespace wavo::bench
