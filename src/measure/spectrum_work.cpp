#include "measure/spectrum_work.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace wavo::measure {

namespace {

constexpr std::size_t kFewestValues = 8;
/// Values that a step deals with.
constexpr std::size_t kValuesPerStep = 8192;

}  // namespace

void SpectrumWork::Begin(Cycle first, Cycle end, double cycle_time, const SpectrumSetup& setup,
                         SpectrumValues values) {
    m_first = first;
    m_size = end > first ? static_cast<std::size_t>(end - first) : 0;
    m_cycle_time = cycle_time;
    m_setup = setup;
    m_values = std::move(values);
    m_spectrum = {};
    m_result = {};
    m_kept.clear();
    if (m_size <= kLongestTransform) {
        m_kept.reserve(m_size);
    }
    m_in_stretch = false;
    m_longest = {};
    m_stretches = 0;
    m_at = 0;
    m_phase = Phase::kLook;
}

void SpectrumWork::Cancel() {
    End(Told<Spectrum>::Not("it was ended"));
}

void SpectrumWork::End(Told<Spectrum> result) {
    m_result = std::move(result);
    m_values = {};
    m_phase = Phase::kDone;
}

bool SpectrumWork::Step() {
    switch (m_phase) {
        case Phase::kLook:
            Look();
            break;
        case Phase::kWeigh:
            Weigh();
            break;
        case Phase::kLoad:
            Load();
            break;
        case Phase::kShape:
            Shape();
            break;
        case Phase::kTransform:
            if (!m_fft.Step()) {
                m_at = 0;
                m_phase = Phase::kAdd;
            }
            break;
        case Phase::kAdd:
            Add();
            break;
        case Phase::kScale:
            Scale();
            break;
        case Phase::kDone:
            return false;
    }
    return true;
}

double SpectrumWork::Share() const {
    constexpr double kLooking = 0.2;
    if (m_phase == Phase::kDone) {
        return 1.0;
    }
    if (m_phase == Phase::kLook) {
        return m_size == 0 ? 0.0
                           : kLooking * static_cast<double>(m_at) / static_cast<double>(m_size);
    }
    return kLooking + (1.0 - kLooking) * static_cast<double>(m_segment) /
                          static_cast<double>(std::max<std::size_t>(1, m_segments.size()));
}

Stretch SpectrumWork::NextPart(std::size_t all) const {
    return {m_at, std::min(all, m_at + kValuesPerStep)};
}

// ---- the longest stretch without a gap ----

void SpectrumWork::NoteWhole(std::size_t from, std::size_t to) {
    if (!m_in_stretch) {
        m_stretch.first = from;
        m_in_stretch = true;
    }
    m_stretch.end = to;
}

void SpectrumWork::EndStretch() {
    if (std::exchange(m_in_stretch, false)) {
        ++m_stretches;
        if (m_stretch.Size() > m_longest.Size()) {
            m_longest = m_stretch;
        }
    }
}

void SpectrumWork::Look() {
    const bool keeps = m_size <= kLongestTransform;
    Stretch part = NextPart(m_size);
    if (!keeps && m_values.are_whole) {
        constexpr std::size_t kKnownAtOnce = std::size_t{1} << 20U;
        const std::size_t end = std::min(m_size, m_at + kKnownAtOnce);
        if (m_values.are_whole(m_first + static_cast<Cycle>(m_at),
                               m_first + static_cast<Cycle>(end))) {
            NoteWhole(m_at, end);
            m_at = end;
            part = {end, end};
        }
    }
    m_room.resize(part.Size());
    if (!m_room.empty() && !m_values.read(m_first + static_cast<Cycle>(m_at), m_room)) {
        End(Told<Spectrum>::Not("the values have gone"));
        return;
    }
    for (std::size_t i = 0; i < m_room.size(); ++i) {
        if (std::isfinite(m_room[i])) {
            NoteWhole(m_at + i, m_at + i + 1);
        } else {
            EndStretch();
        }
    }
    if (keeps) {
        m_kept.insert(m_kept.end(), m_room.begin(), m_room.end());
    }
    m_at = part.end;
    if (m_at == m_size) {
        EndStretch();
        Plan();
    }
}

void SpectrumWork::Plan() {
    if (m_longest.Size() < kFewestValues) {
        End(Told<Spectrum>::Not("too few values without a gap"));
        return;
    }
    const bool in_one = m_setup.segment == 0 && m_longest.Size() <= kLongestTransform;
    m_spectrum.used = m_longest;
    m_spectrum.stretches = m_stretches;
    m_spectrum.length = in_one                 ? GoodLengthUpTo(m_longest.Size())
                        : m_setup.segment == 0 ? kLongestTransform / 2
                                               : m_setup.segment;
    if (m_spectrum.length < kFewestValues || m_spectrum.length > m_longest.Size()) {
        End(Told<Spectrum>::Not("too few values without a gap for a segment"));
        return;
    }
    if (in_one) {
        m_spectrum.used.first = m_longest.end - m_spectrum.length;
    }
    m_segments = SegmentsOf(m_spectrum.used.Size(), m_spectrum.length);
    m_detrend = m_segments.size() > 1 && m_setup.detrend == Detrend::kLinear ? Detrend::kMean
                                                                             : m_setup.detrend;
    m_spectrum.used.end = m_spectrum.used.first + m_segments.back().end;
    m_spectrum.averages = m_segments.size();
    m_spectrum.window = m_setup.window;
    m_spectrum.scale = m_setup.scale;
    m_spectrum.spacing = 1.0 / (static_cast<double>(m_spectrum.length) * m_cycle_time);
    m_spectrum.nyquist = 0.5 / m_cycle_time;
    m_spectrum.values.assign(m_spectrum.length / 2 + 1, 0.0);
    m_segment = 0;
    if (m_window == m_setup.window && m_weights.size() == m_spectrum.length) {
        BeginSegment();
        return;
    }
    m_window = m_setup.window;
    m_weights.clear();
    m_sum = 0.0;
    m_squares = 0.0;
    m_at = 0;
    m_phase = Phase::kWeigh;
}

void SpectrumWork::Weigh() {
    const Stretch part = NextPart(m_spectrum.length);
    m_room.resize(part.Size());
    WindowPart(m_window, m_spectrum.length, part.first, m_room);
    for (const double weight : m_room) {
        m_sum += weight;
        m_squares += weight * weight;
    }
    m_weights.insert(m_weights.end(), m_room.begin(), m_room.end());
    m_at = part.end;
    if (m_at == m_spectrum.length) {
        BeginSegment();
    }
}

// ---- segment by segment ----

void SpectrumWork::BeginSegment() {
    m_part.resize(m_spectrum.length);
    m_trend.Begin(m_detrend, m_part.size());
    m_at = 0;
    m_phase = Phase::kLoad;
}

void SpectrumWork::Load() {
    const Stretch part = NextPart(m_part.size());
    const std::size_t from = m_spectrum.used.first + Segment().first + part.first;
    const auto room = std::span(m_part).subspan(part.first, part.Size());
    if (!m_kept.empty()) {
        std::copy_n(m_kept.begin() + static_cast<std::ptrdiff_t>(from), room.size(), room.begin());
    } else if (!m_values.read(m_first + static_cast<Cycle>(from), room) ||
               !std::ranges::all_of(room, [](double value) { return std::isfinite(value); })) {
        End(Told<Spectrum>::Not("the values have gone"));
        return;
    }
    m_trend.Take(room);
    m_at = part.end;
    if (m_at == m_part.size()) {
        m_at = 0;
        m_phase = Phase::kShape;
    }
}

void SpectrumWork::Shape() {
    const Stretch part = NextPart(m_part.size());
    m_trend.TakeOff(part.first, std::span(m_part).subspan(part.first, part.Size()));
    for (std::size_t i = part.first; i < part.end; ++i) {
        m_part[i] *= m_weights[i];
    }
    m_at = part.end;
    if (m_at == m_part.size()) {
        m_fft.Begin(m_part);
        m_phase = Phase::kTransform;
    }
}

/// Power of each line, |X|^2, averaged over the segments.
void SpectrumWork::Add() {
    const Stretch part = NextPart(m_spectrum.values.size());
    m_lines.resize(part.Size());
    m_fft.Lines(part.first, m_lines);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        m_spectrum.values[part.first + i] +=
            std::norm(m_lines[i]) / static_cast<double>(m_segments.size());
    }
    m_at = part.end;
    if (m_at < m_spectrum.values.size()) {
        return;
    }
    if (++m_segment < m_segments.size()) {
        BeginSegment();
        return;
    }
    m_spectrum.noise_bandwidth = m_squares / (m_sum * m_sum) / m_cycle_time;
    m_at = 0;
    m_phase = Phase::kScale;
}

/// Powers to what the scale asks for.
void SpectrumWork::Scale() {
    const Stretch part = NextPart(m_spectrum.values.size());
    for (std::size_t k = part.first; k < part.end; ++k) {
        double& value = m_spectrum.values[k];
        // Lines without one of the negative frequency beside them count once.
        const double sides = k == 0 || 2 * k == m_spectrum.length ? 1.0 : 2.0;
        if (m_spectrum.scale == SpectrumScale::kDensity) {
            value = sides * m_cycle_time * value / m_squares;
        } else {
            value = sides * std::sqrt(value) / m_sum;
            if (m_spectrum.scale == SpectrumScale::kRms && k > 0) {
                value /= std::numbers::sqrt2;
            }
        }
    }
    m_at = part.end;
    if (m_at == m_spectrum.values.size()) {
        End(std::move(m_spectrum));
    }
}

}  // namespace wavo::measure
