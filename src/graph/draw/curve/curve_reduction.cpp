#include "graph/draw/curve/curve_reduction.h"

#include <algorithm>
#include <cmath>

#include "graph/draw/curve/rows_from_blocks.h"

namespace wavo {

namespace {

/// Columns with more samples on the average are not worth the memory of their rows.
constexpr std::uint64_t kMostPerColumn = 64;
/// Reductions with the same scale before its rows are kept.
constexpr int kReductionsBefore = 2;

/// What a reduction works with, per column. One for all curves: it stays in the cache.
struct ReductionRoom {
    std::vector<double> first;
    std::vector<double> minimum;
    std::vector<double> maximum;
    std::vector<std::int32_t> first_row;
    std::vector<std::int32_t> top;
    std::vector<std::int32_t> bottom;
    std::vector<std::size_t> bounds;  ///< of the slots, and the end of the last column
    // Columns whose first sample is neither least nor largest.
    std::vector<std::int32_t> others;
    std::vector<double> other;
    std::vector<std::int32_t> other_row;
    RowsFromBlocks blocks;

    void Resize(std::size_t columns);
};

void ReductionRoom::Resize(std::size_t columns) {
    first.resize(columns);
    minimum.resize(columns);
    maximum.resize(columns);
    first_row.resize(columns);
    top.resize(columns);
    bottom.resize(columns);
    others.resize(columns + 1);
    other.resize(columns + 1);
    other_row.resize(columns + 1);
}

ReductionRoom& SharedRoom() {
    static ReductionRoom room;
    return room;
}

/// The column of a step, given the first step of each column.
std::int32_t ColumnOf(const std::vector<std::uint64_t>& first_steps, std::uint64_t step) {
    const auto columns = static_cast<std::ptrdiff_t>(first_steps.size()) - 1;
    const auto after = std::upper_bound(first_steps.begin(), first_steps.begin() + columns, step);
    return static_cast<std::int32_t>(after - first_steps.begin()) - 1;
}

/// Finds the pixel rows of all samples of a curve, or of those that came since the last time. False
/// where that does not pay, and where there is NaN.
bool FollowRows(const TimeCurve& curve, const CurvePixels& pixels, ReductionState& state) {
    const ShownSamples shown = curve.Shown();
    const bool few = shown.count <= (pixels.first_steps.size() - 1) * kMostPerColumn;
    if (!shown.number.has_value() || !few || state.with_these_rows < kReductionsBefore) {
        state.rows.Forget();
        ++state.with_these_rows;
        return false;
    }
    const SampleRing::Parts samples =
        shown.buffer.RangeOf(shown.begin, static_cast<std::size_t>(shown.count));
    return state.rows.Follow(*shown.number, samples, pixels.rows);
}

/// Reads one curve.
class Reduction {
 public:
    /// `rows_are_known`: the state has those of all samples.
    Reduction(const ShownSamples& shown, const CurvePixels& pixels, ReductionState& state,
              ColumnSpans& spans, bool rows_are_known)
        : m_buffer(shown.buffer),
          m_begin(shown.begin),
          m_count(static_cast<std::size_t>(shown.count)),
          m_samples(m_buffer.Slots().data()),
          m_slots(m_buffer.Slots().size()),
          m_first_slot(m_count == 0 ? 0 : m_buffer.SlotOfSequence(m_begin)),
          m_pyramid(rows_are_known ? nullptr : &m_buffer.Pyramid()),
          m_may_hold_nan(!rows_are_known && m_pyramid->HasNaN(m_buffer, m_begin, m_count)),
          m_pixels(pixels),
          m_room(SharedRoom()),
          m_state(state),
          m_spans(spans),
          m_builder(spans, pixels.rows) {}

    [[nodiscard]] bool MayHoldNaN() const { return m_may_hold_nan; }

    /// Adds a run without NaN that no segment leads to: all columns step by step together. False
    /// when a column between two samples has none.
    bool AddCleanRun(const CurveRun& run) {
        const std::int32_t first_column = ColumnOf(m_pixels.first_steps, run.step);
        if (!FindBounds(run, first_column)) {
            return false;
        }
        const std::size_t columns = m_room.bounds.size() - 1;
        const bool last_is_single = m_room.bounds[columns] - m_room.bounds[columns - 1] == 1;
        if (m_pyramid == nullptr) {
            m_state.rows.OfColumns(
                m_room.bounds, {m_room.first_row.data(), m_room.top.data(), m_room.bottom.data()});
        } else {
            FindRowsOfSamples(columns, static_cast<std::size_t>(run.count / columns));
        }
        const bool early = JoinColumns(run, first_column, static_cast<std::int32_t>(columns));
        // A last sample that its segment does not reach, or one alone, draws nothing.
        const bool last_is_seen = !last_is_single || (columns > 1 && !early);
        const std::size_t seen = columns - (last_is_seen ? 0 : 1);
        m_spans.AddRow(first_column, std::span(m_room.top).first(seen),
                       std::span(m_room.bottom).first(seen));
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
                              AddColumn(column, position, count);
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
            work(column, position, next - position);
            position = next;
            if (position == end) {
                return true;
            }
        }
    }

    [[nodiscard]] std::size_t SlotOf(std::uint64_t position) const {
        const std::size_t slot = m_first_slot + static_cast<std::size_t>(position);
        return slot < m_slots ? slot : slot - m_slots;
    }

    [[nodiscard]] double SampleAt(std::uint64_t position) const {
        return m_samples[SlotOf(position)];
    }

    [[nodiscard]] MinMax RangeOf(std::uint64_t first, std::uint64_t count) const {
        const std::size_t begin = SlotOf(first);
        return begin + count <= m_slots ? m_pyramid->OfSlots(m_samples, begin, begin + count)
                                        : m_pyramid->Of(m_buffer, m_begin + first, count);
    }

    /// Finds the first slot of each column of a run and the end of the last one, as if the slots
    /// went on after the ring's end; where rows are known, the positions. False when a column has
    /// no sample.
    bool FindBounds(const CurveRun& run, std::int32_t first_column) {
        const std::int32_t last_column = ColumnOf(m_pixels.first_steps, run.step + run.count - 1);
        const auto columns = static_cast<std::size_t>(last_column - first_column) + 1;
        std::vector<std::size_t>& bounds = m_room.bounds;
        bounds.resize(columns + 1);
        const std::size_t begin =
            m_pyramid == nullptr ? static_cast<std::size_t>(run.position) : SlotOf(run.position);
        const std::uint64_t* const steps = m_pixels.first_steps.data() + first_column;
        bounds[0] = begin;
        bool dense = true;
        for (std::size_t i = 1; i < columns; ++i) {
            bounds[i] = begin + static_cast<std::size_t>(steps[i] - run.step);
            dense = dense & (bounds[i] != bounds[i - 1]);
        }
        bounds[columns] = begin + static_cast<std::size_t>(run.count);
        return dense;
    }

    /// Finds the rows of all columns from the samples; a column has `count` on the average.
    void FindRowsOfSamples(std::size_t columns, std::size_t count) {
        const std::size_t around = SplitAtEnd();
        if (FindRowsFromBlocks(columns, around, count)) {
            return;
        }
        ForParts(around, columns, [this](std::size_t begin, std::size_t end) {
            FindExtremes(begin, end);
            return true;
        });
        FindRows(columns);
    }

    /// Makes the bounds slots, and finds the column that lies around the ring's end, if one does:
    /// its extremes are found at once. Returns its index, or the number of columns.
    std::size_t SplitAtEnd() {
        std::vector<std::size_t>& bounds = m_room.bounds;
        const std::size_t columns = bounds.size() - 1;
        if (bounds[columns] <= m_slots) {
            return columns;
        }
        const auto beyond = std::upper_bound(bounds.begin(), bounds.end(), m_slots);
        const auto around = static_cast<std::size_t>(beyond - bounds.begin()) - 1;
        const MinMax range = m_pyramid->Of(m_buffer, m_begin + (bounds[around] - m_first_slot),
                                           bounds[around + 1] - bounds[around]);
        m_room.first[around] = m_samples[bounds[around] % m_slots];
        m_room.minimum[around] = range.minimum;
        m_room.maximum[around] = range.maximum;
        for (std::size_t i = around + 1; i <= columns; ++i) {
            bounds[i] -= m_slots;
        }
        return around;
    }

    /// Calls `work` for the columns before one that lies around the ring's end and for those after.
    template <typename Work>
    static bool ForParts(std::size_t around, std::size_t columns, Work work) {
        return (around == 0 || work(std::size_t{0}, around)) &&
               (around + 1 >= columns || work(around + 1, columns));
    }

    void FindExtremes(std::size_t begin, std::size_t end) {
        const std::span<const std::size_t> bounds =
            std::span(m_room.bounds).subspan(begin, end - begin + 1);
        m_pyramid->OfRow(m_samples, bounds,
                         {m_room.first.data() + begin, m_room.minimum.data() + begin,
                          m_room.maximum.data() + begin});
    }

    /// Finds the rows of columns of many samples. False, and nothing done, where that does not pay.
    bool FindRowsFromBlocks(std::size_t columns, std::size_t around, std::size_t count) {
        if (m_state.runs_without_blocks > 0) {
            --m_state.runs_without_blocks;
            return false;
        }
        const std::size_t detail = m_pyramid->DetailOf(count);
        if (detail == 0) {
            return false;
        }
        std::size_t looked_at = 0;
        ForParts(around, columns, [&](std::size_t begin, std::size_t end) {
            looked_at += m_room.blocks.Find(
                {m_samples, *m_pyramid}, std::span(m_room.bounds).subspan(begin, end - begin + 1),
                detail, m_pixels.rows,
                {m_room.first_row.data() + begin, m_room.top.data() + begin,
                 m_room.bottom.data() + begin});
            return true;
        });
        if (around < columns) {
            m_room.first_row[around] = RowOf(m_room.first[around]);
            m_room.top[around] = RowOf(m_room.maximum[around]);
            m_room.bottom[around] = RowOf(m_room.minimum[around]);
        }
        constexpr std::size_t kMostLookedAt = 3;  // one in so many columns
        constexpr int kRunsRead = 30;
        if (looked_at > columns / kMostLookedAt) {
            m_state.runs_without_blocks = kRunsRead;
        }
        return true;
    }

    [[nodiscard]] std::int32_t RowOf(double sample) const {
        return m_pixels.rows.Size() - 1 - m_pixels.rows.IndexOf(sample);
    }

    void ToRows(const std::vector<double>& values, std::size_t count,
                std::vector<std::int32_t>& rows) const {
        const std::int32_t lowest = m_pixels.rows.Size() - 1;
        m_pixels.rows.IndicesOf(std::span(values).first(count), rows.data());
        for (std::size_t i = 0; i < count; ++i) {
            rows[i] = lowest - rows[i];
        }
    }

    /// From values to rows, the top one 0.
    void FindRows(std::size_t columns) {
        ToRows(m_room.maximum, columns, m_room.top);
        ToRows(m_room.minimum, columns, m_room.bottom);
        // Where a curve rises or falls through the column, its first sample is one of these two.
        std::size_t others = 0;
        for (std::size_t i = 0; i < columns; ++i) {
            const double first = m_room.first[i];
            const bool is_top = first == m_room.maximum[i];
            m_room.first_row[i] = is_top ? m_room.top[i] : m_room.bottom[i];
            m_room.others[others] = static_cast<std::int32_t>(i);
            m_room.other[others] = first;
            others += static_cast<std::size_t>(!is_top & (first != m_room.minimum[i]));
        }
        ToRows(m_room.other, others, m_room.other_row);
        for (std::size_t i = 0; i < others; ++i) {
            m_room.first_row[static_cast<std::size_t>(m_room.others[i])] = m_room.other_row[i];
        }
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
                const double last = m_samples[SlotOf(run.position + (after - run.step) - 1)];
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
        if (m_may_hold_nan && m_pyramid->HasNaN(m_buffer, m_begin + first, count)) {
            if (RangeOf(first, count).IsEmpty()) {
                m_builder.Break();
            } else {
                AddEach(column, first, count);
            }
            return;
        }
        m_builder.Column(column, SampleAt(first), RangeOf(first, count),
                         SampleAt(first + count - 1), count > 1);
    }

    void AddEach(std::int32_t column, std::uint64_t first, std::uint64_t count) {
        for (std::uint64_t position = first; position < first + count; ++position) {
            const double sample = SampleAt(position);
            if (std::isnan(sample)) {
                m_builder.Break();
            } else {
                m_builder.Sample(column, sample);
            }
        }
    }

    const SampleBuffer& m_buffer;
    std::uint64_t m_begin;  // sequence of the curve's first sample
    std::size_t m_count;
    const double* m_samples;  // by slot
    std::size_t m_slots;
    std::size_t m_first_slot;        // of the curve's first sample
    const MinMaxPyramid* m_pyramid;  // null: the rows of all samples are known
    bool m_may_hold_nan;
    const CurvePixels& m_pixels;
    ReductionRoom& m_room;
    ReductionState& m_state;
    ColumnSpans& m_spans;
    SpanBuilder m_builder;
    std::int32_t m_column = 0;
};

}  // namespace

bool ReduceCurve(TimeCurve& curve, const CurvePixels& pixels, ReductionState& state,
                 ColumnSpans& spans) {
    const std::size_t columns = pixels.first_steps.size() - 1;
    spans.Clear(static_cast<std::int32_t>(columns));
    SharedRoom().Resize(columns);
    const std::vector<CurveRun> runs = curve.Runs();
    const bool joined =
        std::any_of(runs.begin(), runs.end(), [](const CurveRun& run) { return run.joined; });
    const bool known = !joined && FollowRows(curve, pixels, state);
    Reduction reduction(curve.Shown(), pixels, state, spans, known);
    const bool clean = known || (!joined && !reduction.MayHoldNaN());
    return std::all_of(runs.begin(), runs.end(), [&](const CurveRun& run) {
        return clean ? reduction.AddCleanRun(run) : reduction.AddRun(run);
    });
}

std::vector<QLine> CurveSegments(TimeCurve& curve, const CurvePixels& pixels,
                                 const QPoint& bottom_left) {
    std::vector<QLine> segments;
    const ShownSamples shown = curve.Shown();
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
            const double sample = shown.buffer.Sample(shown.begin + run.position + i);
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
