#include "graph/draw/curve_reduction.h"

#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

/// The column of a step, given the first step of each column.
std::int32_t ColumnOf(const std::vector<std::uint64_t>& first_steps, std::uint64_t step) {
    const auto columns = static_cast<std::ptrdiff_t>(first_steps.size()) - 1;
    const auto after = std::upper_bound(first_steps.begin(), first_steps.begin() + columns, step);
    return static_cast<std::int32_t>(after - first_steps.begin()) - 1;
}

/// Columns from a sample that is asked for to its use.
constexpr std::int32_t kAhead = 8;
/// Samples of a cache line.
constexpr std::ptrdiff_t kCacheLine = 8;

/// Reads one curve into a builder.
class Reduction {
 public:
    Reduction(TimeCurve& curve, const CurvePixels& pixels, ColumnSpans& spans)
        : m_ring(curve.Ring()),
          m_pyramid(curve.Pyramid()),
          m_begin(curve.Stretch().position),
          m_size(m_ring.Size()),
          m_samples(m_ring.SlotData()),
          m_slots(m_ring.Slots()),
          m_oldest(m_size == 0 ? 0 : m_ring.SlotOf(0)),
          m_may_hold_nan(m_pyramid.HasNaN()),
          m_pixels(pixels),
          m_builder(spans, pixels.rows) {}

    /// False when a column between two samples has none.
    bool AddRun(const CurveRun& run) {
        const std::vector<std::uint64_t>& first_steps = m_pixels.first_steps;
        const auto columns = static_cast<std::int32_t>(first_steps.size()) - 1;
        std::int32_t column = ColumnOf(first_steps, run.step);
        if (!run.joined) {
            m_builder.Break();
        } else if (column > m_column + 1) {
            return false;
        }
        std::uint64_t position = run.position;
        const std::uint64_t end = run.position + run.count;
        for (;; ++column) {
            std::uint64_t next = end;
            if (column + 1 < columns) {
                const std::uint64_t after = first_steps[static_cast<std::size_t>(column) + 1];
                next = std::min(end, run.position + (after - run.step));
            }
            if (next == position) {
                return false;
            }
            if (column + kAhead < columns) {
                Fetch(run.position +
                      (first_steps[static_cast<std::size_t>(column + kAhead)] - run.step));
            }
            AddColumn(column, position, next - position);
            m_column = column;
            position = next;
            if (position == end) {
                return true;
            }
        }
    }

 private:
    [[nodiscard]] std::size_t SlotOf(std::uint64_t position) const {
        const std::size_t slot = m_oldest + static_cast<std::size_t>(position);
        return slot < m_slots ? slot : slot - m_slots;
    }

    /// Long curves do not fit into a cache: what is read of the samples themselves, where a column
    /// begins, is asked for some columns before.
    void Fetch(std::uint64_t position) const {
        const std::uint64_t from = m_begin + position;
        if (from < m_size) {
            const double* const samples = m_samples + SlotOf(from);
            __builtin_prefetch(samples - kCacheLine);
            __builtin_prefetch(samples);
            __builtin_prefetch(samples + kCacheLine);
        }
    }

    void AddColumn(std::int32_t column, std::uint64_t position, std::uint64_t count) {
        const std::uint64_t first = m_begin + position;
        if (m_may_hold_nan && m_pyramid.HasNaN(m_ring, first, count)) {
            AddEach(column, first, count);
            return;
        }
        const std::size_t begin = SlotOf(first);
        const std::size_t end = begin + count;
        if (count == 1) {
            m_builder.Sample(column, m_samples[begin]);
        } else if (end <= m_slots) {
            m_builder.Column(column, m_samples[begin], m_pyramid.OfSlots(m_samples, begin, end),
                             m_samples[end - 1], true);
        } else {
            m_builder.Column(column, m_samples[begin], m_pyramid.Of(m_ring, first, count),
                             m_samples[end - 1 - m_slots], true);
        }
    }

    void AddEach(std::int32_t column, std::uint64_t first, std::uint64_t count) {
        for (std::uint64_t position = first; position < first + count; ++position) {
            const double sample = m_ring[position];
            if (std::isnan(sample)) {
                m_builder.Break();
            } else {
                m_builder.Sample(column, sample);
            }
        }
    }

    const SampleRing& m_ring;
    const MinMaxPyramid& m_pyramid;
    std::uint64_t m_begin;
    std::uint64_t m_size;
    const double* m_samples;  // by slot
    std::size_t m_slots;
    std::size_t m_oldest;  // slot of the ring's oldest sample
    bool m_may_hold_nan;
    const CurvePixels& m_pixels;
    SpanBuilder m_builder;
    std::int32_t m_column = 0;
};

}  // namespace

bool ReduceCurve(TimeCurve& curve, const CurvePixels& pixels, ColumnSpans& spans) {
    spans.Clear(static_cast<std::int32_t>(pixels.first_steps.size()) - 1);
    Reduction reduction(curve, pixels, spans);
    const std::vector<CurveRun> runs = curve.Runs();
    return std::all_of(runs.begin(), runs.end(),
                       [&](const CurveRun& run) { return reduction.AddRun(run); });
}

std::vector<QLine> CurveSegments(TimeCurve& curve, const CurvePixels& pixels,
                                 const QPoint& bottom_left) {
    std::vector<QLine> segments;
    const SampleRing& ring = curve.Ring();
    const std::uint64_t begin = curve.Stretch().position;
    const auto columns = static_cast<std::int32_t>(pixels.first_steps.size()) - 1;
    bool open = false;
    QPoint last;
    for (const CurveRun& run : curve.Runs()) {
        open = open && run.joined;
        std::int32_t column = ColumnOf(pixels.first_steps, run.step);
        for (std::uint64_t i = 0; i < run.count; ++i) {
            while (column + 1 < columns &&
                   pixels.first_steps[static_cast<std::size_t>(column) + 1] <= run.step + i) {
                ++column;
            }
            const double sample = ring[begin + run.position + i];
            if (std::isnan(sample)) {
                open = false;
                continue;
            }
            const QPoint point = bottom_left + QPoint(column, -pixels.rows.IndexOf(sample));
            if (open) {
                segments.emplace_back(last, point);
            }
            open = true;
            last = point;
        }
    }
    return segments;
}

}  // namespace wavo
