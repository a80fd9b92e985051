#include "graph/draw/curve/time_curve.h"

#include <algorithm>
#include <utility>

#include "graph/values/missing_value.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Sweep times beyond the range by less than this still belong to the sweep.
constexpr double kTimeTolerance = 1e-6;

/// Places from one remembered sum of steps to the next.
constexpr std::uint64_t kSumDistance = 4096;

}  // namespace

TimeCurve::TimeCurve(GraphMode mode, double step, std::uint64_t max_points)
    : m_mode(mode), m_step(step), m_max_points(max_points) {
    m_own.SetExpectedSize(max_points);
}

void TimeCurve::Clear() {
    if (m_window != nullptr) {
        m_pyramid.Clear();
        m_window = nullptr;
    }
    m_own.Clear();
    m_own.SetExpectedSize(m_max_points);
    m_sweep = -1;
    m_anchors.clear();
    m_sums.clear();
    ++m_version;
}

void TimeCurve::BeginBatch(bool at_start, double range) {
    const double next = static_cast<double>(m_sweep + 1) * m_step;
    m_sweep = at_start || next > range + kTimeTolerance ? 0 : m_sweep + 1;
}

void TimeCurve::Push(std::span<const double> samples) {
    const std::uint64_t before = m_own.Appended();
    if (!m_own.Push(samples, m_max_points)) {
        MERRLOG("LinesDrawAxis::DrawLinesXIsTime(): out of memory for the curve");
        m_max_points = std::max<std::uint64_t>(1, m_own.Size());
        if (m_own.Empty()) {
            m_anchors.clear();
        } else {
            // The others take the place of the oldest, which asks for no memory.
            (void)m_own.Push(samples.subspan(m_own.Appended() - before), m_max_points);
        }
    }
    ++m_version;
}

void TimeCurve::AddContinuity(std::span<const double> samples) {
    Push(samples);
    if (!TimesAreSums()) {
        m_sums.clear();
        return;
    }
    if (m_sums.empty()) {
        m_sums.push_back(0.0);
    }
    while (m_own.Size() > m_sums.size() * kSumDistance) {
        double time = m_sums.back();
        for (std::uint64_t i = 0; i < kSumDistance; ++i) {
            time += m_step;
        }
        m_sums.push_back(time);
    }
}

void TimeCurve::AddClassic(std::span<const double> samples, double range) {
    const double end = range + kTimeTolerance;
    const std::uint64_t first = m_own.Appended();
    auto step = static_cast<std::uint64_t>(m_sweep);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (m_anchors.empty() || step != m_newest_step + 1) {
            m_anchors.push_back({first + i, step});
        }
        m_newest_step = step;
        m_sweep = static_cast<std::int64_t>(step);
        ++step;
        if (static_cast<double>(step) * m_step > end) {
            // The sweep has arrived at the right border, which is the left one of the next sweep:
            // the next sample stands one step from it.
            m_sweep = 0;
            step = 1;
        }
    }
    Push(samples);
    ForgetOldAnchors();
}

void TimeCurve::ForgetOldAnchors() {
    while (m_anchors.size() > 1 && m_anchors[1].sequence <= m_own.FirstSequence()) {
        m_anchors.pop_front();
    }
}

void TimeCurve::ShowWindow(const SampleRing& ring, std::vector<RowPart> parts) {
    const bool same = m_window == &ring && m_window_parts == parts &&
                      m_window_appended == ring.Appended() && m_window_moves == ring.Moves();
    if (same) {
        return;
    }
    if (m_window != &ring) {
        Clear();
        m_pyramid.Clear();
        m_window = &ring;
    }
    m_window_parts = std::move(parts);
    m_window_appended = ring.Appended();
    m_window_moves = ring.Moves();
    ++m_version;
}

void TimeCurve::ShowOwnWindow(const SampleStretch& stretch) {
    if (m_window != nullptr && m_window != &m_own) {
        return;  // there are no samples of its own
    }
    std::vector<RowPart> parts{{0, stretch}};
    if (m_window == nullptr || m_window_parts != parts) {
        m_window = &m_own;
        m_window_parts = std::move(parts);
        ++m_version;
    }
}

void TimeCurve::KeepWindow() {
    if (m_window == nullptr || m_window == &m_own) {
        return;
    }
    std::vector<double> samples;
    CopySamples(samples);
    Clear();
    // A ring of its own as long as the window, shown as a window.
    m_own = SampleRing();
    m_own.SetExpectedSize(samples.size());
    if (!samples.empty() && !m_own.Push(samples, samples.size())) {
        MERRLOG("LinesDrawAxis::KeepWindow(): out of memory for the curve");
    }
    m_pyramid.Clear();
    m_window = &m_own;
    m_window_parts = {{0, {0, m_own.Size()}}};
}

std::uint64_t TimeCurve::Size() const {
    if (m_window == nullptr) {
        return m_own.Size();
    }
    std::uint64_t size = 0;
    for (const RowPart& part : m_window_parts) {
        size += part.samples.count;
    }
    return size;
}

SampleStretch TimeCurve::Stretch() const {
    if (m_window == nullptr) {
        return {0, m_own.Size()};
    }
    if (m_window_parts.empty()) {
        return {};
    }
    const std::uint64_t begin = m_window_parts.front().samples.position;
    const SampleStretch& last = m_window_parts.back().samples;
    return {begin, last.position + last.count - begin};
}

std::uint64_t TimeCurve::EndOfSteps() const {
    if (m_window == nullptr) {
        return m_max_points;
    }
    return m_window_parts.empty() ? 0
                                  : m_window_parts.back().row + m_window_parts.back().samples.count;
}

std::uint64_t TimeCurve::PositionOf(std::uint64_t place) const {
    const std::uint64_t write_index = WriteIndex();
    return place >= write_index ? place - write_index : place + Size() - write_index;
}

const RowPart& TimeCurve::PartOf(std::uint64_t& place) const {
    auto part = m_window_parts.begin();
    while (place >= part->samples.count) {
        place -= part->samples.count;
        ++part;
    }
    return *part;
}

double TimeCurve::Sample(std::uint64_t place) const {
    if (m_window != nullptr) {
        const std::uint64_t position = PartOf(place).samples.position;
        return Ring()[position + place];
    }
    return Ring()[PositionOf(place)];
}

double TimeCurve::Time(std::uint64_t place) const {
    if (m_window != nullptr) {
        const std::uint64_t row = PartOf(place).row;
        return static_cast<double>(row + place) * m_step;
    }
    if (m_mode != GraphMode::kContinuity) {
        const std::uint64_t sequence = m_own.FirstSequence() + PositionOf(place);
        auto anchor = m_anchors.rbegin();
        while (anchor->sequence > sequence) {
            ++anchor;
        }
        return static_cast<double>(anchor->step + (sequence - anchor->sequence)) * m_step;
    }
    if (!TimesAreSums()) {
        return static_cast<double>(place) * m_step;
    }
    double time = m_sums[place / kSumDistance];
    for (std::uint64_t i = place % kSumDistance; i > 0; --i) {
        time += m_step;
    }
    return time;
}

std::uint64_t TimeCurve::WriteIndex() const {
    const std::uint64_t appended = m_own.Appended();
    if (m_window != nullptr || m_mode == GraphMode::kContinuity || appended <= m_max_points) {
        return 0;
    }
    return (appended - m_max_points - 1) % m_max_points + 1;
}

bool TimeCurve::TimesAreSums() const {
    return m_window == nullptr && m_mode == GraphMode::kContinuity &&
           m_own.Appended() <= m_max_points;
}

void TimeCurve::CopySamples(std::vector<double>& out) const {
    if (m_window == nullptr || m_window_parts.size() == 1) {
        const SampleStretch stretch = Stretch();
        Ring().CopyOut(out, stretch.position, stretch.count);
        if (m_window != nullptr) {
            out.insert(out.begin(), m_window_parts.front().row, NoSample());
        }
        return;
    }
    out.clear();
    std::vector<double> samples;
    for (const RowPart& part : m_window_parts) {
        Ring().CopyOut(samples, part.samples.position, part.samples.count);
        out.resize(part.row, NoSample());
        out.insert(out.end(), samples.begin(), samples.end());
    }
}

const MinMaxPyramid& TimeCurve::Pyramid() {
    m_pyramid.Update(Ring());
    return m_pyramid;
}

MinMax TimeCurve::FiniteExtremes() {
    if (m_window == nullptr) {
        return Pyramid().FiniteOf(Ring(), 0, m_own.Size());
    }
    MinMax extremes;
    for (const RowPart& part : m_window_parts) {
        const MinMax range = Pyramid().FiniteOf(Ring(), part.samples.position, part.samples.count);
        extremes.minimum = std::min(extremes.minimum, range.minimum);
        extremes.maximum = std::max(extremes.maximum, range.maximum);
    }
    return extremes;
}

std::vector<CurveRun> TimeCurve::Runs() const {
    const std::uint64_t size = Size();
    if (size == 0) {
        return {};
    }
    std::vector<CurveRun> runs;
    if (m_window != nullptr) {
        const std::uint64_t begin = Stretch().position;
        for (const RowPart& part : m_window_parts) {
            if (part.samples.count != 0) {
                runs.push_back(
                    {part.samples.position - begin, part.samples.count, part.row, false});
            }
        }
        return runs;
    }
    if (m_mode == GraphMode::kContinuity) {
        return {{0, size, 0, false}};
    }
    const std::uint64_t oldest = m_own.FirstSequence();
    std::uint64_t last_step = 0;
    for (std::size_t i = 0; i < m_anchors.size(); ++i) {
        const Anchor& anchor = m_anchors[i];
        const std::uint64_t begin = std::max(anchor.sequence, oldest);
        const std::uint64_t end =
            i + 1 < m_anchors.size() ? m_anchors[i + 1].sequence : m_own.Appended();
        const std::uint64_t step = anchor.step + (begin - anchor.sequence);
        runs.push_back({begin - oldest, end - begin, step, i > 0 && last_step <= step});
        last_step = step + (end - begin) - 1;
    }
    return runs;
}

}  // namespace wavo
