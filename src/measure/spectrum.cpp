#include "measure/spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr std::size_t kFewestValues = 8;
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

/// cos(2 pi j / n): each by a turn of the one before, with new exact ones now and then.
std::vector<double> CosinesOf(std::size_t n) {
    constexpr std::size_t kTurns = 32;
    std::vector<double> cosines(n);
    const double step = kFullTurn / static_cast<double>(n);
    const Complex turn(std::cos(step), std::sin(step));
    Complex at;
    for (std::size_t j = 0; j < n; ++j) {
        at = j % kTurns == 0 ? std::polar(1.0, step * static_cast<double>(j))
                             : Complex(at.real() * turn.real() - at.imag() * turn.imag(),
                                       at.real() * turn.imag() + at.imag() * turn.real());
        cosines[j] = at.real();
    }
    return cosines;
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

std::vector<double> WindowOf(Window window, std::size_t n) {
    std::vector<double> weights = CosinesOf(n);
    if (window == Window::kRectangular) {
        std::ranges::fill(weights, 1.0);
        return weights;
    }
    for (double& weight : weights) {
        weight = window == Window::kHann ? 0.5 - 0.5 * weight : FlatTopAt(weight);
    }
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

void TakeOffTrend(Detrend detrend, std::span<double> values) {
    if (detrend == Detrend::kNone || values.empty()) {
        return;
    }
    // About the first value, so that a large offset leaves the sums exact.
    const double shift = values.front();
    const auto count = static_cast<double>(values.size());
    const double centre = (count - 1.0) / 2.0;
    double sum = 0.0;
    double products = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        sum += values[i] - shift;
        products += (values[i] - shift) * (static_cast<double>(i) - centre);
    }
    const double mean = sum / count;
    const double squares = count * (count * count - 1.0) / 12.0;
    const double slope = detrend == Detrend::kLinear && squares > 0.0 ? products / squares : 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = (values[i] - shift) - mean - slope * (static_cast<double>(i) - centre);
    }
}

std::vector<Stretch> SegmentsOf(std::size_t size, std::size_t length) {
    std::vector<Stretch> segments;
    const std::size_t hop = std::max<std::size_t>(length / 2, 1);
    for (std::size_t first = 0; first + length <= size; first += hop) {
        segments.push_back({first, first + length});
    }
    return segments;
}

void SpectrumAnalyser::TakeWindow(Window window, std::size_t n) {
    if (window == m_window && n == m_weights.size()) {
        return;
    }
    m_window = window;
    m_weights = WindowOf(window, n);
    m_sum = 0.0;
    m_squares = 0.0;
    for (const double weight : m_weights) {
        m_sum += weight;
        m_squares += weight * weight;
    }
}

/// Power of each line, |X|^2, averaged over the segments.
std::vector<double> SpectrumAnalyser::MeanPowers(std::span<const double> values,
                                                 const std::vector<Stretch>& segments,
                                                 Detrend detrend) {
    std::vector<double> powers(m_weights.size() / 2 + 1, 0.0);
    for (const Stretch& segment : segments) {
        m_part.assign(values.begin() + static_cast<std::ptrdiff_t>(segment.first),
                      values.begin() + static_cast<std::ptrdiff_t>(segment.end));
        TakeOffTrend(detrend, m_part);
        for (std::size_t i = 0; i < m_part.size(); ++i) {
            m_part[i] *= m_weights[i];
        }
        m_fft.Forward(m_part, &m_lines);
        for (std::size_t k = 0; k < powers.size(); ++k) {
            powers[k] += std::norm(m_lines[k]) / static_cast<double>(segments.size());
        }
    }
    return powers;
}

/// Powers to what the scale asks for.
void SpectrumAnalyser::TakeScale(double cycle_time, Spectrum* spectrum) const {
    const std::size_t n = m_weights.size();
    for (std::size_t k = 0; k < spectrum->values.size(); ++k) {
        double& value = spectrum->values[k];
        // Lines without one of the negative frequency beside them count once.
        const double sides = k == 0 || 2 * k == n ? 1.0 : 2.0;
        if (spectrum->scale == SpectrumScale::kDensity) {
            value = sides * cycle_time * value / m_squares;
        } else {
            value = sides * std::sqrt(value) / m_sum;
            if (spectrum->scale == SpectrumScale::kRms && k > 0) {
                value /= std::numbers::sqrt2;
            }
        }
    }
}

Told<Spectrum> SpectrumAnalyser::Of(std::span<const double> values, double cycle_time,
                                    const SpectrumSetup& setup) {
    const auto stretches = WholeStretches({&values, 1});
    const auto longest = std::ranges::max_element(stretches, {}, &Stretch::Size);
    if (longest == stretches.end() || longest->Size() < kFewestValues) {
        return Told<Spectrum>::Not("too few values without a gap");
    }
    const bool in_one = setup.segment == 0 && longest->Size() <= kLongestTransform;
    Spectrum spectrum;
    spectrum.used = *longest;
    spectrum.length = in_one               ? GoodLengthUpTo(longest->Size())
                      : setup.segment == 0 ? kLongestTransform / 2
                                           : setup.segment;
    if (spectrum.length < kFewestValues || spectrum.length > longest->Size()) {
        return Told<Spectrum>::Not("too few values without a gap for a segment");
    }
    if (in_one) {
        spectrum.used.first = longest->end - spectrum.length;
    }
    const auto used = values.subspan(spectrum.used.first, spectrum.used.Size());
    const auto segments = SegmentsOf(used.size(), spectrum.length);
    const bool averaged = segments.size() > 1 && setup.detrend == Detrend::kLinear;
    TakeWindow(setup.window, spectrum.length);
    spectrum.values = MeanPowers(used, segments, averaged ? Detrend::kMean : setup.detrend);
    spectrum.used.end = spectrum.used.first + segments.back().end;
    spectrum.averages = segments.size();
    spectrum.window = setup.window;
    spectrum.scale = setup.scale;
    spectrum.spacing = 1.0 / (static_cast<double>(spectrum.length) * cycle_time);
    spectrum.nyquist = 0.5 / cycle_time;
    spectrum.noise_bandwidth = m_squares / (m_sum * m_sum) / cycle_time;
    TakeScale(cycle_time, &spectrum);
    return spectrum;
}

Told<Spectrum> SpectrumOf(std::span<const double> values, double cycle_time,
                          const SpectrumSetup& setup) {
    return SpectrumAnalyser().Of(values, cycle_time, setup);
}

double ToDecibel(double value, double reference, SpectrumScale scale) {
    return (scale == SpectrumScale::kDensity ? 10.0 : 20.0) * std::log10(value / reference);
}

std::vector<SpectrumPeak> PeaksOf(const Spectrum& spectrum, std::size_t most) {
    const auto& values = spectrum.values;
    std::vector<std::size_t> lines;
    for (std::size_t k = 1; k + 1 < values.size(); ++k) {
        if (values[k] > values[k - 1] && values[k] >= values[k + 1]) {
            lines.push_back(k);
        }
    }
    const std::size_t kept = std::min(most, lines.size());
    std::ranges::partial_sort(lines, lines.begin() + static_cast<std::ptrdiff_t>(kept),
                              [&](std::size_t a, std::size_t b) { return values[a] > values[b]; });
    lines.resize(kept);
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
