#include "measure/spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>

#include "measure/spectrum_work.h"
#include "measure/stepped_fft.h"
#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr std::array<double, 5> kFlatTop{0.21557895, 0.41663158, 0.277263158, 0.083578947,
                                         0.006947368};

/// Offset of a peak from its line, in lines, and the factor of its amplitude.
struct PeakShift {
    double lines = 0.0;
    double factor = 1.0;
};

PeakShift ShiftOf(Window window, double line, double neighbour) {
    if (window == Window::kFlatTop || !(line > 0.0)) {
        return {};
    }
    const double ratio = neighbour / line;
    const double d =
        window == Window::kHann ? (2.0 * ratio - 1.0) / (ratio + 1.0) : ratio / (ratio + 1.0);
    const double phase = std::numbers::pi * d;
    if (std::abs(phase) < 1e-9) {
        return {d, 1.0};
    }
    const double factor = phase / std::sin(phase);
    return {d, window == Window::kHann ? factor * (1.0 - d * d) : factor};
}

/// The most that a window shows of a tone so many lines beside it, as part of its amplitude.
double LeakageAt(Window window, double lines) {
    switch (window) {
        case Window::kRectangular:
            return lines <= 1.0 ? 1.0 : 1.0 / (std::numbers::pi * lines);
        case Window::kHann:
            return lines <= 2.0 ? 1.0 : 1.0 / (std::numbers::pi * lines * (lines * lines - 1.0));
        case Window::kFlatTop:
            return lines <= 5.0 ? 1.0 : 1e-4;
    }
    return 1.0;
}

/// The median of the lines, or of some thousands of them.
double UsualLineOf(std::span<const double> lines) {
    constexpr std::size_t kSamples = 4096;
    const std::size_t step = lines.size() / kSamples + 1;
    std::vector<double> some;
    for (std::size_t k = 0; k < lines.size(); k += step) {
        some.push_back(lines[k]);
    }
    return some.empty() ? 0.0 : MedianOf(some);
}

/// The window at a phase, from its cosine: cosines of multiples by Chebyshev's recurrence.
double FlatTopAt(double cosine) {
    double before = 1.0;
    double here = cosine;
    double weight = kFlatTop[0] - kFlatTop[1] * cosine;
    for (std::size_t k = 2; k < kFlatTop.size(); ++k) {
        const double next = 2.0 * cosine * here - before;
        before = here;
        here = next;
        weight += (k % 2 == 0 ? 1.0 : -1.0) * kFlatTop[k] * here;
    }
    return weight;
}

}  // namespace

void WindowPart(Window window, std::size_t n, std::size_t first, std::span<double> weights) {
    if (window == Window::kRectangular) {
        std::ranges::fill(weights, 1.0);
        return;
    }
    std::vector<Complex> turns(weights.size());
    Turns(kFullTurn / static_cast<double>(n), first, turns);
    for (std::size_t j = 0; j < weights.size(); ++j) {
        const double cosine = turns[j].real();
        weights[j] = window == Window::kHann ? 0.5 - 0.5 * cosine : FlatTopAt(cosine);
    }
}

std::vector<double> WindowOf(Window window, std::size_t n) {
    std::vector<double> weights(n);
    WindowPart(window, n, 0, weights);
    return weights;
}

WindowFigures FiguresOf(Window window, std::size_t n) {
    double sum = 0.0;
    double squares = 0.0;
    for (const double weight : WindowOf(window, n)) {
        sum += weight;
        squares += weight * weight;
    }
    const auto count = static_cast<double>(n);
    return {sum / count, count * squares / (sum * sum)};
}

void Trend::Begin(Detrend detrend, std::size_t count) {
    *this = Trend();
    m_detrend = detrend;
    m_count = static_cast<double>(count);
}

void Trend::Take(std::span<const double> values) {
    if (m_detrend == Detrend::kNone || values.empty()) {
        return;
    }
    if (m_taken == 0) {
        m_shift = values.front();
    }
    const double centre = (m_count - 1.0) / 2.0;
    for (const double value : values) {
        m_sum += value - m_shift;
        m_products += (value - m_shift) * (static_cast<double>(m_taken++) - centre);
    }
}

void Trend::TakeOff(std::size_t first, std::span<double> values) const {
    if (m_detrend == Detrend::kNone) {
        return;
    }
    const double centre = (m_count - 1.0) / 2.0;
    const double mean = m_sum / m_count;
    const double squares = m_count * (m_count * m_count - 1.0) / 12.0;
    const double slope =
        m_detrend == Detrend::kLinear && squares > 0.0 ? m_products / squares : 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] =
            (values[i] - m_shift) - mean - slope * (static_cast<double>(first + i) - centre);
    }
}

void TakeOffTrend(Detrend detrend, std::span<double> values) {
    Trend trend;
    trend.Begin(detrend, values.size());
    trend.Take(values);
    trend.TakeOff(0, values);
}

std::vector<Stretch> SegmentsOf(std::size_t size, std::size_t length) {
    std::vector<Stretch> segments;
    const std::size_t hop = std::max<std::size_t>(length / 2, 1);
    for (std::size_t first = 0; first + length <= size; first += hop) {
        segments.push_back({first, first + length});
    }
    return segments;
}

Told<Spectrum> SpectrumOf(std::span<const double> values, double cycle_time,
                          const SpectrumSetup& setup) {
    SpectrumWork work;
    work.Begin(0, static_cast<Cycle>(values.size()), cycle_time, setup,
               {[values](Cycle first, std::span<double> room) {
                    const auto from = values.subspan(static_cast<std::size_t>(first), room.size());
                    std::copy(from.begin(), from.end(), room.begin());
                    return true;
                },
                {}});
    while (work.Step()) {
    }
    return work.Take();
}

double ToDecibel(double value, double reference, SpectrumScale scale) {
    return (scale == SpectrumScale::kDensity ? 10.0 : 20.0) * std::log10(value / reference);
}

std::vector<SpectrumPeak> PeaksOf(const Spectrum& spectrum, std::size_t most) {
    const auto& values = spectrum.values;
    // The highest so far, highest first: few, so that all lines are looked at quickly.
    std::vector<std::size_t> lines;
    for (std::size_t k = 1; most > 0 && k + 1 < values.size(); ++k) {
        const bool is_peak = values[k] > values[k - 1] && values[k] >= values[k + 1];
        if (!is_peak || (lines.size() == most && values[k] <= values[lines.back()])) {
            continue;
        }
        lines.resize(std::min(most - 1, lines.size()));
        const auto place =
            std::ranges::upper_bound(lines, values[k], std::greater<>(),
                                     [&values](std::size_t line) { return values[line]; });
        lines.insert(place, k);
    }
    std::vector<SpectrumPeak> peaks;
    for (const std::size_t k : lines) {
        SpectrumPeak peak{spectrum.FrequencyOf(k), values[k], k};
        if (spectrum.scale != SpectrumScale::kDensity) {
            const bool right = values[k + 1] > values[k - 1];
            const PeakShift shift =
                ShiftOf(spectrum.window, values[k], right ? values[k + 1] : values[k - 1]);
            peak.frequency += (right ? 1.0 : -1.0) * shift.lines * spectrum.spacing;
            peak.amplitude *= shift.factor;
        }
        peaks.push_back(peak);
    }
    return peaks;
}

std::vector<SpectrumPeak> ClearPeaksOf(const Spectrum& spectrum, std::size_t most) {
    constexpr std::size_t kLookedAt = 256;
    /// What leaks comes from the negative frequencies too, and noise adds to it.
    constexpr double kLeakMargin = 1.5;
    /// Of noise one in thirty million lines is as high.
    constexpr double kNoiseMargin = 5.0;
    const double noise = kNoiseMargin * UsualLineOf(spectrum.values);
    std::vector<SpectrumPeak> clear;
    for (const SpectrumPeak& peak : PeaksOf(spectrum, kLookedAt)) {
        double leaked = 0.0;
        for (const SpectrumPeak& higher : clear) {
            const double apart =
                std::abs(spectrum.FrequencyOf(peak.line) - higher.frequency) / spectrum.spacing;
            leaked += higher.amplitude * LeakageAt(spectrum.window, apart);
        }
        const bool is_of_trend = LeakageAt(spectrum.window, static_cast<double>(peak.line)) == 1.0;
        const double shown = spectrum.values[peak.line];
        if (clear.size() < most && !is_of_trend && shown > noise && shown > kLeakMargin * leaked) {
            clear.push_back(peak);
        }
    }
    return clear;
}

void SpectrumHistory::Add(const Spectrum& spectrum) {
    if (m_count > 0 &&
        (m_maximum.length != spectrum.length || m_maximum.window != spectrum.window ||
         m_maximum.scale != spectrum.scale || m_maximum.spacing != spectrum.spacing)) {
        Clear();
    }
    const bool power = spectrum.scale == SpectrumScale::kDensity;
    if (m_count++ == 0) {
        m_maximum = spectrum;
        m_powers.assign(spectrum.values.size(), 0.0);
    }
    for (std::size_t k = 0; k < m_powers.size(); ++k) {
        const double value = spectrum.values[k];
        m_powers[k] += power ? value : value * value;
        m_maximum.values[k] = std::max(m_maximum.values[k], value);
    }
}

Spectrum SpectrumHistory::Average() const {
    Spectrum average = m_maximum;
    average.averages *= m_count;
    for (std::size_t k = 0; k < m_powers.size(); ++k) {
        const double mean = m_powers[k] / static_cast<double>(m_count);
        average.values[k] = average.scale == SpectrumScale::kDensity ? mean : std::sqrt(mean);
    }
    return average;
}

std::string NameOf(Window window) {
    switch (window) {
        case Window::kRectangular:
            return "none";
        case Window::kHann:
            return "Hann";
        case Window::kFlatTop:
            return "flat top";
    }
    return {};
}

}  // namespace wavo::measure
