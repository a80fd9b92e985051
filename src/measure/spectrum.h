// Amplitude spectra of one column: windows, scales, averages, peaks.
//
// Nothing beyond half the line rate can be told: what is faster appears folded, and no filter
// afterwards can tell.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

enum class Window { kRectangular, kHann, kFlatTop };
enum class Detrend { kNone, kMean, kLinear };
enum class SpectrumScale {
    kPeak,     ///< amplitude of a sine
    kRms,      ///< its root mean square
    kDensity,  ///< unit^2 / Hz
};

struct WindowFigures {
    double coherent_gain = 1.0;
    double noise_bandwidth = 1.0;  ///< in lines
};

/// Periodic window of n values.
std::vector<double> WindowOf(Window window, std::size_t n);
WindowFigures FiguresOf(Window window, std::size_t n);

/// The same of its values from place `first` on.
void WindowPart(Window window, std::size_t n, std::size_t first, std::span<double> weights);

/// The mean, or the least-squares line, of values that are given part by part; to be taken off
/// them.
class Trend {
 public:
    /// Of so many values.
    void Begin(Detrend detrend, std::size_t count);
    /// Takes the next of them.
    void Take(std::span<const double> values);
    /// Takes the trend off those from place `first` on. REQUIRES: all were taken.
    void TakeOff(std::size_t first, std::span<double> values) const;

 private:
    Detrend m_detrend = Detrend::kNone;
    double m_count = 0.0;
    std::size_t m_taken = 0;
    double m_shift = 0.0;  ///< the first value, so that a large offset leaves the sums exact
    double m_sum = 0.0;
    double m_products = 0.0;
};

/// Takes the mean, or the least-squares line, off the values.
void TakeOffTrend(Detrend detrend, std::span<double> values);

/// Longest spectrum in one piece; more values are averaged over segments.
inline constexpr std::size_t kLongestTransform = 1U << 20U;

struct SpectrumSetup {
    Window window = Window::kHann;
    Detrend detrend = Detrend::kLinear;  ///< of a segment among several: the mean
    SpectrumScale scale = SpectrumScale::kPeak;
    /// Values of a segment; segments overlap by half. 0: one segment of all values, cut at their
    /// beginning to a length that transforms quickly.
    std::size_t segment = 0;
};

struct Spectrum {
    std::vector<double> values;    ///< line k stands for k * spacing
    double spacing = 0.0;          ///< Hz
    double nyquist = 0.0;          ///< half the line rate, Hz
    double noise_bandwidth = 0.0;  ///< Hz
    std::size_t length = 0;        ///< values of a segment
    std::size_t averages = 0;      ///< segments
    Stretch used;                  ///< places that took part
    std::size_t stretches = 0;     ///< without a gap, of which the longest was taken
    Window window = Window::kHann;
    SpectrumScale scale = SpectrumScale::kPeak;

    [[nodiscard]] double FrequencyOf(std::size_t line) const {
        return static_cast<double>(line) * spacing;
    }
};

/// The spectrum of the longest stretch without a gap. Not told for fewer than 8 values. Whoever
/// must not wait for it has it made by a SpectrumWork.
Told<Spectrum> SpectrumOf(std::span<const double> values, double cycle_time,
                          const SpectrumSetup& setup = {});

/// 20 log10 of an amplitude over a reference; 10 log10 of a density.
double ToDecibel(double value, double reference, SpectrumScale scale);

struct SpectrumPeak {
    double frequency = 0.0;  ///< Hz, interpolated
    double amplitude = 0.0;  ///< in the scale of the spectrum, corrected
    std::size_t line = 0;
};

/// The `most` highest peaks, highest first: lines above both neighbours. Frequency and amplitude
/// are interpolated for Hann and no window; a flat top's amplitude needs none. Of densities the
/// line.
std::vector<SpectrumPeak> PeaksOf(const Spectrum& spectrum, std::size_t most);

/// The same without those that are noise, what the window makes beside higher ones, or what is left
/// of a trend: they stand out by five from the median line.
std::vector<SpectrumPeak> ClearPeaksOf(const Spectrum& spectrum, std::size_t most);

/// Spectra that come one after another: mean of their powers, and the largest of each line.
class SpectrumHistory {
 public:
    /// Begins anew where the spectrum has another form.
    void Add(const Spectrum& spectrum);
    void Clear() { *this = SpectrumHistory(); }

    [[nodiscard]] std::size_t Count() const { return m_count; }
    [[nodiscard]] Spectrum Average() const;
    [[nodiscard]] Spectrum Maximum() const { return m_maximum; }

 private:
    Spectrum m_maximum;
    std::vector<double> m_powers;  ///< sums
    std::size_t m_count = 0;
};

/// First to end of the segments of a length that fit, overlapping by half.
std::vector<Stretch> SegmentsOf(std::size_t size, std::size_t length);

/// "Hann", "flat top", "none".
std::string NameOf(Window window);

}  // namespace wavo::measure
