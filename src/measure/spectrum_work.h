// The making of a spectrum, bit by bit, so that others have their turn in between, and of more
// values than memory should hold.
//
// The longest stretch without a gap is looked for first. Up to 2^20 values are transformed in one;
// of more the segments are averaged (Welch).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "measure/figure.h"
#include "measure/series.h"
#include "measure/spectrum.h"
#include "measure/stepped_fft.h"

namespace wavo::measure {

/// Where the values come from.
struct SpectrumValues {
    /// Values of successive cycles, NaN for those that have none. False: they are there no more.
    std::function<bool(Cycle first, std::span<double> values)> read;
    /// Cycles of which is known, without reading them, that each has a finite value. May be empty.
    std::function<bool(Cycle first, Cycle end)> are_whole;
};

class SpectrumWork {
 public:
    /// Begins a spectrum of the values from cycle `first` to before `end`, and forgets another
    /// one. `cycle_time` in s.
    void Begin(Cycle first, Cycle end, double cycle_time, const SpectrumSetup& setup,
               SpectrumValues values);
    /// Goes on for some tenths of a millisecond, reading included. False: it was done before, or
    /// none was begun.
    bool Step();
    [[nodiscard]] bool IsUnderWay() const { return m_phase != Phase::kDone; }
    /// Ends it; nothing can be taken.
    void Cancel();

    /// How much of it is done, from 0 to 1.
    [[nodiscard]] double Share() const;
    /// The spectrum, or why there is none. REQUIRES: it is done; once.
    [[nodiscard]] Told<Spectrum> Take() { return std::move(m_result); }

 private:
    enum class Phase { kLook, kWeigh, kLoad, kShape, kTransform, kAdd, kScale, kDone };

    void Look();
    void NoteWhole(std::size_t from, std::size_t to);
    void EndStretch();
    /// Knows the longest stretch: says how it is parted.
    void Plan();
    void Weigh();
    void BeginSegment();
    void Load();
    void Shape();
    void Add();
    void Scale();
    void End(Told<Spectrum> result);
    [[nodiscard]] const Stretch& Segment() const { return m_segments[m_segment]; }
    /// The next part of `all`, from m_at on.
    [[nodiscard]] Stretch NextPart(std::size_t all) const;

    Phase m_phase = Phase::kDone;
    std::size_t m_at = 0;  ///< how far the phase has come
    Cycle m_first = 0;
    std::size_t m_size = 0;
    double m_cycle_time = 0.0;
    SpectrumSetup m_setup;
    SpectrumValues m_values;
    Told<Spectrum> m_result;
    Spectrum m_spectrum;

    std::vector<double> m_kept;  ///< all values, where they are not too many
    std::vector<double> m_room;
    Stretch m_stretch;  ///< the last one without a gap
    bool m_in_stretch = false;
    Stretch m_longest;
    std::size_t m_stretches = 0;

    std::vector<Stretch> m_segments;
    std::size_t m_segment = 0;
    Detrend m_detrend = Detrend::kNone;
    Window m_window = Window::kRectangular;
    std::vector<double> m_weights;  ///< of m_window
    double m_sum = 0.0;             ///< of the weights
    double m_squares = 0.0;
    std::vector<double> m_part;
    Trend m_trend;
    SteppedFft m_fft;
    std::vector<Complex> m_lines;
};

}  // namespace wavo::measure
