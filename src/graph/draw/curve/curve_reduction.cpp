#include "graph/draw/curve/curve_reduction.h"

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
constexpr std::size_t kAhead = 8;
/// Bytes.
constexpr std::uintptr_t kCacheLine = 64;

/// Reads one curve.
class Reduction {
 public:
    Reduction(TimeCurve& curve, const CurvePixels& pixels, ReductionRoom& room, ColumnSpans& spans)
        : m_ring(curve.Ring()),
          m_pyramid(curve.Pyramid()),
          m_begin(curve.Stretch().position),
          m_size(m_ring.Size()),
          m_samples(m_ring.SlotData()),
          m_slots(m_ring.Slots()),
          m_oldest(m_size == 0 ? 0 : m_ring.SlotOf(0)),
          m_may_hold_nan(m_pyramid.HasNaN()),
          m_pixels(pixels),
          m_room(room),
          m_spans(spans),
          m_builder(spans, pixels.rows) {}

    [[nodiscard]] bool MayHoldNaN() const { return m_may_hold_nan; }

    /// Adds a run without NaN that no segment leads to: all columns step by step together. False
    /// when a column between two samples has none.
    bool AddCleanRun(const CurveRun& run) {
        const std::int32_t first_column = ColumnOf(m_pixels.first_steps, run.step);
        std::int32_t columns = 0;
        bool last_is_single = false;
        const bool dense =
            ForColumns(run, [&](std::int32_t column, std::uint64_t position, std::uint64_t count) {
                columns = column - first_column + 1;
                last_is_single = count == 1;
                Gather(static_cast<std::size_t>(column - first_column), m_begin + position, count);
            });
        if (!dense) {
            return false;
        }
        FindRows(static_cast<std::size_t>(columns));
        const bool early = JoinColumns(run, first_column, columns);
        // A last sample that its segment does not reach, or one alone, draws nothing.
        const bool last_is_seen = !last_is_single || (columns > 1 && !early);
        for (std::int32_t i = 0; i < columns - (last_is_seen ? 0 : 1); ++i) {
            const auto at = static_cast<std::size_t>(i);
            m_spans.Add(first_column + i, m_room.top[at], m_room.bottom[at]);
        }
        return true;
    }

    /// Adds a run sample by sample where there are NaN. False as AddCleanRun.
    bool AddRun(const CurveRun& run) {
        if (!run.joined) {
            m_builder.Break();
        } else if (ColumnOf(m_pixels.first_steps, run.step) > m_column + 1) {
            return false;
        }
        return ForColumns(run,
                          [this](std::int32_t column, std::uint64_t position, std::uint64_t count) {
                              AddColumn(column, m_begin + position, count);
                              m_column = column;
                          });
    }

 private:
    /// Calls `work` for each column of a run with the position of its first sample and their
    /// number. False when a column between two samples has none.
    template <typename Work>
    bool ForColumns(const CurveRun& run, Work work) {
        const std::vector<std::uint64_t>& first_steps = m_pixels.first_steps;
        const auto columns = static_cast<std::int32_t>(first_steps.size()) - 1;
        std::int32_t column = ColumnOf(first_steps, run.step);
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
            const std::size_t ahead = static_cast<std::size_t>(column) + kAhead;
            if (ahead + 1 < first_steps.size()) {
                Fetch(run.position + (first_steps[ahead] - run.step));
            }
            work(column, position, next - position);
            position = next;
            if (position == end) {
                return true;
            }
        }
    }

    [[nodiscard]] std::size_t SlotOf(std::uint64_t position) const {
        const std::size_t slot = m_oldest + static_cast<std::size_t>(position);
        return slot < m_slots ? slot : slot - m_slots;
    }

    /// Long curves do not fit into a cache: what is read of the samples themselves, where a column
    /// begins, is asked for some columns before.
    void Fetch(std::uint64_t position) const {
        const std::uint64_t from = m_begin + position;
        if (from < m_size) {
            // Addresses, not pointers: those beside may lie outside the ring.
            const auto address = reinterpret_cast<std::uintptr_t>(m_samples + SlotOf(from));
            for (const auto at : {address - kCacheLine, address, address + kCacheLine}) {
                // NOLINTNEXTLINE(performance-no-int-to-ptr)
                __builtin_prefetch(reinterpret_cast<const void*>(at));
            }
        }
    }

    [[nodiscard]] MinMax RangeOf(std::uint64_t first, std::uint64_t count) const {
        const std::size_t begin = SlotOf(first);
        return begin + count <= m_slots ? m_pyramid.OfSlots(m_samples, begin, begin + count)
                                        : m_pyramid.Of(m_ring, first, count);
    }

    void Gather(std::size_t at, std::uint64_t first, std::uint64_t count) {
        const MinMax range = RangeOf(first, count);
        m_room.first[at] = m_samples[SlotOf(first)];
        m_room.minimum[at] = range.minimum;
        m_room.maximum[at] = range.maximum;
    }

    /// From values to rows, the top one 0.
    void FindRows(std::size_t columns) {
        const std::int32_t lowest = m_pixels.rows.Size() - 1;
        const auto find = [&](const std::vector<double>& values, std::vector<std::int32_t>& rows) {
            m_pixels.rows.IndicesOf(std::span(values).first(columns), rows.data());
            for (std::size_t i = 0; i < columns; ++i) {
                rows[i] = lowest - rows[i];
            }
        };
        find(m_room.first, m_room.first_row);
        find(m_room.maximum, m_room.top);
        find(m_room.minimum, m_room.bottom);
    }

    /// Leads from each column to the first sample of the next, as SpanBuilder does. True when the
    /// last segment ends early.
    bool JoinColumns(const CurveRun& run, std::int32_t first_column, std::int32_t columns) {
        const std::int32_t* const next = m_room.first_row.data() + 1;
        std::int32_t* const top = m_room.top.data();
        std::int32_t* const bottom = m_room.bottom.data();
        std::int32_t longest = 0;
        for (std::int32_t i = 0; i < columns - 1; ++i) {
            longest = std::max(longest, next[i] - top[i]);
        }
        bool early = false;
        for (std::int32_t i = 0; longest >= kLongWayDown && i < columns - 1; ++i) {
            early = false;
            if (next[i] - top[i] >= kLongWayDown) {
                const std::uint64_t after =
                    m_pixels.first_steps[static_cast<std::size_t>(first_column + i) + 1];
                const double last =
                    m_samples[SlotOf(m_begin + run.position + (after - run.step) - 1)];
                const std::int32_t last_row =
                    m_pixels.rows.Size() - 1 - m_pixels.rows.IndexOf(last);
                early = EndsEarly(next[i] - last_row);
                bottom[i] = early ? std::max(bottom[i], next[i]) : bottom[i];
            }
        }
        for (std::int32_t i = 0; i < columns - 1; ++i) {
            top[i] = std::min(top[i], next[i] + 1);
            bottom[i] = std::max(bottom[i], next[i] - 1);
        }
        return early;
    }

    void AddColumn(std::int32_t column, std::uint64_t first, std::uint64_t count) {
        if (m_may_hold_nan && m_pyramid.HasNaN(m_ring, first, count)) {
            if (RangeOf(first, count).IsEmpty()) {
                m_builder.Break();
            } else {
                AddEach(column, first, count);
            }
            return;
        }
        m_builder.Column(column, m_ring[first], RangeOf(first, count), m_ring[first + count - 1],
                         count > 1);
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
    ReductionRoom& m_room;
    ColumnSpans& m_spans;
    SpanBuilder m_builder;
    std::int32_t m_column = 0;
};

}  // namespace

void ReductionRoom::Resize(std::size_t columns) {
    first.resize(columns);
    minimum.resize(columns);
    maximum.resize(columns);
    first_row.resize(columns);
    top.resize(columns);
    bottom.resize(columns);
}

bool ReduceCurve(TimeCurve& curve, const CurvePixels& pixels, ReductionRoom& room,
                 ColumnSpans& spans) {
    const std::size_t columns = pixels.first_steps.size() - 1;
    spans.Clear(static_cast<std::int32_t>(columns));
    room.Resize(columns);
    Reduction reduction(curve, pixels, room, spans);
    const std::vector<CurveRun> runs = curve.Runs();
    const bool clean =
        !reduction.MayHoldNaN() &&
        std::none_of(runs.begin(), runs.end(), [](const CurveRun& run) { return run.joined; });
    return std::all_of(runs.begin(), runs.end(), [&](const CurveRun& run) {
        return clean ? reduction.AddCleanRun(run) : reduction.AddRun(run);
    });
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
