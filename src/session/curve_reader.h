// What is read off one stream of values: its value at a line, the figures between two lines, where
// it peaks or passes through zero next.
//
// Lines are the absolute ones of the source. What a stream has told once is not read again, so that
// figures can be renewed with every batch. What takes long is done within a budget, bit by bit.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "measure/cursors.h"
#include "measure/figure.h"
#include "measure/moment_blocks.h"
#include "recording/recording_history.h"
#include "session/line_values.h"

namespace wavo {

/// What a curve is searched for.
enum class Landmark { kPeak, kValley, kZeroCrossing };

/// What a search has come to.
struct LineFound {
    std::optional<std::int64_t> line;
    bool has_ended = true;  ///< false: it goes on when it is asked again
};

class CurveReader {
 public:
    using Budget = recording::ReadingBudget;

    /// `cycle_time`: seconds from line to line, above 0. `derivation`: the order of the stream.
    CurveReader(std::unique_ptr<LineValues> values, double cycle_time, std::int32_t derivation);

    /// The lines that the stream reaches over.
    [[nodiscard]] LineRange Lines() const { return m_values->Lines(); }
    [[nodiscard]] LineValues& Values() const { return *m_values; }

    /// The value of a line; not told beyond the stream and where it has none.
    [[nodiscard]] measure::Figure ValueAt(std::optional<std::int64_t> line);

    /// Values at both lines and the figures of what lies between, both ends included, in either
    /// order; cycles of the result are lines. A line that is not there tells nothing. With a
    /// budget, which may be null, it reads no more; then figures that are not known yet are not
    /// told, and asked again it goes on.
    [[nodiscard]] measure::CurveReading Between(std::optional<std::int64_t> a,
                                                std::optional<std::int64_t> b,
                                                Budget* budget = nullptr);

    /// The line of the next peak or valley from `line` on, that not included, see
    /// measure::NextPeak; the first line behind the next passage through zero. With a budget as
    /// above.
    [[nodiscard]] LineFound Next(Landmark landmark, std::int64_t line, measure::Search search,
                                 double prominence = 0.0, Budget* budget = nullptr);

    /// Decimals that the values seen so far carry. Those of a derived stream are what is left of
    /// its axis' decimals when it is divided by the cycle time.
    [[nodiscard]] int Decimals();

 private:
    /// A search that has not ended.
    struct Pending {
        Landmark landmark;
        std::int64_t line;
        measure::Search search;
        double prominence;
        std::unique_ptr<measure::ValueSearch> values;
        std::int64_t taken = 0;  ///< steps
        std::int64_t size = 0;   ///< of the stretch that is looked at next

        [[nodiscard]] LineRange Lines(std::int64_t count) const;
    };

    /// Drops what is known when something of it was lost.
    void ForgetLosses();
    [[nodiscard]] measure::MomentBlocks::Part ReadPart(std::int64_t first, std::span<double> room,
                                                       Budget* budget) const;
    [[nodiscard]] measure::Statistics NotWhole(const LineRange& lines);
    void Begin(Landmark landmark, std::int64_t line, measure::Search search, double prominence);
    /// Takes a stretch into the search. True: something is found.
    bool TakeStretch(Pending& pending, std::int64_t left);
    [[nodiscard]] int DecimalsOfValues(std::span<double> values) const;

    // Constant after construction.
    std::unique_ptr<LineValues> m_values;
    double m_cycle_time;
    std::int32_t m_derivation;

    measure::MomentBlocks m_moments;
    std::uint64_t m_losses = 0;  ///< that are known
    LineRange m_extremes_of;     ///< of m_extremes
    std::optional<LineExtremes> m_extremes;
    std::optional<Pending> m_pending;
    std::vector<double> m_room;
    int m_decimals = 0;
    std::int64_t m_seen = 0;  ///< lines before it are in m_decimals
    bool m_any_seen = false;
};

}  // namespace wavo
