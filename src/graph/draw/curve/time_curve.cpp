#include "graph/draw/curve/time_curve.h"

#include <algorithm>
#include <utility>

#include "graph/values/missing_value.h"
#include "support/diagnostics.h"
#include "support/to_count.h"

namespace wavo {

TimeCurve::TimeCurve(double step, std::uint64_t max_points)
    : m_step(step), m_max_points(max_points) {
    m_own.SetExpectedSize(max_points);
}

void TimeCurve::Clear() {
    if (m_window != nullptr) {
        m_pyramid.Clear();
        m_window = nullptr;
    }
    m_own.Clear();
    m_own.SetExpectedSize(m_max_points);
    Cleared();
    ++m_version;
}

void TimeCurve::Push(std::span<const double> samples) {
    const std::uint64_t before = m_own.Appended();
    if (!m_own.Push(samples, m_max_points)) {
        MERRLOG("LinesDrawAxis::DrawLinesXIsTime(): out of memory for the curve");
        m_max_points = std::max<std::uint64_t>(1, m_own.Size());
        if (m_own.Size() > 0) {
            // The others take the place of the oldest, which asks for no memory.
            (void)m_own.Push(samples.subspan(m_own.Appended() - before), m_max_points);
        }
    }
    ++m_version;
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
    return OwnTime(place);
}

std::optional<std::uint64_t> TimeCurve::PositionAt(double time) const {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62U;
    if (!(time >= 0.0)) {
        return std::nullopt;
    }
    const std::uint64_t step = ToCount(time / m_step + 0.5, kMost);
    const std::vector<CurveRun> runs = Runs();
    // Where a sweep has passed twice, the newer sample is seen.
    const auto run = std::find_if(runs.rbegin(), runs.rend(), [step](const CurveRun& each) {
        return each.step <= step && step - each.step < each.count;
    });
    return run == runs.rend() ? std::nullopt : std::optional(run->position + (step - run->step));
}

double TimeCurve::TimeAt(std::uint64_t position) const {
    const std::vector<CurveRun> runs = Runs();
    const auto run = std::find_if(runs.rbegin(), runs.rend(), [position](const CurveRun& each) {
        return each.position <= position;
    });
    return static_cast<double>(run->step + (position - run->position)) * m_step;
}

void TimeCurve::CopySamples(std::vector<double>& out) const {
    if (m_window == nullptr || m_window_parts.size() == 1) {
        const SampleStretch stretch = Stretch();
        CopyOut(Ring(), out, stretch.position, stretch.count);
        if (m_window != nullptr) {
            out.insert(out.begin(), m_window_parts.front().row, NoSample());
        }
        return;
    }
    out.clear();
    std::vector<double> samples;
    for (const RowPart& part : m_window_parts) {
        CopyOut(Ring(), samples, part.samples.position, part.samples.count);
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
    if (Size() == 0) {
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
    return OwnRuns();
}

}  // namespace wavo
