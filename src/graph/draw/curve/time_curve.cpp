#include "graph/draw/curve/time_curve.h"

#include <algorithm>
#include <utility>

#include "graph/values/missing_value.h"
#include "support/to_count.h"

namespace wavo {

namespace {

/// Curves of up to so many samples are quicker read, now and then, than a pyramid over them is kept
/// up to date; and it has memory.
constexpr std::uint64_t kReadEach = std::uint64_t{1} << 17U;

}  // namespace

TimeCurve::TimeCurve(double step, std::uint64_t max_points) : m_step(step), m_held(max_points) {}

void TimeCurve::Clear() {
    m_window = nullptr;
    m_own_window = false;
    m_held.Clear();
    Cleared();
    ++m_version;
}

void TimeCurve::Push(std::span<const double> samples, const SampleOrigin& origin) {
    m_held.Push(samples, origin);
    ++m_version;
}

void TimeCurve::ShowWindow(const SampleBuffer& buffer, std::vector<RowPart> parts) {
    const bool same = m_window == &buffer && m_window_parts == parts &&
                      m_window_appended == buffer.Appended() && m_window_moves == buffer.Moves();
    if (same) {
        return;
    }
    if (m_window != &buffer) {
        Clear();
        m_window = &buffer;
    }
    m_window_parts = std::move(parts);
    m_window_appended = buffer.Appended();
    m_window_moves = buffer.Moves();
    ++m_version;
}

void TimeCurve::ShowOwnWindow(const SampleStretch& stretch) {
    if (m_window != nullptr) {
        return;  // there are no samples of its own
    }
    std::vector<RowPart> parts{{0, stretch}};
    if (!m_own_window || m_window_parts != parts) {
        m_own_window = true;
        m_window_parts = std::move(parts);
        ++m_version;
    }
}

void TimeCurve::KeepWindow() {
    if (m_window == nullptr) {
        return;
    }
    std::vector<double> samples;
    CopySamples(samples);
    Clear();
    m_held.Replace(samples);
    m_own_window = true;
    m_window_parts = {{0, {0, m_held.Size()}}};
}

std::uint64_t TimeCurve::Size() const {
    if (!ShowsWindow()) {
        return m_held.Size();
    }
    std::uint64_t size = 0;
    for (const RowPart& part : m_window_parts) {
        size += part.samples.count;
    }
    return size;
}

SampleStretch TimeCurve::Stretch() const {
    if (!ShowsWindow()) {
        return {0, m_held.Size()};
    }
    if (m_window_parts.empty()) {
        return {};
    }
    const std::uint64_t begin = m_window_parts.front().samples.position;
    const SampleStretch& last = m_window_parts.back().samples;
    return {begin, last.position + last.count - begin};
}

ShownSamples TimeCurve::Shown() const {
    const SampleStretch stretch = Stretch();
    ShownSamples shown{Buffer(), FirstOfBuffer() + stretch.position, stretch.count, std::nullopt};
    if (m_window == nullptr) {
        shown.number = m_held.FirstNumber() + stretch.position;
    }
    return shown;
}

std::uint64_t TimeCurve::EndOfSteps() const {
    if (!ShowsWindow()) {
        return MaxPoints();
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
    const std::uint64_t position =
        ShowsWindow() ? PartOf(place).samples.position + place : PositionOf(place);
    return Buffer().Sample(FirstOfBuffer() + position);
}

double TimeCurve::Time(std::uint64_t place) const {
    if (ShowsWindow()) {
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

void TimeCurve::Copy(const SampleStretch& stretch, std::vector<double>& out) const {
    const SampleRing::Parts parts = Buffer().RangeOf(FirstOfBuffer() + stretch.position,
                                                     static_cast<std::size_t>(stretch.count));
    out.insert(out.end(), parts.first.begin(), parts.first.end());
    out.insert(out.end(), parts.second.begin(), parts.second.end());
}

void TimeCurve::CopySamples(std::vector<double>& out) const {
    out.clear();
    out.reserve(static_cast<std::size_t>(ShowsWindow() ? EndOfSteps() : m_held.Size()));
    if (!ShowsWindow()) {
        Copy(Stretch(), out);
        return;
    }
    for (const RowPart& part : m_window_parts) {
        out.resize(part.row, NoSample());
        Copy(part.samples, out);
    }
}

MinMax TimeCurve::FiniteExtremes() {
    const SampleBuffer& buffer = Buffer();
    MinMax extremes;
    const auto take = [&](const MinMax& range) {
        extremes.minimum = std::min(extremes.minimum, range.minimum);
        extremes.maximum = std::max(extremes.maximum, range.maximum);
    };
    if (!ShowsWindow() && m_held.Size() <= kReadEach) {
        const SampleRing::Parts parts =
            buffer.RangeOf(m_held.Begin(), static_cast<std::size_t>(m_held.Size()));
        take(FiniteExtremesOf(parts.first));
        take(FiniteExtremesOf(parts.second));
        return extremes;
    }
    const MinMaxPyramid& pyramid = buffer.Pyramid();
    const auto take_stretch = [&](const SampleStretch& stretch) {
        take(pyramid.FiniteOf(buffer, FirstOfBuffer() + stretch.position,
                              static_cast<std::size_t>(stretch.count)));
    };
    if (!ShowsWindow()) {
        take_stretch(Stretch());
        return extremes;
    }
    for (const RowPart& part : m_window_parts) {
        take_stretch(part.samples);
    }
    return extremes;
}

std::vector<CurveRun> TimeCurve::Runs() const {
    if (Size() == 0) {
        return {};
    }
    std::vector<CurveRun> runs;
    if (ShowsWindow()) {
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
